#include "tests/simulator/Neighbourhood.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pWifi = "/net/connman/technology/wifi";
constexpr const char* pEthernet = "/net/connman/technology/ethernet";
constexpr const char* pInterface = "net.connman.Technology";

const std::string sHome = PathOf(MakeWifi("Home"));

std::optional<Reply> SetPowered(Neighbourhood& neighbourhood, bool bPowered)
{
    return neighbourhood.Call(pWifi, pInterface, "SetProperty",
                              {"sv", Json::array({"Powered", Json::array({"b", bPowered})})});
}

std::optional<Reply> Scan(Neighbourhood& neighbourhood, const char* pPath)
{
    return neighbourhood.Call(pPath, pInterface, "Scan");
}

} // namespace

TEST(SimulatedTechnology, WithoutPowerHasNoServices)
{
    Network network = MakeWifi("Home");
    network.sState = "online";
    Neighbourhood neighbourhood({network, MakeCable("eth0")});
    EXPECT_FALSE(SetPowered(neighbourhood, false)) << "it takes its time";
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.vecLate.size(), 1U);
    EXPECT_EQ(neighbourhood.simulation.GetServicePaths(),
              (std::vector<std::string>{PathOf(MakeCable("eth0"))}));
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(pWifi, "Powered"), (std::vector<Json>{false}));
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(pWifi, "Connected"), (std::vector<Json>{false}));
    const auto vecSignals = neighbourhood.outlet.GetSignals("ServicesChanged");
    ASSERT_EQ(vecSignals.size(), 1U);
    EXPECT_EQ(vecSignals[0].arguments.values[1], (Json::array({sHome})));
}

TEST(SimulatedTechnology, LosesItsServicesAtOnceAndItsPowerLater)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    SetPowered(neighbourhood, false);
    EXPECT_TRUE(neighbourhood.simulation.GetServicePaths().empty());
    EXPECT_TRUE(neighbourhood.outlet.GetAnnounced(pWifi, "Powered").empty());
}

TEST(SimulatedTechnology, FindsItsServicesAgainWithPower)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    SetPowered(neighbourhood, false);
    neighbourhood.outlet.Pass(aWhile);
    neighbourhood.outlet.TakeSignals();
    SetPowered(neighbourhood, true);
    neighbourhood.outlet.Pass(aWhile);
    const auto vecSignals = neighbourhood.outlet.GetSignals("ServicesChanged");
    ASSERT_EQ(vecSignals.size(), 1U);
    EXPECT_EQ(vecSignals[0].arguments.values[0][0][0], sHome);
    EXPECT_EQ(vecSignals[0].arguments.values[0][0][1].size(), 24U);
}

TEST(SimulatedTechnology, RefusesThePowerItHas)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    EXPECT_EQ(SetPowered(neighbourhood, true)->sError, "net.connman.Error.AlreadyEnabled");
    SetPowered(neighbourhood, false);
    EXPECT_EQ(SetPowered(neighbourhood, true)->sError, "net.connman.Error.Failed") << "busy";
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(SetPowered(neighbourhood, false)->sError, "net.connman.Error.AlreadyDisabled");
}

TEST(SimulatedTechnology, AnswersAScanWhenItIsOver)
{
    Scenario scenario = MakeScenario({MakeWifi("Home")});
    Neighbourhood neighbourhood(scenario);
    EXPECT_FALSE(Scan(neighbourhood, pWifi));
    neighbourhood.outlet.Pass(scenario.timing.scan - std::chrono::milliseconds(1));
    EXPECT_FALSE(Scan(neighbourhood, pWifi)) << "one that joins in";
    EXPECT_TRUE(neighbourhood.vecLate.empty());
    neighbourhood.outlet.Pass(std::chrono::milliseconds(1));
    EXPECT_EQ(neighbourhood.vecLate.size(), 2U);
}

TEST(SimulatedTechnology, ListsWhatAScanHasFound)
{
    Network later = MakeWifi("Later");
    later.appearance = Appearance::AfterScan;
    Neighbourhood neighbourhood({MakeWifi("Home"), later});
    EXPECT_EQ(neighbourhood.simulation.GetServicePaths().size(), 1U);
    Scan(neighbourhood, pWifi);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.simulation.GetServicePaths().size(), 2U);
}

TEST(SimulatedTechnology, ScansOnlyWifiAndOnlyWithPower)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    EXPECT_EQ(Scan(neighbourhood, pEthernet)->sError, "net.connman.Error.NotSupported");
    SetPowered(neighbourhood, false);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(Scan(neighbourhood, pWifi)->sError, "net.connman.Error.NoCarrier");
}

TEST(SimulatedTechnology, IsAnnouncedWhenItComesAndGoes)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    neighbourhood.simulation.RemoveTechnology(pWifi);
    const auto vecRemoved = neighbourhood.outlet.GetSignals("TechnologyRemoved");
    ASSERT_EQ(vecRemoved.size(), 1U);
    EXPECT_EQ(vecRemoved[0].arguments.sSignature, "o");
    EXPECT_TRUE(neighbourhood.simulation.GetServicePaths().empty());
    TechnologySettings bluetooth;
    bluetooth.sType = "bluetooth";
    neighbourhood.simulation.AddTechnology(bluetooth);
    const auto vecAdded = neighbourhood.outlet.GetSignals("TechnologyAdded");
    ASSERT_EQ(vecAdded.size(), 1U);
    EXPECT_EQ(vecAdded[0].arguments.sSignature, "oa{sv}");
    EXPECT_EQ(vecAdded[0].arguments.values[1]["Name"][1], "Bluetooth");
}

TEST(SimulatedTechnology, AScanEndsWithTheTechnology)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    Scan(neighbourhood, pWifi);
    neighbourhood.simulation.RemoveTechnology(pWifi);
    ASSERT_EQ(neighbourhood.vecLate.size(), 1U);
    EXPECT_EQ(neighbourhood.vecLate[0].sError, "net.connman.Error.Failed");
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.vecLate.size(), 1U);
}

TEST(SimulatedTechnology, HasNoPowerInOfflineMode)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    neighbourhood.Call("/", "net.connman.Manager", "SetProperty",
                       {"sv", Json::array({"OfflineMode", Json::array({"b", true})})});
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced("/", "State"), (std::vector<Json>{"offline"}));
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(pWifi, "Powered"), (std::vector<Json>{false}));
}

TEST(SimulatedTechnology, ManyChangesOfTheListAreAnnouncedTogether)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    const std::string sFirst = neighbourhood.simulation.AddService(MakeWifi("First"));
    neighbourhood.outlet.Pass(std::chrono::milliseconds(99));
    neighbourhood.simulation.AddService(MakeWifi("Second"));
    neighbourhood.simulation.RemoveService(sFirst);
    neighbourhood.outlet.Pass(std::chrono::milliseconds(1));
    const auto vecSignals = neighbourhood.outlet.GetSignals("ServicesChanged");
    ASSERT_EQ(vecSignals.size(), 1U);
    EXPECT_EQ(vecSignals[0].arguments.values[0].size(), 2U);
    EXPECT_EQ(vecSignals[0].arguments.values[1], (Json::array({sFirst})));
}

TEST(SimulatedTechnology, AServiceThatIsNotAnnouncedYetSendsNoPropertyChanged)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    const std::string sPath = neighbourhood.simulation.AddService(MakeWifi("New"));
    neighbourhood.simulation.SetState(sPath, "ready");
    EXPECT_TRUE(neighbourhood.outlet.GetAnnounced(sPath, "State").empty());
    neighbourhood.outlet.Pass(aWhile);
    neighbourhood.simulation.SetState(sPath, "online");
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sPath, "State").size(), 1U);
}

} // namespace Tovra::Simulator
