#include "tests/connman/CommandText.h"

#include "tests/connman/ListData.h"
#include "tests/support/DataText.h"

namespace Tovra::CommandText
{

std::string Describe(const Commands::Command& command)
{
    std::string sText = command.sPath + " " + command.sInterface + " " + command.sMember;
    for (const DBus::Data& argument : command.vecArguments)
        sText += " " + TestSupport::Describe(argument);
    return sText;
}

ConnMan::NetworkService MakeService(const std::string& sType)
{
    ListData::Properties properties{{"Type", ListData::Text(sType)},
                                    {"State", ListData::Text("idle")}};
    ConnMan::NetworkService service("/" + sType, properties);
    service.sIPv4Address = "192.0.2.7";
    service.sIPv4Netmask = "255.255.255.0";
    service.sIPv4Gateway = "192.0.2.1";
    service.vecNameservers = {"192.0.2.53", "192.0.2.9"};
    return service;
}

ConnMan::NetworkTechnology MakeTechnology()
{
    ListData::Properties properties = ListData::TechnologyProperties("Wireless");
    return ConnMan::NetworkTechnology("/technology", properties);
}

} // namespace Tovra::CommandText
