#include "simulator/Daemon.h"
#include "tests/simulator/Neighbourhood.h"
#include "tests/simulator/Peer.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>
#include <thread>

namespace Tovra::Simulator
{

namespace
{

using TestSupport::deadline;
using TestSupport::Eventually;

constexpr const char* pManager = "net.connman.Manager";
constexpr const char* pServiceInterface = "net.connman.Service";
const std::string sHome = PathOf(MakeWifi("Home"));
const Arguments agentPath = {"o", Json::array({"/agent"})};

Scenario MakeQuick()
{
    Scenario scenario = MakeScenario({MakeWifi("Home")});
    scenario.timing = Timing::Quick();
    return scenario;
}

Reply AnswerWithPassphrase(const Call&)
{
    Reply reply;
    const Json fields = {{"Passphrase", Json::array({"s", "correct horse"})}};
    reply.arguments = {"a{sv}", Json::array({fields})};
    return reply;
}

// The agent belongs to the connection that has the thread.
void RegisterAgent(Peer& peer)
{
    peer.Start("/", pManager, "RegisterAgent", agentPath);
    EXPECT_FALSE(peer.replies.Take()->IsError());
}

} // namespace

TEST(SimulatedLife, AClientWithAnAgentGetsConnected)
{
    Daemon daemon(MakeQuick());
    Peer peer(AnswerWithPassphrase);
    RegisterAgent(peer);
    peer.Start(sHome, pServiceInterface, "Connect");
    const auto question = peer.calls.Take();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->sPath, "/agent");
    EXPECT_EQ(question->sMember, "RequestInput");
    EXPECT_EQ(question->arguments.sSignature, "oa{sv}");
    EXPECT_FALSE(peer.replies.Take()->IsError());
    EXPECT_TRUE(Eventually([&] { return daemon.GetState(sHome) == "online"; }));
}

TEST(SimulatedLife, AnAgentIsForgottenWithItsConnection)
{
    Daemon daemon(MakeQuick());
    {
        Peer peer;
        RegisterAgent(peer);
        EXPECT_EQ(daemon.GetAgentCount(), 1U);
    }
    EXPECT_TRUE(Eventually([&] { return daemon.GetAgentCount() == 0; }));
}

TEST(SimulatedLife, AnAgentThatLeavesWhileItIsAskedIsAsGoodAsATimeout)
{
    Daemon daemon(MakeQuick());
    Peer caller;
    {
        Peer agent;
        RegisterAgent(agent);
        caller.Start(sHome, pServiceInterface, "Connect");
        ASSERT_TRUE(agent.calls.Take());
    }
    EXPECT_EQ(caller.replies.Take()->sError, "net.connman.Error.OperationTimeout");
}

TEST(SimulatedLife, AnAgentThatStaysSilentTimesOut)
{
    Scenario scenario = MakeQuick();
    scenario.timing.agentTimeout = std::chrono::milliseconds(10);
    Daemon daemon(scenario);
    Peer peer;
    RegisterAgent(peer);
    peer.Start(sHome, pServiceInterface, "Connect");
    EXPECT_EQ(peer.replies.Take()->sError, "net.connman.Error.OperationTimeout");
}

TEST(SimulatedLife, ARestartedDaemonIsANewOneThatKnowsNoAgents)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    RegisterAgent(peer);
    const std::string sOldName = daemon.GetUniqueName();
    daemon.Restart();
    EXPECT_NE(daemon.GetUniqueName(), sOldName);
    EXPECT_EQ(daemon.GetAgentCount(), 0U);
    EXPECT_EQ(peer.Ask("/", pManager, "GetServices").arguments.values[0].size(), 1U);
    EXPECT_EQ(peer.Ask(sHome, pServiceInterface, "Connect").sError,
              "net.connman.Error.NotRegistered");
}

TEST(SimulatedLife, WhoWaitsForAnAnswerLosesItByARestart)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    RegisterAgent(peer);
    daemon.OnCall({"GetServices", "", "", ""}, Behaviour::Hold());
    peer.Start("/", pManager, "GetServices");
    peer.Start(sHome, pServiceInterface, "Connect");
    ASSERT_TRUE(peer.calls.Take());
    daemon.Restart();
    EXPECT_EQ(peer.replies.Take()->sError, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(peer.replies.Take()->sError, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(daemon.GetHeldCount(), 0U);
    RegisterAgent(peer);
    peer.Start(sHome, pServiceInterface, "Connect");
    EXPECT_EQ(peer.calls.Take()->sMember, "RequestInput") << "the attempt before is forgotten";
}

TEST(SimulatedLife, ADaemonThatLeftIsNotThereUntilItReturns)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    daemon.Leave();
    EXPECT_EQ(daemon.GetUniqueName(), "");
    EXPECT_EQ(peer.Ask("/", pManager, "GetServices").sError,
              "org.freedesktop.DBus.Error.ServiceUnknown");
    daemon.SetState(sHome, "ready");
    daemon.EmitRaw({"/", pManager, "Lost", {}, ""});
    daemon.Return();
    daemon.EmitRaw({"/", pManager, "Back", {}, ""});
    EXPECT_EQ(peer.signals.Take()->sMember, "Back");
    EXPECT_EQ(daemon.GetState(sHome), "ready");
}

TEST(SimulatedLife, ItsNameIsFreeAfterwards)
{
    for (int n = 0; n < 3; ++n) {
        Daemon daemon(MakeQuick());
        EXPECT_THROW(Daemon{MakeQuick()}, std::runtime_error) << "there is one already";
        if (n == 1)
            daemon.Stop();
    }
}

TEST(SimulatedLife, AfterStopEverythingIsRefused)
{
    Daemon daemon(MakeQuick());
    daemon.Stop();
    daemon.Stop();
    EXPECT_THROW(daemon.SetState(sHome, "ready"), Problem);
    EXPECT_THROW(daemon.Restart(), Problem);
    EXPECT_TRUE(daemon.GetCalls().empty());
}

TEST(SimulatedLife, ABusThatIsNotThereIsAnError)
{
    EXPECT_THROW(Daemon({}, "unix:path=/nowhere"), std::runtime_error);
    EXPECT_NO_THROW(Daemon({}, TestSupport::GetSystemBus().GetAddress()));
}

TEST(SimulatedLife, ManyThreadsMayUseIt)
{
    Daemon daemon(MakeQuick());
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < 4; ++nThread)
        vecThreads.emplace_back([&, nThread] {
            for (int n = 0; n < 50; ++n) {
                const std::string sName = std::to_string(nThread) + "-" + std::to_string(n);
                const std::string sPath = daemon.AddService(MakeWifi(sName));
                daemon.SetState(sPath, "ready");
                daemon.RemoveService(sPath);
            }
        });
    for (std::thread& thread : vecThreads)
        thread.join();
    EXPECT_EQ(daemon.GetServicePaths(), (std::vector<std::string>{sHome}));
}

TEST(SimulatedLife, AnObserverIsToldOfEachCall)
{
    TestSupport::Mailbox<std::string> mailbox;
    Daemon daemon(MakeQuick());
    daemon.SetObserver([&](const Call& call) { mailbox.Put(call.sMember); });
    Peer peer;
    peer.Ask("/", pManager, "GetServices");
    EXPECT_EQ(mailbox.Take(), "GetServices");
    daemon.SetObserver(nullptr);
}

} // namespace Tovra::Simulator
