#include "simulator/Scenario.h"
#include "simulator/World.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

std::string GetComplaint(const char* pScenario)
{
    try {
        ReadScenario(Json::parse(pScenario));
        return "";
    } catch (const Problem& problem) {
        return problem.what();
    }
}

} // namespace

TEST(SimulatorScenario, IsReadFromJson)
{
    const Scenario scenario = ReadScenario(Json::parse(R"({
        "version": "1.29", "storage": "/tmp/x", "timing": {"scan": 7}, "freshStarts": true,
        "technologies": [{"type": "wifi", "powered": false, "name": "Air"}],
        "services": [{"name": "Home", "strength": 5, "state": "ready", "appears": "after-scan", "waitsForButton": true,
                      "properties": {"Strength": ["s", "loud"], "State": null}}],
        "behaviours": [{"member": "Scan", "action": "silence", "times": 2}]})"));
    EXPECT_EQ(scenario.version, Version::V1_29);
    EXPECT_EQ(scenario.sStorage, "/tmp/x");
    EXPECT_EQ(scenario.timing.scan.count(), 7);
    EXPECT_TRUE(scenario.bFreshStarts);
    ASSERT_EQ(scenario.vecTechnologies.size(), 1U);
    EXPECT_FALSE(scenario.vecTechnologies[0].bPowered);
    EXPECT_EQ(scenario.vecTechnologies[0].sName, "Air");
    ASSERT_EQ(scenario.vecServices.size(), 1U);
    const Network& network = scenario.vecServices[0];
    EXPECT_EQ(network.sName, "Home");
    EXPECT_EQ(network.nStrength, 5U);
    EXPECT_EQ(network.appearance, Appearance::AfterScan);
    EXPECT_TRUE(network.bWaitsForButton);
    EXPECT_EQ(network.overrides.at("Strength"), (Value{"s", "loud"}));
    EXPECT_EQ(network.overrides.at("State"), std::nullopt);
    ASSERT_EQ(scenario.vecBehaviours.size(), 1U);
    EXPECT_EQ(scenario.vecBehaviours[0].behaviour.action, Behaviour::Action::Silence);
    EXPECT_EQ(scenario.vecBehaviours[0].behaviour.nTimes, 2U);
}

TEST(SimulatorScenario, ThatIsWrongIsRefusedWithTheFieldAndWhatWouldBeRight)
{
    const std::vector<std::pair<const char*, std::string>> vecBad = {
        {"[]", "the whole: an object is needed, not array"},
        {R"({"version": "2"})", "version: 1.29 or 1.41 is needed, not \"2\""},
        {R"({"version": 1.41})", "version: a string is needed, not number"},
        {R"({"services": {}})", "services: a list is needed, not object"},
        {R"({"services": [{}, {"strength": 256}]})",
         "services[1].strength: a whole number from 0 to 255 is needed"},
        {R"({"services": [{"strength": "much"}]})",
         "services[0].strength: a whole number from 0 to 255 is needed"},
        {R"({"services": [{"saved": 1}]})",
         "services[0].saved: true or false is needed, not number"},
        {R"({"services": [{"state": "up"}]})",
         "services[0].state: idle, failure, association, configuration, ready, online or "
         "disconnect is needed, not \"up\""},
        {R"({"services": [{"security": ["psk", 1]}]})",
         "services[0].security: a string is needed, not number"},
        {R"({"services": [{"properties": {"X": ["i", "a"]}}]})",
         "services[0].properties.X: a whole number from -2147483648 to 2147483647 is needed"},
        {R"({"timing": {"scan": -1}})",
         "timing.scan: a whole number from 0 to 1000000000 is needed"},
        {R"({"technologies": [{"power": true}]})",
         "technologies[0].power: there is no such field; there is name, powered, properties, "
         "tethering or type"},
        {R"({"behaviours": [{"action": "reply", "signature": "s", "args": [1]}]})",
         "behaviours[0].args[0]: a string is needed, not number"},
        {R"({"behaviours": [{"action": "error"}]})",
         "behaviours[0].action: the fields \"error\" or \"signature\" and \"args\" go with "
         "\"action\": \"error\" or \"reply\""},
        {R"({"services": [{"path": "nowhere"}]})",
         "services[0].path: \"nowhere\" is no object path"}};
    for (const auto& [pScenario, sComplaint] : vecBad)
        EXPECT_EQ(GetComplaint(pScenario), sComplaint);
}

TEST(SimulatorScenario, TwoOfOneKindAreRefused)
{
    Scenario scenario;
    scenario.vecServices.resize(2);
    EXPECT_THROW(World{scenario}, Problem);
    scenario.vecServices.clear();
    scenario.vecTechnologies.resize(2);
    EXPECT_THROW(World{scenario}, Problem);
}

TEST(SimulatorScenario, TheReadyOnesCanBeLoaded)
{
    const std::string sDirectory = SCENARIOS "/";
    EXPECT_TRUE(World(LoadScenario(sDirectory + "empty.json")).vecServices.empty());
    const World cables(LoadScenario(sDirectory + "two-cables.json"));
    ASSERT_EQ(cables.vecServices.size(), 2U);
    EXPECT_EQ(cables.vecServices[0]->sPath, "/net/connman/service/ethernet_020000000100_cable");
    EXPECT_EQ(*cables.vecServices[0]->network.sName, *cables.vecServices[1]->network.sName);
    const World neighbourhood(LoadScenario(sDirectory + "neighbourhood.json"));
    EXPECT_EQ(neighbourhood.vecServices.size(), 11U);
    EXPECT_EQ(neighbourhood.vecUnlisted.size(), 2U);
}

TEST(SimulatorScenario, AFileThatCannotBeReadIsNamed)
{
    try {
        LoadScenario("/nowhere/x.json");
        FAIL();
    } catch (const Problem& problem) {
        EXPECT_STREQ(problem.what(), "/nowhere/x.json: cannot be read");
    }
}

TEST(SimulatorScenario, AServicesNameIsHexadecimalInItsPath)
{
    Network network;
    network.sName = "My Net-1";
    network.sMacAddress = "02:00:00:00:00:AB";
    EXPECT_EQ(MakeServiceIdentifier(network), "wifi_0200000000ab_4d79204e65742d31_managed_psk");
    network.sName = "\xc3\xbc";
    network.vecSecurity = {"none"};
    EXPECT_EQ(MakeServiceIdentifier(network), "wifi_0200000000ab_c3bc_managed_none");
    network.sName.reset();
    EXPECT_EQ(MakeServiceIdentifier(network), "wifi_0200000000ab_hidden_managed_none");
    network.sType = "ethernet";
    EXPECT_EQ(MakeServiceIdentifier(network), "ethernet_0200000000ab_cable");
}

} // namespace Tovra::Simulator
