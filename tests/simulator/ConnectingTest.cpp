#include "tests/simulator/Neighbourhood.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

const Network home = MakeWifi("Home");
const std::string sHome = PathOf(home);

Network MakeSaved(const std::string& sName)
{
    Network network = MakeWifi(sName);
    network.bSaved = true;
    return network;
}

Json Texts(const std::vector<std::string>& vecTexts)
{
    return MakeStrings(vecTexts).contents;
}

} // namespace

TEST(SimulatedConnecting, ASavedNetworkConnectsWithoutAQuestionAndWalksItsStates)
{
    Neighbourhood neighbourhood({MakeSaved("Home")});
    EXPECT_FALSE(neighbourhood.Connect(sHome));
    neighbourhood.outlet.Pass(aWhile);
    ASSERT_EQ(neighbourhood.vecLate.size(), 1U);
    EXPECT_FALSE(neighbourhood.vecLate[0].IsError());
    EXPECT_TRUE(neighbourhood.outlet.vecAsked.empty());
    const std::vector<Json> vecStates = neighbourhood.outlet.GetAnnounced(sHome, "State");
    EXPECT_EQ(vecStates, (std::vector<Json>{"association", "configuration", "ready", "online"}));
}

TEST(SimulatedConnecting, EachStepTakesItsTime)
{
    Scenario scenario = MakeScenario({MakeSaved("Home")});
    scenario.timing.association = std::chrono::milliseconds(100);
    scenario.timing.configuration = std::chrono::milliseconds(200);
    Neighbourhood neighbourhood(scenario);
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(std::chrono::milliseconds(99));
    EXPECT_EQ(neighbourhood.GetState(sHome), "association");
    neighbourhood.outlet.Pass(std::chrono::milliseconds(2));
    EXPECT_EQ(neighbourhood.GetState(sHome), "configuration");
    neighbourhood.outlet.Pass(std::chrono::milliseconds(197));
    EXPECT_EQ(neighbourhood.GetState(sHome), "configuration");
    neighbourhood.outlet.Pass(std::chrono::milliseconds(2));
    EXPECT_EQ(neighbourhood.GetState(sHome), "ready");
}

TEST(SimulatedConnecting, ConnectAnswersWhenTheNetworkIsReadyAndNotBefore)
{
    Scenario scenario = MakeScenario({MakeSaved("Home")});
    Neighbourhood neighbourhood(scenario);
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(scenario.timing.association + scenario.timing.configuration -
                              std::chrono::milliseconds(1));
    EXPECT_TRUE(neighbourhood.vecLate.empty());
    neighbourhood.outlet.Pass(std::chrono::milliseconds(1));
    EXPECT_EQ(neighbourhood.vecLate.size(), 1U);
}

TEST(SimulatedConnecting, ConnectedItHasAnAddressAndNameServersAndIsAFavourite)
{
    Neighbourhood neighbourhood({MakeSaved("Home")});
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "IPv4"), Json::object());
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Nameservers"), Json::array());
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(
        neighbourhood.GetProperty(sHome, "IPv4"),
        MakeDictionary(ToProperties({"dhcp", "192.168.1.20", "255.255.255.0", "192.168.1.1"})));
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Nameservers"), Texts({"192.168.1.1"}));
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Favorite"), true);
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sHome, "IPv4").size(), 1U);
}

TEST(SimulatedConnecting, TheAddressMayComeAfterTheStateReady)
{
    Scenario scenario = MakeScenario({MakeSaved("Home")});
    scenario.timing.address = std::chrono::milliseconds(50);
    Neighbourhood neighbourhood(scenario);
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    const std::vector<Json> vecValues = neighbourhood.outlet.GetAnnounced(sHome, "IPv4");
    ASSERT_EQ(vecValues.size(), 2U);
    EXPECT_EQ(vecValues[0], MakeDictionary({{"Method", MakeString("dhcp")}}));
    EXPECT_EQ(vecValues[1]["Address"][1], "192.168.1.20");
}

TEST(SimulatedConnecting, ANetworkThatNeverGetsOnlineStaysReady)
{
    Network network = MakeSaved("Home");
    network.bOnline = false;
    Neighbourhood neighbourhood({network});
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "ready");
}

TEST(SimulatedConnecting, ACableIsAnsweredAtOnceAndIsNeverAssociated)
{
    const Network cable = MakeCable("eth0");
    const std::string sPath = PathOf(cable);
    Neighbourhood neighbourhood({cable});
    const auto reply = neighbourhood.Connect(sPath);
    ASSERT_TRUE(reply);
    EXPECT_FALSE(reply->IsError());
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sPath, "State"),
              (std::vector<Json>{"configuration", "ready", "online"}));
    EXPECT_TRUE(neighbourhood.vecLate.empty());
}

TEST(SimulatedConnecting, AConnectedServiceComesFirstAndTheNewOrderIsAnnounced)
{
    Network strong = MakeWifi("Strong");
    strong.nStrength = 90;
    Neighbourhood neighbourhood({strong, MakeSaved("Home")});
    neighbourhood.simulation.SetState(PathOf(strong), "ready");
    neighbourhood.outlet.Pass(aWhile);
    const auto vecSignals = neighbourhood.outlet.GetSignals("ServicesChanged");
    ASSERT_EQ(vecSignals.size(), 1U);
    const Json services = vecSignals[0].arguments.values[0];
    EXPECT_EQ(services[0], (Json::array({PathOf(strong), Json::object()})));
    EXPECT_EQ(services[1], (Json::array({sHome, Json::object()})));
}

TEST(SimulatedConnecting, AChangeOfAPropertyAloneAnnouncesNoServices)
{
    Neighbourhood neighbourhood({MakeSaved("Home"), MakeWifi("Other")});
    neighbourhood.simulation.ChangeNetwork(sHome, [](Network& n) { n.nStrength = 61; });
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sHome, "Strength"), (std::vector<Json>{61}));
    EXPECT_TRUE(neighbourhood.outlet.GetSignals("ServicesChanged").empty());
}

TEST(SimulatedConnecting, EveryChangeOfStateAnnouncesTheServicesIfTheScenarioWantsIt)
{
    Scenario scenario = MakeScenario({MakeSaved("Home"), MakeWifi("Other")});
    scenario.bAnnounceEverySort = true;
    Neighbourhood neighbourhood(scenario);
    neighbourhood.simulation.SetState(sHome, "association");
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.outlet.GetSignals("ServicesChanged").size(), 1U);
}

TEST(SimulatedConnecting, AnotherNetworkOfTheSameDeviceIsLeft)
{
    Network first = MakeSaved("First");
    first.sState = "online";
    Neighbourhood neighbourhood({first, MakeSaved("Home")});
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(PathOf(first), "State"),
              (std::vector<Json>{"disconnect", "idle"}));
    EXPECT_EQ(neighbourhood.GetState(sHome), "online");
}

TEST(SimulatedConnecting, TheStateOfTheTechnologyAndOfTheManagerFollow)
{
    Neighbourhood neighbourhood({MakeSaved("Home")});
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    neighbourhood.Disconnect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    const std::string sTechnology = "/net/connman/technology/wifi";
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sTechnology, "Connected"),
              (std::vector<Json>{true, false}));
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced("/", "State"),
              (std::vector<Json>{"ready", "online", "idle"}));
}

TEST(SimulatedConnecting, DisconnectWalksThroughDisconnectToIdle)
{
    Network network = MakeSaved("Home");
    network.sState = "online";
    Neighbourhood neighbourhood({network});
    const auto reply = neighbourhood.Disconnect(sHome);
    ASSERT_TRUE(reply);
    EXPECT_FALSE(reply->IsError());
    EXPECT_EQ(neighbourhood.GetState(sHome), "disconnect");
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "IPv4"), Json::object());
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Favorite"), true);
}

TEST(SimulatedConnecting, ADisconnectAbortsAWaitingConnect)
{
    Neighbourhood neighbourhood({MakeSaved("Home")});
    neighbourhood.Connect(sHome);
    neighbourhood.Disconnect(sHome);
    ASSERT_EQ(neighbourhood.vecLate.size(), 1U);
    EXPECT_EQ(neighbourhood.vecLate[0].sError, "net.connman.Error.OperationAborted");
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
}

TEST(SimulatedConnecting, WhatCannotBeDoneIsRefusedByConnMansNames)
{
    Network online = MakeSaved("Home");
    online.sState = "online";
    const Network cable = MakeCable("eth0");
    Neighbourhood neighbourhood({online, cable, MakeSaved("Other")});
    EXPECT_EQ(neighbourhood.Connect(sHome)->sError, "net.connman.Error.AlreadyConnected");
    EXPECT_EQ(neighbourhood.Disconnect(PathOf(cable))->sError, "net.connman.Error.NotConnected");
    EXPECT_EQ(neighbourhood.Call(PathOf(cable), "net.connman.Service", "Remove")->sError,
              "net.connman.Error.NotSupported");
    const std::string sOther = PathOf(MakeWifi("Other"));
    neighbourhood.Connect(sOther);
    EXPECT_EQ(neighbourhood.Connect(sOther)->sError, "net.connman.Error.InProgress");
}

TEST(SimulatedConnecting, AnAttemptThatTakesTooLongFails)
{
    Scenario scenario = MakeScenario({MakeSaved("Home")});
    scenario.timing.association = std::chrono::seconds(500);
    Neighbourhood neighbourhood(scenario);
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(scenario.timing.connectTimeout);
    ASSERT_EQ(neighbourhood.vecLate.size(), 1U);
    EXPECT_EQ(neighbourhood.vecLate[0].sError, "net.connman.Error.OperationTimeout");
    EXPECT_EQ(neighbourhood.GetState(sHome), "failure");
    neighbourhood.outlet.Pass(std::chrono::seconds(500));
    EXPECT_EQ(neighbourhood.GetState(sHome), "failure");
}

TEST(SimulatedConnecting, RemoveForgetsTheNetwork)
{
    Network network = MakeSaved("Home");
    network.sState = "online";
    Neighbourhood neighbourhood({network});
    const auto reply = neighbourhood.Call(sHome, "net.connman.Service", "Remove");
    EXPECT_FALSE(reply->IsError());
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "Favorite"), false);
    EXPECT_EQ(neighbourhood.GetProperty(sHome, "AutoConnect"), false);
    EXPECT_FALSE(neighbourhood.simulation.GetService(sHome).sPassphrase);
}

TEST(SimulatedConnecting, FavouritesConnectByThemselvesOnlyIfTheScenarioWantsIt)
{
    Neighbourhood quiet({MakeSaved("Home")});
    quiet.outlet.Pass(aWhile);
    EXPECT_EQ(quiet.GetState(sHome), "idle");

    Scenario scenario = MakeScenario({MakeSaved("Home"), MakeSaved("Other")});
    scenario.bAutoConnects = true;
    Neighbourhood lively(scenario);
    lively.outlet.Pass(aWhile);
    EXPECT_EQ(lively.GetState(sHome), "online");
    lively.Disconnect(sHome);
    lively.outlet.Pass(aWhile);
    EXPECT_EQ(lively.GetState(sHome), "idle") << "it was disconnected on request";
    EXPECT_EQ(lively.GetState(PathOf(MakeWifi("Other"))), "online");
}

TEST(SimulatedConnecting, CablesConnectByThemselvesAllAndNetworksInTheAirOnlyWithoutThem)
{
    Scenario scenario = MakeScenario({MakeSaved("Home")});
    scenario.bAutoConnects = true;
    const Network first = MakeCable("eth0");
    const Network second = MakeCable("eth1");
    Neighbourhood neighbourhood(scenario);
    neighbourhood.simulation.RemoveService(sHome);
    neighbourhood.simulation.AddService(first);
    neighbourhood.simulation.AddService(second);
    neighbourhood.simulation.AddService(MakeSaved("Home"));
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(PathOf(first)), "online");
    EXPECT_EQ(neighbourhood.GetState(PathOf(second)), "online");
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
}

} // namespace Tovra::Simulator
