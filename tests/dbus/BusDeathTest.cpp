#include "tests/dbus/OnTheBus.h"
#include "tests/support/ProcessThreads.h"

#include <csignal>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace Tovra::DBus
{

namespace
{

// Whatever is asked of a connection whose bus is gone: nothing comes of it, and nothing breaks.
void ExpectEmptyResults(Connection& connection)
{
    const Message call = TestSupport::CallToBus("GetId");
    connection.Send(TestSupport::CallToBus("GetId"));
    connection.Listen("net.example.Probe");
    EXPECT_EQ(connection.Name("net.example.Name"), -1);
    EXPECT_FALSE(connection.SendWithReplyBlocking(call, -1));
    PendingCall pending = connection.SendWithReply(call, -1);
    if (pending) {
        pending.SetOnComplete([](PendingCall&) {});
        EXPECT_FALSE(pending.IsCompleted());
        EXPECT_FALSE(pending.ReceiveReply());
    }
}

} // namespace

using BusDeath = OnTheBus;

TEST_F(BusDeath, LeavesEmptyResultsOnceItIsKnown)
{
    ASSERT_TRUE(KillBus());
    ExpectEmptyResults(connection);
    EXPECT_FALSE(connection.SendWithReply(TestSupport::CallToBus("GetId"), -1));
    EXPECT_TRUE(connection.Dispatch(0));
}

TEST(BusDeathOfAThread, LeavesNothingOfItsConnectionOnceItIsDestroyed)
{
    const auto pKept = std::make_shared<int>();
    {
        Thread thread; // never runs: that one could not be stopped any more
        Connection& connection = thread.GetDbusConnection();
        connection.Signal("net.example.Probe", "Moved",
                          [pKept](const std::string&, const Message&) {});
        TestSupport::GetSystemBus().Stop();
        ASSERT_TRUE(TestSupport::Eventually([&] { return connection.Dispatch(10); }));
        EXPECT_EQ(pKept.use_count(), 2);
    }
    EXPECT_EQ(pKept.use_count(), 1);
}

TEST_F(BusDeath, LeavesEmptyResultsBeforeItIsKnown)
{
    TestSupport::GetSystemBus().Stop();
    ExpectEmptyResults(connection);
    EXPECT_TRUE(TestSupport::Eventually([&] { return connection.Dispatch(10); }));
}

// libdbus hands the same connection to whoever asks, and first tells it to end the process.
TEST(BusDeathOfASharedConnection, LeavesTheProcessAliveWhoeverElseAsksForIt)
{
    DBusConnection* const pBefore = dbus_bus_get(DBUS_BUS_SYSTEM, nullptr);
    Connection connection = Connection::SystemBus();
    DBusConnection* const pAfter = dbus_bus_get(DBUS_BUS_SYSTEM, nullptr);
    TestSupport::GetSystemBus().Stop();
    EXPECT_TRUE(TestSupport::Eventually([&] { return connection.Dispatch(10); }));
    dbus_connection_unref(pBefore);
    dbus_connection_unref(pAfter);
}

TEST_F(BusDeath, LeavesAnAnswerThatIsOwedUnsent)
{
    Message owed;
    connection.RegisterObject(pPath,
                              [&](const std::string&, const std::string&, const Message& message) {
                                  owed = message;
                                  return true;
                              });
    connection.Send(MakeCall("Ask"));
    ASSERT_TRUE(DispatchAllSoFar());
    ASSERT_TRUE(KillBus());
    Message reply = owed.ReturnMessage();
    ASSERT_TRUE(reply);
    connection.Send(reply.Add(Data::MakeString("too late")));
    EXPECT_TRUE(connection.Dispatch(0));
}

TEST_F(BusDeath, LeavesNoSystemBusToConnectTo)
{
    ASSERT_TRUE(KillBus());
    EXPECT_FALSE(Connection::SystemBus());
}

TEST_F(BusDeath, EndsABlockingCallThatWaits)
{
    connection.RegisterObject(
        pPath, [](const std::string&, const std::string&, const Message&) { return true; });
    const pid_t nCaller = TestSupport::GetThread();
    std::thread killer([&] {
        TestSupport::Eventually([&] { return TestSupport::IsInCall(nCaller, SYS_poll); });
        TestSupport::GetSystemBus().Stop();
    });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(connection.SendWithReplyBlocking(MakeCall("Wait"), 20000));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    killer.join();
}

// Children of their own: the thread that serves a dead connection cannot be stopped.
class BusDeathTest : public OnTheBus
{
protected:
    /** Starts the thread, has the bus go away and waits until the thread spins. */
    void GetStuck()
    {
        pThread->RunIfNotRunning();
        const std::vector<pid_t> vecThreads = TestSupport::FindThreads("DBusThread");
        ASSERT_EQ(vecThreads.size(), 1U);
        TestSupport::GetSystemBus().Stop();
        ASSERT_TRUE(TestSupport::Eventually([&] {
            return TestSupport::GetProcessorTime(vecThreads.front()) >
                   std::chrono::milliseconds(200);
        }));
    }

    std::unique_ptr<Thread> pThread = std::make_unique<Thread>();
};

TEST_F(BusDeathTest, LeavesTheProcessAliveAndItsThreadSpinning)
{
    EXPECT_EXIT(
        {
            GetStuck();
            ExpectEmptyResults(pThread->GetDbusConnection());
            pThread->RunIfNotRunning();
            EXPECT_EQ(TestSupport::FindThreads("DBusThread").size(), 1U);
            _exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(BusDeathTest, LeavesAThreadWhoseDestructionNeverReturns)
{
    EXPECT_EXIT(
        {
            GetStuck();
            const TestSupport::Watchdog limit(std::chrono::seconds(2));
            pThread.reset();
            _exit(0);
        },
        testing::KilledBySignal(SIGALRM), "");
}

} // namespace Tovra::DBus
