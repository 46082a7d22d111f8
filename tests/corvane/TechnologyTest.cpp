#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Technologies : public Scene
{
};

TEST_F(Technologies, PowerGoesOffAndOn)
{
    StartConnMan();
    const Outcome off = Run({"power", "wifi", "off"});
    EXPECT_EQ(off.nExit, 0);
    EXPECT_EQ(off.sOutput, "wifi is off.\n");
    EXPECT_EQ(off.sErrors, "Switching off\n");
    const Json on = RunForJson({"power", "WiFi", "on"});
    EXPECT_EQ(on, Json::parse(R"({"command": "power", "technology": "wifi", "powered": true,
        "result": "done", "text": "wifi is on."})"));
    EXPECT_THAT(TakeCommands(), ElementsAre("wifi SetProperty [\"Powered\",[\"b\",false]]",
                                            "wifi SetProperty [\"Powered\",[\"b\",true]]"));
}

TEST_F(Technologies, PowerThatIsAsWantedSendsNothing)
{
    StartConnMan();
    EXPECT_EQ(Run({"power", "wifi", "on"}).nExit, 0);
    EXPECT_THAT(TakeCommands(), IsEmpty());
}

TEST_F(Technologies, PowerLeavesNetworksAlone)
{
    StartConnMan(WithAnotherCable());
    EXPECT_EQ(Run({"power", "wifi", "off"}).nExit, 0);
    EXPECT_EQ(TakeCommands().size(), 1u);
}

TEST_F(Technologies, PowerThatDoesNotComeEndsWithTheTimeToWait)
{
    StartConnMan();
    pConnMan->OnCall({"SetProperty", "", "", ""}, Simulator::Behaviour::StaySilent());
    const Outcome outcome = Run({"power", "wifi", "off", "--wait", "0.5"});
    EXPECT_EQ(outcome.nExit, 5);
    EXPECT_THAT(outcome.sErrors, HasSubstr("wifi is not off yet.\n"));
    EXPECT_EQ(RunForJson({"power", "wifi", "off", "--wait", "0.5"}, 5).at("powered"), true);
}

TEST_F(Technologies, AnUnknownTechnologyIsAnsweredWithWhatThereIs)
{
    StartConnMan();
    const Outcome outcome = Run({"power", "bluetooth", "on"});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.sErrors,
              "corvane: there is no technology 'bluetooth'; there is ethernet, wifi\n");
}

TEST_F(Technologies, AScanEndsWithTheNextChange)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[2].appearance = Simulator::Appearance::AfterScan;
    StartConnMan(scenario);
    const Outcome outcome = Run({"scan"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sErrors, "Scanning\n");
    EXPECT_THAT(outcome.sOutput, testing::StartsWith("NAME "));
    EXPECT_THAT(outcome.sOutput, HasSubstr("Guests "));
    EXPECT_THAT(TakeCommands(), ElementsAre("wifi Scan"));
}

TEST_F(Technologies, AScanThatFindsNothingNewEndsWithTheTimeToWait)
{
    StartConnMan();
    pConnMan->OnCall({"Scan", "", "", ""}, Simulator::Behaviour::StaySilent());
    const Outcome outcome = Run({"scan", "--wait", "0.5"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_THAT(outcome.sOutput,
                testing::StartsWith("No change was told of while waiting; the networks are:\n"));
    const Json json = RunForJson({"scan", "--wait", "0.5"});
    EXPECT_EQ(json.at("command"), "scan");
    EXPECT_EQ(json.at("changed"), false);
    EXPECT_EQ(json.at("networks").size(), 4u);
}

TEST_F(Technologies, AScanTakesWifiThatIsOn)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecTechnologies[0].bPowered = false;
    StartConnMan(scenario);
    const Outcome off = Run({"scan"});
    EXPECT_EQ(off.nExit, 2);
    EXPECT_EQ(off.sErrors, "corvane: WiFi is off; 'corvane power wifi on' switches it on\n");
    EXPECT_THAT(TakeCommands(), IsEmpty());
}

TEST_F(Technologies, AScanTakesADeviceWithWifi)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecTechnologies.erase(scenario.vecTechnologies.begin());
    StartConnMan(scenario);
    const Outcome outcome = Run({"scan"});
    EXPECT_EQ(outcome.nExit, 3);
    EXPECT_EQ(outcome.sErrors, "corvane: this device has no WiFi to scan with\n");
}

} // namespace

} // namespace Tovra
