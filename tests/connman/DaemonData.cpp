#include "tests/connman/DaemonData.h"

namespace Tovra::DaemonData
{

using namespace Simulator;

namespace
{

constexpr const char* pTechnologyPath = "/net/connman/technology/wifi";

Signal ManagerSignal(const char* pMember, const Arguments& arguments)
{
    return {"/", "net.connman.Manager", pMember, arguments, ""};
}

Json Entry(const std::string& sPath, const Simulator::Properties& properties)
{
    return Json::array({sPath, MakeDictionary(properties)});
}

Json ToList(const std::vector<ListData::Service>& vecServices)
{
    Json list = Json::array();
    for (const ListData::Service& service : vecServices)
        list.push_back(DaemonData::Entry(service));
    return list;
}

} // namespace

Arguments Parse(const char* pSignature, const char* pJson)
{
    return {pSignature, Json::parse(pJson)};
}

Json Entry(const ListData::Service& service)
{
    Simulator::Properties ipv4{{"Method", MakeString(service.sMethod)}};
    if (!service.sAddress.empty())
        ipv4.emplace_back("Address", MakeString(service.sAddress));
    Simulator::Properties properties{{"Type", MakeString("wifi")},
                                     {"State", MakeString(service.sState)},
                                     {"IPv4", MakeDictionaryValue(ipv4)}};
    if (!service.sName.empty())
        properties.emplace_back("Name", MakeString(service.sName));
    return Entry(service.sPath, properties);
}

Json UnchangedEntry(const std::string& sPath)
{
    return Entry(sPath, Simulator::Properties{});
}

Json TechnologyEntry(const std::string& sPath, const std::string& sName)
{
    return Entry(sPath, Simulator::Properties{{"Name", MakeString(sName)},
                                              {"Type", MakeString("wifi")},
                                              {"Powered", MakeBool(true)},
                                              {"Connected", MakeBool(false)}});
}

Arguments Services(const std::vector<ListData::Service>& vecServices)
{
    return {pServicesSignature, Json::array({ToList(vecServices)})};
}

Signal ServicesChanged(const std::vector<Json>& vecEntries)
{
    return ServicesChanged(Arguments{"a(oa{sv})ao", Json::array({vecEntries, Json::array()})});
}

Signal ServicesChanged(const Arguments& arguments)
{
    return ManagerSignal("ServicesChanged", arguments);
}

Signal ServicesChanged(const std::vector<ListData::Service>& vecServices)
{
    return ServicesChanged(
        Arguments{"a(oa{sv})ao", Json::array({ToList(vecServices), Json::array()})});
}

Signal ServicePropertyChanged(const std::string& sPath, const Arguments& arguments)
{
    return {sPath, "net.connman.Service", "PropertyChanged", arguments, ""};
}

Signal ServicePropertyChanged(const std::string& sPath, const std::string& sName,
                              const std::string& sValue)
{
    return ServicePropertyChanged(
        sPath, Arguments{"sv", Json::array({sName, MakeVariant(MakeString(sValue))})});
}

Signal StrengthChanged(const std::string& sPath, unsigned nStrength)
{
    return ServicePropertyChanged(
        sPath, Arguments{"sv", Json::array({"Strength", MakeVariant(MakeByte(nStrength))})});
}

Signal TechnologyAdded()
{
    return ManagerSignal("TechnologyAdded",
                         {"oa{sv}", Json::array({pTechnologyPath, Json::object()})});
}

Signal TechnologyRemoved()
{
    return ManagerSignal("TechnologyRemoved", {"o", Json::array({pTechnologyPath})});
}

Signal TechnologyPropertyChanged()
{
    return {pTechnologyPath,
            "net.connman.Technology",
            "PropertyChanged",
            {"sv", Json::array({"Powered", MakeVariant(MakeBool(true))})},
            ""};
}

} // namespace Tovra::DaemonData
