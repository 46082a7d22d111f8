#include "simulator/AgentInput.h"
#include "simulator/Agents.h"
#include "simulator/Behaviour.h"
#include "simulator/CallLog.h"
#include "simulator/IpConfiguration.h"
#include "simulator/Order.h"
#include "simulator/Override.h"
#include "simulator/Storage.h"
#include "tests/simulator/Neighbourhood.h"
#include "tests/support/Waiting.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <thread>

namespace Tovra::Simulator
{

namespace
{

namespace fs = std::filesystem;

Call MakeCall(const std::string& sMember, const std::string& sPath = "/")
{
    Call call;
    call.sMember = sMember;
    call.sPath = sPath;
    return call;
}

Service MakeService(const std::string& sName, const std::string& sState, bool bSaved,
                    unsigned nStrength)
{
    Network network = MakeWifi(sName);
    network.sState = sState;
    network.bSaved = bSaved;
    network.nStrength = nStrength;
    return Service(network);
}

std::string ReadFile(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

} // namespace

TEST(SimulatorOrder, IsThatOfConnMan)
{
    const std::vector<Service> vecOrdered = {
        MakeService("online", "online", true, 1),
        MakeService("ready", "ready", true, 99),
        MakeService("configuring", "configuration", false, 1),
        Service(MakeCable("eth0")),
        MakeService("saved", "idle", true, 1),
        MakeService("strong", "idle", false, 90),
        MakeService("weak A", "idle", false, 10),
        MakeService("weak B", "failure", false, 10),
    };
    for (std::size_t n = 0; n < vecOrdered.size(); ++n)
        for (std::size_t m = 0; m < vecOrdered.size(); ++m)
            EXPECT_EQ(ComesBefore(vecOrdered[n], vecOrdered[m]), n < m) << n << " and " << m;
}

TEST(SimulatorOverride, ReplacesAddsAndLeavesOut)
{
    Properties properties = {{"a", MakeBool(true)}, {"b", MakeBool(true)}};
    Apply({{"a", MakeByte(1)}, {"b", std::nullopt}, {"c", MakeByte(2)}, {"d", std::nullopt}},
          properties);
    EXPECT_EQ(properties, (Properties{{"a", MakeByte(1)}, {"c", MakeByte(2)}}));
}

TEST(SimulatorOverride, AChangeIsWhatIsNewOrDiffersAndTheEmptyValueOfWhatIsGone)
{
    const Properties before = {{"same", MakeByte(1)},
                               {"other", MakeByte(1)},
                               {"gone", MakeString("text")},
                               {"type", MakeByte(1)}};
    const Properties after = {{"same", MakeByte(1)},
                              {"other", MakeByte(2)},
                              {"type", MakeUInt16(1)},
                              {"new", MakeByte(3)}};
    EXPECT_EQ(Compare(before, after), (Properties{{"other", MakeByte(2)},
                                                  {"type", MakeUInt16(1)},
                                                  {"new", MakeByte(3)},
                                                  {"gone", MakeString("")}}));
    EXPECT_TRUE(Compare(before, before).empty());
}

TEST(SimulatorRules, TheLatestThatMatchesApplies)
{
    Rules rules;
    rules.Add({{"Scan", "", "", ""}, Behaviour::StaySilent()});
    rules.Add({{"", "/a", "", ""}, Behaviour::Fail("net.example.A")});
    EXPECT_EQ(rules.Take(MakeCall("Scan")).action, Behaviour::Action::Silence);
    EXPECT_EQ(rules.Take(MakeCall("Scan", "/a")).reply.sError, "net.example.A");
    EXPECT_EQ(rules.Take(MakeCall("Connect")).action, Behaviour::Action::AsUsual);
    rules.Clear();
    EXPECT_EQ(rules.Take(MakeCall("Scan")).action, Behaviour::Action::AsUsual);
}

TEST(SimulatorRules, OneForACountOfCallsEndsWithThem)
{
    Rules rules;
    Behaviour twice = Behaviour::StaySilent();
    twice.nTimes = 2;
    rules.Add({{"Scan", "", "", ""}, twice});
    EXPECT_EQ(rules.Take(MakeCall("Scan")).action, Behaviour::Action::Silence);
    EXPECT_EQ(rules.Take(MakeCall("Connect")).action, Behaviour::Action::AsUsual);
    EXPECT_EQ(rules.Take(MakeCall("Scan")).action, Behaviour::Action::Silence);
    EXPECT_EQ(rules.Take(MakeCall("Scan")).action, Behaviour::Action::AsUsual);
}

TEST(SimulatorRules, EveryPartOfThePatternHasToMatch)
{
    Call call = MakeCall("Scan", "/a");
    call.sInterface = "net.example.A";
    call.sSender = ":1.5";
    EXPECT_TRUE((CallPattern{"Scan", "/a", "net.example.A", ":1.5"}.Matches(call)));
    EXPECT_FALSE((CallPattern{"Scam", "/a", "net.example.A", ":1.5"}.Matches(call)));
    EXPECT_FALSE((CallPattern{"Scan", "/b", "net.example.A", ":1.5"}.Matches(call)));
    EXPECT_FALSE((CallPattern{"Scan", "/a", "net.example.B", ":1.5"}.Matches(call)));
    EXPECT_FALSE((CallPattern{"Scan", "/a", "net.example.A", ":1.6"}.Matches(call)));
}

TEST(SimulatorCallLog, WaitsForACallAndKnowsThoseThatCame)
{
    CallLog log;
    const auto isScan = [](const Call& call) { return call.sMember == "Scan"; };
    log.Add(MakeCall("Scan", "/first"));
    EXPECT_EQ(log.Wait(isScan, TestSupport::deadline)->sPath, "/first");
    log.Clear();
    EXPECT_TRUE(log.GetAll().empty());
    EXPECT_FALSE(log.Wait(isScan, std::chrono::milliseconds(1)));
    std::thread thread([&] {
        log.Add(MakeCall("Connect"));
        log.Add(MakeCall("Scan", "/second"));
    });
    EXPECT_EQ(log.Wait(isScan, TestSupport::deadline)->sPath, "/second");
    thread.join();
}

TEST(SimulatorAgentInput, APassphraseHasTheLengthOfItsSecurity)
{
    const auto fnJudge = [](const char* pSecurity, const std::string& sPassphrase) {
        Network network = MakeWifi("Home");
        network.vecSecurity = {pSecurity};
        return JudgePassphrase(Service(network), sPassphrase);
    };
    for (const std::size_t nLength : {8U, 63U})
        EXPECT_EQ(fnJudge("psk", std::string(nLength, ' ')), Verdict::Good);
    for (const std::size_t nLength : {0U, 7U, 64U, 65U})
        EXPECT_EQ(fnJudge("psk", std::string(nLength, ' ')), Verdict::InvalidKey);
    EXPECT_EQ(fnJudge("psk", std::string(64, 'F')), Verdict::Good);
    for (const std::size_t nLength : {5U, 13U})
        EXPECT_EQ(fnJudge("wep", std::string(nLength, 'z')), Verdict::Good);
    for (const std::size_t nLength : {4U, 10U, 26U})
        EXPECT_EQ(fnJudge("wep", std::string(nLength, 'z')), Verdict::InvalidKey);
    EXPECT_EQ(fnJudge("wep", "0123456789"), Verdict::Good);
    EXPECT_EQ(fnJudge("none", "anything at all"), Verdict::NotAllowed);
}

TEST(SimulatorAgentInput, AValueOfAWrongTypeIsInvalid)
{
    Reply reply;
    reply.arguments = {"a{sv}", Json::array({{{"Passphrase", Json::array({"u", 5})}}})};
    EXPECT_EQ(ReadInput(reply).sError, "net.connman.Error.InvalidArguments");
    reply.arguments = {"a{ss}", Json::array({{{"Passphrase", "x"}}})};
    EXPECT_FALSE(ReadInput(reply).bValues);
}

TEST(SimulatorAgentInput, AnSsidIsANameOfBytes)
{
    Reply reply;
    reply.arguments = {"a{sv}", Json::array({{{"SSID", Json::array({"ay", {72, 105}})}}})};
    EXPECT_EQ(ReadInput(reply).sName, "Hi");
}

TEST(SimulatorAgents, TheNextOneIsTheFirstWhenTheFirstHasGone)
{
    Agents agents;
    agents.Register(":1.1", "/a");
    agents.Register(":1.2", "/b");
    EXPECT_EQ(agents.Find(":1.9")->sPath, "/a");
    EXPECT_TRUE(agents.Unregister(":1.1"));
    EXPECT_EQ(agents.Find(":1.9")->sPath, "/b");
    EXPECT_FALSE(agents.Unregister(":1.1"));
    agents.Clear();
    EXPECT_FALSE(agents.Find(":1.2"));
}

TEST(SimulatorStorage, WhatWasWrittenOfAServiceIsReadBack)
{
    Service saved(MakeWifi("Home"));
    saved.bFavorite = true;
    saved.bAutoConnect = false;
    saved.sPassphrase = "apple=pie; 42";
    saved.ipv4 = {"manual", "10.0.0.9", "255.255.252.0", "10.0.0.1"};
    saved.vecNameservers = {"10.0.0.2", "10.0.0.1"};
    std::istringstream settings(MakeSettings(saved));
    Service read(MakeWifi("Home"));
    ReadSettings(settings, read);
    EXPECT_TRUE(read.bFavorite);
    EXPECT_FALSE(read.bAutoConnect);
    EXPECT_EQ(read.sPassphrase, saved.sPassphrase);
    EXPECT_EQ(ToProperties(read.ipv4), ToProperties(saved.ipv4));
    EXPECT_EQ(read.vecNameservers, saved.vecNameservers);
}

TEST(SimulatorStorage, ANetmaskIsWrittenAsTheLengthOfAPrefix)
{
    for (const auto& [nLength, sNetmask] : std::map<unsigned, std::string>{
             {0, "0.0.0.0"}, {1, "128.0.0.0"}, {22, "255.255.252.0"}, {32, "255.255.255.255"}}) {
        EXPECT_EQ(ToPrefixLength(sNetmask), nLength);
        EXPECT_EQ(ToNetmask(nLength), sNetmask);
    }
    EXPECT_EQ(ToPrefixLength("none"), 0U);
    EXPECT_EQ(ToNetmask(33), "255.255.255.255");
}

TEST(SimulatorStorage, ASavedServiceHasADirectoryWhichOutlivesItWithoutThePassphrase)
{
    const fs::path root = fs::temp_directory_path() / ("storage-" + std::to_string(getpid()));
    Network saved = MakeWifi("Saved");
    saved.bSaved = true;
    Scenario scenario = MakeScenario({saved, MakeWifi("Home")});
    scenario.sStorage = root;
    {
        Neighbourhood neighbourhood(scenario);
        const std::string sHome = PathOf(MakeWifi("Home"));
        const fs::path directory = root / Service(MakeWifi("Home")).GetIdentifier();
        EXPECT_TRUE(fs::exists(root / Service(saved).GetIdentifier() / "data"));
        EXPECT_FALSE(fs::exists(directory));

        neighbourhood.RegisterAgent();
        neighbourhood.Connect(sHome);
        neighbourhood.AnswerAgent({{"Passphrase", Json::array({"s", "correct horse"})}});
        neighbourhood.outlet.Pass(aWhile);
        EXPECT_EQ(ReadFile(directory / "settings"),
                  "[wifi_020000000000_486f6d65_managed_psk]\nName=Home\nFavorite=true\n"
                  "AutoConnect=true\nPassphrase=correct horse\nIPv4.method=dhcp\n");

        neighbourhood.Call(sHome, "net.connman.Service", "Remove");
        neighbourhood.outlet.Pass(aWhile);
        EXPECT_EQ(ReadFile(directory / "settings"),
                  "[wifi_020000000000_486f6d65_managed_psk]\nName=Home\nFavorite=false\n"
                  "IPv4.method=dhcp\n");
    }
    fs::remove_all(root);
}

} // namespace Tovra::Simulator
