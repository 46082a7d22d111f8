#include "tests/connman/model/Look.h"

#include <array>
#include <iterator>

namespace Tovra::ConnManModel
{

using namespace TestSupport;

namespace
{

template <class Table> const auto& At(const Table& table, unsigned nIndex)
{
    return table[nIndex % std::size(table)];
}

constexpr const char* serviceNames[] = {
    "/net/connman/service/wifi_020000000000_61_managed_psk",
    "/net/connman/service/wifi_020000000000_62_managed_none",
    "/net/connman/service/ethernet_020000000001_cable",
    "/net/connman/service/wifi_020000000000_hidden_managed_psk",
    "/net/connman/service/ethernet_020000000002_cable",
    "/service", // no directory below the manager's
    "/",        // no last element
};
constexpr const char* technologyNames[] = {
    "/net/connman/technology/wifi",
    "/net/connman/technology/ethernet",
    "/net/connman/technology/p2p",
};
constexpr const char* states[] = {"idle",        "ready", "online", "failure",
                                  "association", "ready", "online", "configuration",
                                  "disconnect",  "Ready", "",       "online "};
constexpr const char* methods[] = {"dhcp", "manual", "auto", "off", "fixed", "", "DHCP"};
constexpr const char* names[] = {"home", "Wired", "caf\xC3\xA9", "", "it's \"x\" %s"};

WireValue State(const Look& look)
{
    return WireText(At(states, look.nState));
}

WireValue IPv4(const Look& look)
{
    constexpr unsigned nKinds = 5;
    const unsigned nKind = look.nAddress % nKinds;
    if (nKind == 4)
        return WireDictionary({});
    WireProperties properties = {{"Method", WireText(At(methods, look.nMethod))}};
    if (nKind == 3)
        return WireDictionary(properties);
    constexpr std::array<const char*, 3> addresses = {"192.0.2.1", "192.0.2.2", ""};
    properties.push_back({"Address", WireText(addresses[nKind])});
    properties.push_back({"Netmask", WireText("255.255.255.0")});
    if (nKind == 0)
        properties.push_back({"Gateway", WireText("192.0.2.254")});
    return WireDictionary(properties);
}

WireValue Ethernet(const Look& look)
{
    if (look.nLink % 3 == 1)
        return WireDictionary({});
    return WireDictionary({{"Method", WireText("auto")},
                           {"Interface", WireText(look.nLink % 3 == 0 ? "wlan0" : "")},
                           {"Address", WireText("02:00:00:00:00:00")},
                           {"MTU", WireNumber('q', 1500)}});
}

WireValue Name(const Look& look)
{
    return WireText(At(names, look.nName));
}

WireValue Servers(const Look& look)
{
    static const std::vector<std::string> values[] = {
        {}, {"192.0.2.53"}, {"192.0.2.53", "2001:db8::53"}, {"2001:db8::53", "192.0.2.53"}, {""}};
    return WireTexts(At(values, look.nServers));
}

WireValue Security(const Look& look)
{
    static const std::vector<std::string> values[] = {{"psk"}, {"none"}, {"psk", "wps"}, {}};
    return WireTexts(At(values, look.nSecurity));
}

WireValue Strength(const Look& look)
{
    constexpr std::array<unsigned, 4> values = {50, 1, 100, 255};
    return WireNumber('y', At(values, look.nStrength));
}

struct Property {
    const char* sKey;
    WireValue (*fnValue)(const Look& look);
};

// In the order of the fields; the two of the address are one property.
constexpr Property properties[] = {
    {"State", State}, {"IPv4", IPv4},           {"IPv4", IPv4},         {"Ethernet", Ethernet},
    {"Name", Name},   {"Nameservers", Servers}, {"Security", Security}, {"Strength", Strength}};

/** The last part of a path up to its first underscore. */
std::string TypeOf(const std::string& sPath)
{
    const std::string sLast = sPath.substr(sPath.rfind('/') + 1);
    return sLast.substr(0, sLast.find('_'));
}

} // namespace

std::string ServicePath(unsigned nPath)
{
    return At(serviceNames, nPath);
}

std::string TechnologyPath(unsigned nPath)
{
    return At(technologyNames, nPath);
}

WireProperties ServiceProperties(const std::string& sPath, const Look& look)
{
    WireProperties made;
    made.reserve(11);
    made.emplace_back("Type", WireText(TypeOf(sPath)));
    made.emplace_back("Security", Security(look));
    made.emplace_back("State", State(look));
    made.emplace_back("AutoConnect", WireBool(true));
    made.emplace_back("Ethernet", Ethernet(look));
    made.emplace_back("IPv4", IPv4(look));
    made.emplace_back("IPv4.Configuration", WireDictionary({}));
    made.emplace_back("Nameservers", Servers(look));
    made.emplace_back("Provider", WireDictionary({}));
    if (look.nStrength % 5 != 4)
        made.emplace_back("Strength", Strength(look));
    if (look.nName % 6 != 5)
        made.emplace_back("Name", Name(look));
    return made;
}

WireProperties TechnologyProperties(const std::string& sPath, const Look& look)
{
    return {{"Name", Name(look)},
            {"Type", WireText(TypeOf(sPath))},
            {"Powered", WireBool(look.nState % 2 == 1)},
            {"Connected", WireBool(look.nLink % 2 == 1)},
            {"Tethering", WireBool(false)}};
}

std::pair<std::string, WireValue> ServiceProperty(const Look& look, unsigned nField)
{
    const Property& property = At(properties, nField);
    return {property.sKey, property.fnValue(look)};
}

} // namespace Tovra::ConnManModel
