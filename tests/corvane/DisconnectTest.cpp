#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

class Disconnecting : public Scene
{
};

TEST_F(Disconnecting, OnWifiTheNetworkIsForgottenAndTheProgramSaysSo)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sState = "online";
    StartConnMan(scenario);
    const Outcome outcome = Run({"disconnect", "My Net-1"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput, "Disconnected; the network daemon has forgotten the network and "
                               "its passphrase.\n");
    EXPECT_EQ(outcome.sErrors, "Disconnecting\n");
    EXPECT_THAT(TakeCommands(), ElementsAre("wifi_home Remove"));
}

TEST_F(Disconnecting, ACableIsNotForgotten)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[0].sState = "online";
    StartConnMan(scenario);
    const Json outcome = RunForJson({"disconnect", "Wired"});
    EXPECT_EQ(outcome, Json::parse(R"({"command": "disconnect", "key": "WiredBAB49A54",
        "forgotten": false, "result": "done", "text": "Disconnected."})"));
    EXPECT_THAT(TakeCommands(), ElementsAre("ethernet_cable Disconnect"));
}

TEST_F(Disconnecting, JsonTellsThatWifiIsForgotten)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sState = "online";
    StartConnMan(scenario);
    EXPECT_EQ(RunForJson({"disconnect", "My Net-1"}).at("forgotten"), true);
}

TEST_F(Disconnecting, WhatIsNotConnectedIsSaidToBeSo)
{
    StartConnMan();
    const Outcome outcome = Run({"disconnect", "My Net-1"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput, "Not connected.\n");
    EXPECT_THAT(TakeCommands(), testing::IsEmpty());
    EXPECT_EQ(RunForJson({"disconnect", "My Net-1"}).at("forgotten"), false);
}

TEST_F(Disconnecting, AnotherOfTheNameIsDisconnectedToo)
{
    StartConnMan(WithAnotherCable());
    EXPECT_EQ(Run({"disconnect", "Wired"}).nExit, 0);
    EXPECT_THAT(TakeCommands(), ElementsAre("ethernet_cable Disconnect"));
}

TEST_F(Disconnecting, TheTimeToWaitEndsIt)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[0].sState = "online";
    StartConnMan(scenario);
    pConnMan->OnCall({"Disconnect", "", "", ""}, Simulator::Behaviour::StaySilent());
    const Outcome outcome = Run({"disconnect", "Wired", "--wait", "0.5"});
    EXPECT_EQ(outcome.nExit, 5);
    EXPECT_THAT(outcome.sErrors, HasSubstr("The network is still connected.\n"));
}

} // namespace

} // namespace Tovra
