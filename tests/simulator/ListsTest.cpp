#include "simulator/Daemon.h"
#include "tests/simulator/Peer.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pManager = "net.connman.Manager";
constexpr const char* pHome = "/net/connman/service/wifi_020000000000_486f6d65_managed_psk";

Network MakeHome()
{
    Network network;
    network.sName = "Home";
    network.sPassphrase = "correct horse";
    return network;
}

Scenario MakeScenario()
{
    Scenario scenario;
    scenario.timing = Timing::Quick();
    scenario.vecTechnologies.emplace_back();
    scenario.vecServices = {MakeHome()};
    return scenario;
}

} // namespace

TEST(SimulatedLists, AServiceHasThePathAndThePropertiesOfConnMan141)
{
    const Daemon daemon(MakeScenario());
    Peer peer;
    const Reply reply = peer.Ask("/", pManager, "GetServices");
    ASSERT_EQ(reply.arguments.sSignature, "a(oa{sv})");
    const Json services = reply.arguments.values[0];
    ASSERT_EQ(services.size(), 1U);
    EXPECT_EQ(services[0][0], pHome);
    const Json properties = services[0][1];
    EXPECT_EQ(properties.size(), 24U);
    EXPECT_EQ(properties["Type"], (Json::array({"s", "wifi"})));
    EXPECT_EQ(properties["Strength"], (Json::array({"y", 60})));
    EXPECT_EQ(properties["IPv4"], (Json::array({"a{sv}", Json::object()})));
    EXPECT_EQ(properties["Ethernet"][1]["MTU"], (Json::array({"q", 1500})));
}

TEST(SimulatedLists, AnAddedServiceIsAnnouncedInFullAndTheOthersEmpty)
{
    Daemon daemon(MakeScenario());
    Peer peer;
    Network other = MakeHome();
    other.sName = "Other";
    other.nStrength = 10;
    const std::string sPath = daemon.AddService(other);
    const auto signal = peer.TakeSignal("ServicesChanged");
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->arguments.sSignature, "a(oa{sv})ao");
    const Json services = signal->arguments.values[0];
    ASSERT_EQ(services.size(), 2U);
    EXPECT_EQ(services[0], (Json::array({pHome, Json::object()})));
    EXPECT_EQ(services[1][0], sPath);
    EXPECT_EQ(services[1][1].size(), 24U);
}

TEST(SimulatedLists, ACallIsRecordedWithItsArguments)
{
    const Daemon daemon(MakeScenario());
    Peer peer;
    const Json variant = Json::array({"a{sv}", {{"Method", Json::array({"s", "off"})}}});
    peer.Ask(pHome, "net.connman.Service", "SetProperty",
             {"sv", Json::array({"IPv4.Configuration", variant})});
    const auto call = daemon.WaitForCall("SetProperty", TestSupport::deadline);
    ASSERT_TRUE(call);
    EXPECT_EQ(call->sPath, pHome);
    EXPECT_EQ(call->arguments.sSignature, "sv");
    EXPECT_EQ(call->arguments.values, (Json::array({"IPv4.Configuration", variant})));
    EXPECT_FALSE(call->bNoReply);
}

TEST(SimulatedLists, ASignalOfAnyShapeIsEmittedAsTold)
{
    Daemon daemon(MakeScenario());
    Peer peer;
    daemon.EmitRaw({pHome,
                    "net.connman.Service",
                    "PropertyChanged",
                    {"iv", Json::array({-3, Json::array({"x", -5})})},
                    ""});
    const auto signal = peer.TakeSignal("PropertyChanged");
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->arguments.sSignature, "iv");
    EXPECT_EQ(signal->arguments.values, (Json::array({-3, Json::array({"x", -5})})));
}

} // namespace Tovra::Simulator
