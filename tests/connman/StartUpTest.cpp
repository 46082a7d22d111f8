#include "tests/connman/BusMonitor.h"
#include "tests/connman/LiveClient.h"
#include "tests/support/ProcessThreads.h"

#include <dbus/dbus.h>
#include <future>
#include <gmock/gmock.h>
#include <sys/syscall.h>

namespace Tovra
{

using DaemonData::ServicesChanged;
using DaemonData::TechnologyAdded;
using ListData::Paths;
using ListData::Service;
using Simulator::Behaviour;
using Simulator::Call;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::Eventually;

namespace HostLog = TestSupport::HostLog;

class StartUp : public LiveClient
{
protected:
    /** What the client makes of a daemon that does well again, if anything tells it to look. */
    void ExpectThatTheNextSignalsHeal()
    {
        Emit(ServicesChanged({Service{"/a"}, Service{"/b"}}));
        EXPECT_EQ(NextWord(), 5U);
        EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/a", "/b"));
        Emit(TechnologyAdded());
        EXPECT_EQ(NextWord(), 2U);
        EXPECT_EQ(pClient->GetTechnologies().size(), 1U);
        Emit(DaemonData::ServicePropertyChanged("/a", "State", "idle"));
        EXPECT_EQ(NextWord(), 5U);
        EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
    }
};

// --- As it should be --------------------------------------------------------------------------

TEST_F(StartUp, ListensThenRegistersTheAgentThenAsksForBothLists)
{
    BusMonitor monitor(TestSupport::GetSystemBus().GetAddress());
    MakeClient();
    const std::string sSender = dbus_bus_get_unique_name(pThread->GetDbusConnection().Get());
    std::vector<std::string> vecCalls;
    for (const auto& call : monitor.TakeCalls(sSender, "GetTechnologies"))
        vecCalls.push_back(call.sPath + " " + call.sInterface + "." + call.sMember + " " +
                           call.sBody);
    const std::string sMatch = "/org/freedesktop/DBus org.freedesktop.DBus.AddMatch "
                               "s\"type='signal',interface='net.connman.";
    EXPECT_THAT(vecCalls,
                ElementsAre("/org/freedesktop/DBus org.freedesktop.DBus.Hello ",
                            sMatch + "Manager'\"", sMatch + "Service'\"", sMatch + "Technology'\"",
                            "/ net.connman.Manager.RegisterAgent "
                            "o\"/tovra/corvane/connman/agent\"",
                            "/ net.connman.Manager.GetServices ",
                            "/ net.connman.Manager.GetTechnologies "));
}

TEST_F(StartUp, RegistersItsAgentWithTheDaemon)
{
    MakeClient();
    EXPECT_EQ(daemon.GetAgentCount(), 1U);
}

TEST_F(StartUp, WaitsForTheAnswerToTheAgentsRegistration)
{
    OnCall("RegisterAgent", Behaviour::Hold());
    auto made = std::async(std::launch::async, [this] { MakeClient(); });
    ASSERT_TRUE(Eventually([&] { return daemon.GetHeldCount() == 1; }));
    EXPECT_EQ(made.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    EXPECT_THAT(daemon.GetCalls("GetServices"), IsEmpty());
    daemon.ReleaseReplies();
    ASSERT_EQ(made.wait_for(TestSupport::deadline), std::future_status::ready);
    EXPECT_TRUE(daemon.WaitForCall("GetTechnologies", TestSupport::deadline));
}

TEST_F(StartUp, WaitsForNeitherList)
{
    OnCall("GetServices", Behaviour::Hold());
    OnCall("GetTechnologies", Behaviour::Hold());
    MakeClient();
    StartDispatching();
    ASSERT_TRUE(Eventually([&] { return daemon.GetHeldCount() == 2; }));
    EXPECT_THAT(pClient->GetNetworks(), IsEmpty());
    EXPECT_THAT(pClient->GetTechnologies(), IsEmpty());
    daemon.ReleaseReplies();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
}

TEST_F(StartUp, TheListsFillInOnlyOnceDispatchingHasBegun)
{
    MakeClient();
    ASSERT_TRUE(daemon.WaitForCall("GetTechnologies", TestSupport::deadline));
    EXPECT_THAT(TestSupport::FindThreads("DBusThread"), IsEmpty());
    EXPECT_THAT(pClient->GetNetworks(), IsEmpty());
    EXPECT_THAT(pClient->GetTechnologies(), IsEmpty());
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_EQ(pClient->GetTechnologies().size(), 1U);
}

TEST_F(StartUp, SignalsThatComeBeforeDispatchingAreHandledThen)
{
    MakeClient();
    ASSERT_TRUE(daemon.WaitForCall("GetTechnologies", TestSupport::deadline));
    Emit(ServicesChanged({Service{"/a"}}));
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/a"));
}

TEST_F(StartUp, ACallbackThatIsRegisteredAfterTheListsCameHearsOnlyOfTheNextChange)
{
    MakeClient();
    pThread->RunIfNotRunning();
    ASSERT_TRUE(Eventually([&] { return !pClient->GetTechnologies().empty(); }));
    StartDispatching();
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
    Emit(DaemonData::StrengthChanged(sHome, 1));
    EXPECT_EQ(NextWord(), 8U);
}

TEST_F(StartUp, AConnectedServiceInTheFirstListTellsTheHost)
{
    daemon.SetState(sHome, "ready");
    MakeClient();
    StartDispatching();
    EXPECT_EQ(actions.Take(), "run");
    EXPECT_EQ(actions.Take(), "remove wifi_home");
}

TEST_F(StartUp, ThePublicClientBehavesLikewise)
{
    // Its actions are the real ones: in an /opt of the test's own.
    ConnManThread bundle;
    bundle.connMan.SetOnNetworksChanged([this](unsigned int word) { words.Put(word); }, 4 | 2);
    bundle.thread.RunIfNotRunning();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_THAT(Paths(bundle.connMan.GetNetworks()), ElementsAre(sHome, sAway));
    EXPECT_EQ(bundle.connMan.GetTechnologies().size(), 1U);
}

// --- Without a daemon, or with one that fails -------------------------------------------------

TEST_F(StartUp, WithoutABusIsSilentAndHarmless)
{
    DBus::Connection none;
    ConnMan client(none);
    client.SetOnNetworksChanged([](unsigned int) {}, 0xFFFFFFFF);
    EXPECT_THAT(client.GetNetworks(), IsEmpty());
    EXPECT_THAT(client.GetTechnologies(), IsEmpty());
    auto properties = ListData::TechnologyProperties("WiFi");
    client.ScanTechnology(ConnMan::NetworkTechnology("/t", properties));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(StartUp, WithoutADaemonReturnsAtOnceWithEmptyLists)
{
    daemon.Leave();
    MakeClient();
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_THAT(pClient->GetNetworks(), IsEmpty());
    EXPECT_THAT(pClient->GetTechnologies(), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(StartUp, ADaemonThatArrivesLaterIsNotNoticedUntilItsNextSignal)
{
    daemon.Leave();
    MakeClient();
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    daemon.Return();
    ExpectNoMoreWords();
    EXPECT_EQ(daemon.GetAgentCount(), 0U);
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies")); // the one just expected
    ExpectThatTheNextSignalsHeal();
}

TEST_F(StartUp, ADaemonThatRestartsIsNotNoticedUntilItsNextSignal)
{
    Start();
    daemon.Restart();
    daemon.ClearCalls();
    ExpectNoMoreWords();
    EXPECT_EQ(daemon.GetAgentCount(), 0U);
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies"));
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
    ExpectThatTheNextSignalsHeal();
}

TEST_F(StartUp, ADaemonThatAnswersWithErrorsLeavesEmptyListsAndTheNextSignalsHealThem)
{
    for (const char* pMember : {"RegisterAgent", "GetServices", "GetTechnologies"})
        OnCall(pMember, Behaviour::Fail("net.connman.Error.Failed"));
    MakeClient();
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_THAT(pClient->GetNetworks(), IsEmpty());
    EXPECT_THAT(pClient->GetTechnologies(), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    daemon.ClearBehaviours();
    ExpectThatTheNextSignalsHeal();
}

TEST_F(StartUp, AnAnswerOfAnotherShapeToTheRegistrationIsDiscarded)
{
    Answer("RegisterAgent", DaemonData::Parse("iay", "[-1, [1, 2]]"));
    Start();
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(StartUp, AListThatIsNeverAnsweredIsHealedByTheNextSignal)
{
    OnCall("GetServices", Behaviour::StaySilent());
    OnCall("GetTechnologies", Behaviour::StaySilent());
    MakeClient();
    StartDispatching();
    ASSERT_TRUE(daemon.WaitForCall("GetTechnologies", TestSupport::deadline));
    daemon.ClearBehaviours();
    ExpectThatTheNextSignalsHeal();
}

TEST_F(StartUp, ADaemonThatLeavesWhileTheAgentIsRegisteredEndsTheWait)
{
    OnCall("RegisterAgent", Behaviour::StaySilent());
    auto made = std::async(std::launch::async, [this] { MakeClient(); });
    ASSERT_TRUE(daemon.WaitForCall("RegisterAgent", TestSupport::deadline));
    EXPECT_EQ(made.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    daemon.Leave();
    ASSERT_EQ(made.wait_for(TestSupport::deadline), std::future_status::ready);
    daemon.ClearBehaviours();
    daemon.Return();
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    ExpectThatTheNextSignalsHeal();
}

TEST_F(StartUp, ADaemonThatNeverAnswersTheRegistrationIsGivenUpAfter25Seconds)
{
    OnCall("RegisterAgent", Behaviour::StaySilent());
    const auto begin = std::chrono::steady_clock::now();
    MakeClient();
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, std::chrono::seconds(24));
    EXPECT_LT(waited, std::chrono::seconds(40)); // under sanitizers, beside other tests
    StartDispatching();
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

// --- After the client -------------------------------------------------------------------------

TEST_F(StartUp, WhatArrivesAfterTheClientIsGoneDoesNothing)
{
    OnCall("GetServices", Behaviour::Hold());
    MakeClient();
    StartDispatching();
    EXPECT_EQ(NextWord(), 2U);
    ASSERT_EQ(daemon.GetHeldCount(), 1U);
    pClient.reset();
    daemon.ReleaseReplies();
    Emit(ServicesChanged({Service{"/a", "ready"}}));
    Emit(DaemonData::StrengthChanged(sHome, 1));
    Emit(TechnologyAdded());
    const Simulator::Reply reply =
        daemon.CallRaw({dbus_bus_get_unique_name(pThread->GetDbusConnection().Get()),
                        "/tovra/corvane/connman/agent", "net.connman.Agent", "RequestInput",
                        DaemonData::Parse("oa{sv}", R"(["/s", {}])")},
                       TestSupport::deadline);
    EXPECT_EQ(reply.sError, "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_TRUE(words.IsEmpty());
    EXPECT_TRUE(actions.IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    EXPECT_THAT(daemon.GetCalls("GetTechnologies"), testing::SizeIs(1));
}

TEST_F(StartUp, AHandlerThatRunsWhenTheClientGoesKeepsWhatItNeeds)
{
    Start();
    TestSupport::Mailbox<bool> entered;
    TestSupport::Mailbox<bool> released;
    TestSupport::Mailbox<std::size_t> seen;
    ConnMan::Impl& client = *pClient;
    client.SetOnNetworksChanged(
        [&](unsigned int) {
            entered.Put(true);
            released.Take();
            seen.Put(client.GetNetworks().size());
        },
        4);
    Emit(ServicesChanged({Service{"/a"}, Service{"/b"}, Service{"/c"}}));
    ASSERT_TRUE(entered.Take());
    pClient.reset();
    released.Put(true);
    EXPECT_EQ(seen.Take(), 3U);
    pThread.reset();
}

} // namespace Tovra
