#include "Common/Commands.h"

#include "Common/Names.h"
#include "Include/Writability.h"

namespace Tovra::Commands
{

namespace
{

using DBus::Data;

Data MakeConfiguration(const std::map<std::string, std::string>& mapTexts)
{
    std::map<std::string, Data> mapEntries;
    for (const auto& [sKey, sText] : mapTexts)
        mapEntries[sKey] = Data::MakeString(sText, true);
    return Data::MakeDictionary(Data::Variant, std::move(mapEntries));
}

Data DhcpConfiguration()
{
    return MakeConfiguration({{"Method", "dhcp"}});
}

Data ManualConfiguration(const ConnMan::NetworkService& service)
{
    return MakeConfiguration({{"Method", "manual"},
                              {"Address", service.sIPv4Address},
                              {"Netmask", service.sIPv4Netmask},
                              {"Gateway", service.sIPv4Gateway}});
}

Command CallService(const ConnMan::NetworkService& service, const char* pMember)
{
    return {service.sPath, Names::pNetworkService, pMember, {}};
}

} // namespace

Command Scan(const ConnMan::NetworkTechnology& technology)
{
    return {technology.sPath, Names::pTechnology, "Scan", {}};
}

Command SetPower(const ConnMan::NetworkTechnology& technology, bool on)
{
    return {technology.sPath,
            Names::pTechnology,
            "SetProperty",
            {Data::MakeString("Powered"), Data::MakeBool(on, true)}};
}

Command SetConProp(const ConnMan::NetworkService& service, const char* name, const Data& value)
{
    Data marked = value;
    marked.SetVariant(true);
    return {service.sPath,
            Names::pNetworkService,
            "SetProperty",
            {Data::MakeString(name), std::move(marked)}};
}

std::vector<Command> SetNetworkProperties(const ConnMan::NetworkService& service,
                                          unsigned int flags)
{
    std::vector<Command> vecCommands;
    if (flags & ConnMan::IPv4Dhcp)
        vecCommands.push_back(SetConProp(service, "IPv4.Configuration", DhcpConfiguration()));
    else if (flags & ConnMan::IPv4Manual)
        vecCommands.push_back(
            SetConProp(service, "IPv4.Configuration", ManualConfiguration(service)));

    if (flags & ConnMan::Nameservers)
        vecCommands.push_back(SetConProp(service, "Nameservers.Configuration",
                                         Data::MakeStringArray(service.vecNameservers)));

    if (flags & ConnMan::Disconnect)
        vecCommands.push_back(
            CallService(service, service.sType == "ethernet" ? "Disconnect" : "Remove"));
    else if (flags & ConnMan::Connect)
        vecCommands.push_back(CallService(service, "Connect"));
    return vecCommands;
}

DBus::Message MakeMessage(const Command& command)
{
    DBus::Message message(Names::pService, command.sPath.c_str(), command.sInterface.c_str(),
                          command.sMember.c_str());
    // The bus counts calls whose reply is open and refuses more than 128 of them; "Connect" stays
    // open for up to two minutes.
    message.SetNoReply();
    for (const Data& argument : command.vecArguments) {
        if (!DBus::IsWritable(argument, false))
            return DBus::Message();
        message.Add(argument);
    }
    return message;
}

} // namespace Tovra::Commands
