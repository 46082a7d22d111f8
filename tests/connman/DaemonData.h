#pragma once

#include "simulator/Daemon.h"
#include "tests/connman/ListData.h"

#include <string>
#include <vector>

/** What the simulated daemon is to send: signals and answers, of ConnMan's shape or of others. */
namespace Tovra::DaemonData
{

using Simulator::Arguments;
using Simulator::Json;
using Simulator::Signal;

constexpr const char* pServicesSignature = "a(oa{sv})";

/** Arguments of this signature; `pJson` is the list of their values. */
Arguments Parse(const char* pSignature, const char* pJson);

/** The (oa{sv}) of a service, and the same without its properties. */
Json Entry(const ListData::Service& service);
Json UnchangedEntry(const std::string& sPath);
Json TechnologyEntry(const std::string& sPath, const std::string& sName);

/** What "GetServices" answers. */
Arguments Services(const std::vector<ListData::Service>& vecServices);

/** "ServicesChanged" with an array of these entries, and with any arguments. */
Signal ServicesChanged(const std::vector<Json>& vecEntries);
Signal ServicesChanged(const Arguments& arguments);
Signal ServicesChanged(const std::vector<ListData::Service>& vecServices);

Signal ServicePropertyChanged(const std::string& sPath, const Arguments& arguments);

/** A service's property that is a text, as most are. */
Signal ServicePropertyChanged(const std::string& sPath, const std::string& sName,
                              const std::string& sValue);
Signal StrengthChanged(const std::string& sPath, unsigned nStrength);

Signal TechnologyAdded();
Signal TechnologyRemoved();
Signal TechnologyPropertyChanged();

} // namespace Tovra::DaemonData
