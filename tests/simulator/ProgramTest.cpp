#include "tests/simulator/Program.h"
#include "simulator/Control.h"
#include "tests/simulator/Neighbourhood.h"
#include "tests/simulator/Peer.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pManager = "net.connman.Manager";
const std::string sCables = SCENARIOS "/two-cables.json";
constexpr const char* pFirst = "/net/connman/service/ethernet_020000000100_cable";

Json Tell(Daemon& daemon, const std::string& sLine)
{
    return Json::parse(RunCommandLine(daemon, sLine));
}

std::string GetComplaint(Daemon& daemon, const std::string& sLine)
{
    const Json answer = Tell(daemon, sLine);
    EXPECT_FALSE(answer["ok"].get<bool>()) << sLine;
    return answer["error"];
}

std::string ConnectAndAsk(const std::string& sSocket, const std::string& sLine)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    sSocket.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int nFile = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_TRUE(TestSupport::Eventually([&] {
        return connect(nFile, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    })) << "nobody listens";
    EXPECT_EQ(write(nFile, (sLine + "\n").data(), sLine.size() + 1),
              static_cast<ssize_t>(sLine.size() + 1));
    const std::string sAnswer = Program::ReadLine(nFile);
    close(nFile);
    return sAnswer;
}

} // namespace

TEST(SimulatorControl, ChangesTheWorld)
{
    Daemon daemon(MakeScenario({}));
    const Json added = Tell(daemon, R"({"command": "add-service", "service":
        {"name": "New", "strength": 20}})");
    ASSERT_EQ(added["ok"], true) << added;
    const Json path = added["path"];
    const auto fnRun = [&](Json command) {
        command["path"] = path;
        const Json answer = RunCommand(daemon, command);
        EXPECT_EQ(answer, Json::object());
    };
    fnRun({{"command", "change-service"}, {"service", {{"strength", 30}}}});
    fnRun({{"command", "set-state"}, {"state", "ready"}});
    fnRun({{"command", "set-service-property"}, {"name", "Odd"}, {"value", Json::array({"x", 5})}});
    const Json services = Tell(daemon, R"({"command": "services"})")["services"];
    ASSERT_EQ(services.size(), 1U);
    EXPECT_EQ(services[0][1]["Strength"][1], 30);
    EXPECT_EQ(services[0][1]["State"][1], "ready");
    EXPECT_EQ(services[0][1]["Odd"], (Json::array({"x", 5})));
    EXPECT_EQ(services[0][1]["Name"][1], "New") << "what is not changed stays";
    fnRun({{"command", "push-button"}});
    fnRun({{"command", "remove-service"}});
    EXPECT_TRUE(daemon.GetServicePaths().empty());
}

TEST(SimulatorControl, ChangesTechnologies)
{
    Daemon daemon(MakeScenario({}));
    Peer peer;
    Tell(daemon, R"({"command": "add-technology", "technology": {"type": "gadget"}})");
    EXPECT_TRUE(peer.TakeSignal("TechnologyAdded"));
    Tell(daemon, R"({"command": "set-technology-property",
        "path": "/net/connman/technology/gadget", "name": "Powered", "value": null})");
    EXPECT_TRUE(peer.TakeSignal("PropertyChanged"));
    Tell(daemon, R"({"command": "remove-technology", "path": "/net/connman/technology/gadget"})");
    EXPECT_TRUE(peer.TakeSignal("TechnologyRemoved"));
}

TEST(SimulatorControl, MisbehavesAndTellsTheCalls)
{
    Daemon daemon(MakeScenario({}));
    Peer peer;
    Tell(daemon, R"({"command": "on-call", "rule": {"member": "GetServices", "action": "error",
        "error": "net.example.Error.A", "message": "no", "times": 1}})");
    EXPECT_EQ(peer.Ask("/", pManager, "GetServices").sError, "net.example.Error.A");
    EXPECT_FALSE(peer.Ask("/", pManager, "GetServices").IsError());
    EXPECT_EQ(Tell(daemon, R"({"command": "calls", "member": "GetServices"})")["calls"].size(), 2U);
    EXPECT_EQ(
        Tell(daemon, R"({"command": "wait-for-call", "member": "GetServices"})")["call"]["sender"],
        Tell(daemon, R"({"command": "calls"})")["calls"][0]["sender"]);
    Tell(daemon, R"({"command": "clear-calls"})");
    EXPECT_TRUE(daemon.GetCalls().empty());

    Tell(daemon, R"({"command": "on-call", "rule": {"member": "GetPeers", "hold": true}})");
    peer.Start("/", pManager, "GetPeers");
    ASSERT_TRUE(TestSupport::Eventually([&] { return daemon.GetHeldCount() == 1; }));
    Tell(daemon, R"({"command": "release"})");
    EXPECT_TRUE(peer.replies.Take());
    Tell(daemon, R"({"command": "clear-behaviours"})");

    Tell(daemon, R"({"command": "emit", "member": "Odd", "signature": "ix", "args": [1, -2],
        "count": 2})");
    EXPECT_EQ(peer.signals.Take()->arguments.values, (Json::array({1, -2})));
    EXPECT_EQ(peer.signals.Take()->sPath, "/");
}

TEST(SimulatorControl, CallsClientsAndRestarts)
{
    Daemon daemon(MakeScenario({}));
    Peer peer([](const Call&) { return Reply{{}, "net.example.Error.A", "no"}; });
    const Json call = {{"command", "call"},
                       {"destination", peer.GetName()},
                       {"path", "/agent"},
                       {"member", "Release"},
                       {"timeout", 30000}};
    EXPECT_EQ(Tell(daemon, call.dump())["reply"]["error"], "net.example.Error.A");
    const std::string sName = daemon.GetUniqueName();
    EXPECT_EQ(Tell(daemon, R"({"command": "restart"})")["ok"], true);
    EXPECT_NE(daemon.GetUniqueName(), sName);
    Tell(daemon, R"({"command": "leave"})");
    EXPECT_EQ(daemon.GetUniqueName(), "");
    Tell(daemon, R"({"command": "return"})");
    EXPECT_NE(daemon.GetUniqueName(), "");
}

TEST(SimulatorControl, TellsWhatIsWrongWithACommand)
{
    Daemon daemon(MakeScenario({}));
    EXPECT_EQ(GetComplaint(daemon, "{"), "the line is no JSON");
    EXPECT_EQ(GetComplaint(daemon, "[]"), "the whole: an object is needed, not array");
    EXPECT_EQ(GetComplaint(daemon, "{}"), "command: is needed and absent");
    EXPECT_EQ(GetComplaint(daemon, R"({"command": "dance"})").substr(0, 42),
              "command: there is no \"dance\"; there is add");
    EXPECT_EQ(GetComplaint(daemon, R"({"command": "restart", "now": 1})"),
              "now: there is no such field; there is command");
    EXPECT_EQ(GetComplaint(daemon, R"({"command": "set-state", "path": "/x", "state": "idle"})"),
              "there is no service /x");
    EXPECT_EQ(GetComplaint(daemon, R"({"command": "add-service", "service": {"strength": "x"}})"),
              "service.strength: a whole number from 0 to 255 is needed");
    EXPECT_EQ(GetComplaint(daemon, R"({"command": "emit", "member": "A", "signature": "s",
                  "args": [1]})"),
              "args[0]: a string is needed, not number");
    EXPECT_EQ(GetComplaint(daemon, R"({"command": "wait-for-call", "member": "A", "timeout": 1})"),
              "no call of A came");
}

TEST(SimulatorProgram, RunsAScenarioUntilItIsToldToQuit)
{
    Program program({"--scenario", sCables, "--control", "-"});
    program.Write(R"({"command": "services"})");
    const Json answer = Json::parse(program.ReadLine());
    EXPECT_EQ(answer["services"].size(), 2U);
    EXPECT_EQ(answer["services"][0][0], pFirst);
    Peer peer;
    EXPECT_EQ(peer.Ask("/", pManager, "GetServices").arguments.values[0].size(), 2U);
    program.Write(R"({"command": "quit"})");
    EXPECT_EQ(program.ReadLine(), R"({"ok":true})");
    EXPECT_EQ(program.Wait(), 0);
}

TEST(SimulatorProgram, EndsWithStandardInput)
{
    Program program({"--scenario", sCables, "--control", "-"});
    program.CloseInput();
    EXPECT_EQ(program.Wait(), 0);
}

TEST(SimulatorProgram, WritesEachCallAsALine)
{
    Program program({"--scenario", sCables, "--control", "-", "--record"});
    program.Write(R"({"command": "clear-calls"})");
    program.ReadLine();
    Peer peer;
    peer.Ask("/", pManager, "GetServices");
    const Json call = Json::parse(program.ReadLine());
    EXPECT_EQ(call["member"], "GetServices");
    EXPECT_EQ(call["path"], "/");
    EXPECT_EQ(call["signature"], "");
    EXPECT_EQ(call["noReply"], false);
}

TEST(SimulatorProgram, IsControlledThroughASocketUntilASignalComes)
{
    const std::string sSocket = "/tmp/control-" + std::to_string(getpid());
    Program program({"--scenario", sCables, "--control", sSocket});
    for (int n = 0; n < 2; ++n)
        EXPECT_EQ(Json::parse(ConnectAndAsk(sSocket, R"({"command": "services"})"))["ok"], true);
    program.Terminate();
    EXPECT_EQ(program.Wait(), 0);
    EXPECT_NE(access(sSocket.c_str(), F_OK), 0);
}

TEST(SimulatorProgram, EndsWithOneClearLineOnBadInput)
{
    const std::vector<std::pair<std::vector<std::string>, std::string>> vecBad = {
        {{}, "connman-sim: --scenario is required"},
        {{"--scenario", "/nowhere"}, "connman-sim: /nowhere: cannot be read"},
        {{"--scenario", sCables, "--address", "unix:path=/nowhere"},
         "connman-sim: cannot connect to the bus: No such file or directory"},
        {{"--scenario", sCables, "--control", "/nowhere/socket"},
         "connman-sim: cannot make the control socket /nowhere/socket: No such file or directory"}};
    for (const auto& [vecArguments, sLine] : vecBad) {
        Program program(vecArguments);
        EXPECT_EQ(program.ReadErrorLine(), sLine);
        EXPECT_EQ(program.ReadErrorLine(), "");
        EXPECT_EQ(program.Wait(), 1);
    }
}

} // namespace Tovra::Simulator
