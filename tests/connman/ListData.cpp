#include "tests/connman/ListData.h"

namespace Tovra::ListData
{

using DBus::Data;

Data Text(const std::string& sText)
{
    return Data::MakeString(sText, true);
}

Properties ServiceProperties(const Service& service)
{
    Properties ipv4{{"Method", Text(service.sMethod)}};
    if (!service.sAddress.empty())
        ipv4["Address"] = Text(service.sAddress);
    Properties properties{
        {"Type", Text("wifi")},
        {"State", Text(service.sState)},
        {"IPv4", Data::MakeDictionary(Data::String, ipv4).SetVariant(true)},
    };
    if (!service.sName.empty())
        properties["Name"] = Text(service.sName);
    return properties;
}

Properties TechnologyProperties(const std::string& sName, bool bPowered)
{
    return {
        {"Name", Text(sName)},
        {"Type", Text("wifi")},
        {"Powered", Data::MakeBool(bPowered, true)},
        {"Connected", Data::MakeBool(false, true)},
    };
}

Data Entry(const std::string& sPath, Data second)
{
    return Data::MakeArray(Data::ObjectPath, {Data::MakeObjectPath(sPath), std::move(second)});
}

Data Entry(const std::string& sPath, const Properties& properties)
{
    return Entry(sPath, Data::MakeDictionary(Data::String, properties));
}

Data UnchangedEntry(const std::string& sPath)
{
    return Entry(sPath, Data());
}

Data List(std::vector<Data> vecEntries)
{
    return Data::MakeArray(Data::Array, std::move(vecEntries));
}

Data Services(const std::vector<Service>& vecServices)
{
    std::vector<Data> vecEntries;
    for (const Service& service : vecServices)
        vecEntries.push_back(Entry(service.sPath, ServiceProperties(service)));
    return List(std::move(vecEntries));
}

} // namespace Tovra::ListData
