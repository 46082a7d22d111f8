#include "tests/simulator/Neighbourhood.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

const std::string sHome = PathOf(MakeWifi("Home"));

Value MakeManual(const std::string& sGateway)
{
    return MakeDictionaryValue({{"Address", MakeString("10.0.0.2")},
                                {"Gateway", MakeString(sGateway)},
                                {"Method", MakeString("manual")},
                                {"Netmask", MakeString("255.0.0.0")}});
}

std::vector<std::string> GetNames(const Properties& properties)
{
    std::vector<std::string> vecNames;
    for (const auto& [sName, value] : properties)
        vecNames.push_back(sName);
    return vecNames;
}

} // namespace

TEST(SimulatedProperties, AWifiServiceHas22In129And24In141)
{
    const Service service(MakeWifi("Home"));
    const std::vector<std::string> vecOld = {"Type",
                                             "Security",
                                             "State",
                                             "Strength",
                                             "Favorite",
                                             "Immutable",
                                             "AutoConnect",
                                             "Name",
                                             "Ethernet",
                                             "IPv4",
                                             "IPv4.Configuration",
                                             "IPv6",
                                             "IPv6.Configuration",
                                             "Nameservers",
                                             "Nameservers.Configuration",
                                             "Timeservers",
                                             "Timeservers.Configuration",
                                             "Domains",
                                             "Domains.Configuration",
                                             "Proxy",
                                             "Proxy.Configuration",
                                             "Provider"};
    EXPECT_EQ(GetNames(GetProperties(service, Version::V1_29)), vecOld);
    EXPECT_EQ(GetProperties(service, Version::V1_41).size(), 24U);
}

TEST(SimulatedProperties, AreAbsentWhereConnManLeavesThemOut)
{
    Network network = MakeWifi("Home");
    network.nStrength = 0;
    network.sName.reset();
    Network cable = MakeCable("eth0");
    Neighbourhood neighbourhood({network, cable});
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(network), "Strength"), nullptr);
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(network), "Name"), nullptr);
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(cable), "Strength"), nullptr);
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(cable), "Security"), Json::array());
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(cable), "Favorite"), true);
}

TEST(SimulatedProperties, TheTetheringFrequencyIsNew)
{
    const Technology technology{TechnologySettings()};
    EXPECT_EQ(GetProperties(technology, Version::V1_29).size(), 5U);
    const Properties properties = GetProperties(technology, Version::V1_41);
    ASSERT_EQ(properties.size(), 6U);
    EXPECT_EQ(properties.back().first, "TetheringFreq");
    EXPECT_EQ(properties.back().second.sSignature, "i");
}

TEST(SimulatedProperties, AManualAddressIsTakenAsOneDictionary)
{
    Network network = MakeWifi("Home");
    network.sState = "online";
    Neighbourhood neighbourhood({network});
    EXPECT_EQ(
        neighbourhood.SetProperty(sHome, "IPv4.Configuration", MakeManual("10.0.0.1"))->sError, "");
    EXPECT_EQ(neighbourhood.GetState(sHome), "configuration");
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "online");
    const Json expected =
        MakeDictionary(ToProperties({"manual", "10.0.0.2", "255.0.0.0", "10.0.0.1"}));
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "IPv4"), expected);
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "IPv4.Configuration"), expected);
}

TEST(SimulatedProperties, AnAddressThatIsNoneIsRefused)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    const auto fnSet = [&](const std::string& sName, const Value& value) {
        return neighbourhood.SetProperty(sHome, sName, value)->sError;
    };
    const std::string sInvalid = "net.connman.Error.InvalidArguments";
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeManual("")), sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeManual("::1")), sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeString("manual")), sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeDictionaryValue({})), sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", {"a{ss}", {{"Method", "dhcp"}}}), sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeDictionaryValue({{"Method", MakeBool(true)}})),
              sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeDictionaryValue({{"Method", MakeString("fixed")}})),
              sInvalid);
    EXPECT_EQ(fnSet("IPv4.Configuration", MakeDictionaryValue({{"Method", MakeString("auto")}})),
              "net.connman.Error.NotSupported");
    EXPECT_EQ(fnSet("IPv4.Configuration.Method", MakeString("dhcp")),
              "net.connman.Error.InvalidProperty");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "IPv4.Configuration")["Method"][1], "dhcp");
}

TEST(SimulatedProperties, AServiceWithoutAMethodStaysInConfiguration)
{
    Network network = MakeWifi("Home");
    network.sState = "online";
    Neighbourhood neighbourhood({network});
    neighbourhood.SetProperty(sHome, "IPv4.Configuration",
                              MakeDictionaryValue({{"Method", MakeString("off")}}));
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "configuration");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "IPv4"), Json::object());
}

TEST(SimulatedProperties, NameServersThatAreNoAddressesArePassedOver)
{
    Network network = MakeWifi("Home");
    network.sState = "online";
    Neighbourhood neighbourhood({network});
    neighbourhood.SetProperty(sHome, "Nameservers.Configuration",
                              MakeStrings({"1.1.1.1", "bad", "::1", ""}));
    const Json expected = MakeStrings({"1.1.1.1", "::1"}).contents;
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Nameservers.Configuration"), expected);
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Nameservers"), expected);
    neighbourhood.SetProperty(sHome, "Nameservers.Configuration", MakeStrings({}));
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Nameservers"),
              MakeStrings({"192.168.1.1"}).contents);
    EXPECT_EQ(neighbourhood.SetProperty(sHome, "Nameservers.Configuration", MakeString("1.1.1.1"))
                  ->sError,
              "net.connman.Error.InvalidArguments");
}

TEST(SimulatedProperties, OnlyAFavouriteHasAutoConnect)
{
    Network saved = MakeWifi("Saved");
    saved.bSaved = true;
    Neighbourhood neighbourhood({MakeWifi("Home"), saved});
    EXPECT_EQ(neighbourhood.SetProperty(sHome, "AutoConnect", MakeBool(true))->sError,
              "net.connman.Error.InvalidService");
    EXPECT_EQ(neighbourhood.SetProperty(PathOf(saved), "AutoConnect", MakeBool(false))->sError, "");
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(saved), "AutoConnect"), false);
}

TEST(SimulatedProperties, AnImmutableServiceIsNotConfigured)
{
    Network network = MakeWifi("Home");
    network.bImmutable = true;
    Neighbourhood neighbourhood({network});
    EXPECT_EQ(
        neighbourhood.SetProperty(sHome, "Nameservers.Configuration", MakeStrings({}))->sError,
        "net.connman.Error.NotSupported");
}

TEST(SimulatedProperties, AnUnknownMethodSignatureOrObjectIsNotThere)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    const auto fnCall = [&](const std::string& sPath, const std::string& sInterface,
                            const std::string& sMember, const Arguments& arguments = {}) {
        return neighbourhood.Call(sPath, sInterface, sMember, arguments)->sError;
    };
    const std::string sMethod = "org.freedesktop.DBus.Error.UnknownMethod";
    EXPECT_EQ(fnCall(sHome, "net.connman.Service", "Nope"), sMethod);
    EXPECT_EQ(fnCall(sHome, "", "Connect"), sMethod);
    EXPECT_EQ(fnCall(sHome, "net.connman.Manager", "GetServices"), sMethod);
    EXPECT_EQ(fnCall(sHome, "net.connman.Service", "Connect", {"s", Json::array({"now"})}),
              sMethod);
    EXPECT_EQ(fnCall("/nowhere", "net.connman.Service", "Connect"),
              "org.freedesktop.DBus.Error.UnknownObject");
}

TEST(SimulatedProperties, AnyValueCanTakeAPropertysPlace)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    neighbourhood.simulation.SetServiceProperty(sHome, "Strength", MakeString("loud"));
    neighbourhood.simulation.SetServiceProperty(sHome, "State", std::nullopt);
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Strength"), "loud");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "State"), nullptr);
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sHome, "Strength"), (std::vector<Json>{"loud"}));
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sHome, "State"), (std::vector<Json>{""}));
    EXPECT_THROW(neighbourhood.simulation.SetServiceProperty(sHome, "X", Value{"i", "text"}),
                 Problem);
    EXPECT_THROW(neighbourhood.simulation.SetServiceProperty("/nowhere", "X", MakeBool(true)),
                 Problem);
}

} // namespace Tovra::Simulator
