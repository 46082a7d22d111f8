#pragma once

#include "Common/ConnMan.h"

#include <map>
#include <string>
#include <vector>

/** ConnMan's lists as the D-Bus layer reads them, built by hand. */
namespace Tovra::ListData
{

using Properties = std::map<std::string, DBus::Data>;

/** What differs between the services of these tests. */
struct Service {
    std::string sPath;
    std::string sState = "idle";
    std::string sAddress = "";
    std::string sMethod = "dhcp";
    std::string sName = "";
};

/** A text in a variant, as a property bears it. */
DBus::Data Text(const std::string& sText);

Properties ServiceProperties(const Service& service);
Properties TechnologyProperties(const std::string& sName, bool bPowered = true);

/** A structure of an object path and a second member. */
DBus::Data Entry(const std::string& sPath, DBus::Data second);
DBus::Data Entry(const std::string& sPath, const Properties& properties);

/** What says that a service is as before: an empty dictionary, which reads as Empty. */
DBus::Data UnchangedEntry(const std::string& sPath);

DBus::Data List(std::vector<DBus::Data> vecEntries);
DBus::Data Services(const std::vector<Service>& vecServices);

/** Paths of records, in order. */
template <class Record> std::vector<std::string> Paths(const std::vector<Record>& vecRecords)
{
    std::vector<std::string> vecPaths;
    for (const Record& record : vecRecords)
        vecPaths.push_back(record.sPath);
    return vecPaths;
}

} // namespace Tovra::ListData
