#include "tests/dbus/OnTheBus.h"
#include "tests/support/ProcessThreads.h"
#include "tests/support/SdBusPeer.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <sys/syscall.h>
#include <thread>

namespace Tovra::DBus
{

namespace
{

// What does not leave at once leaves when the time is over for which the other thread sleeps.
constexpr int nSleep = 10000; // ms
constexpr std::chrono::seconds longBefore{5};

/** Another thread that dispatches the connection, and sleeps for long when it has nothing to do. */
class Dispatcher
{
public:
    explicit Dispatcher(Connection& dispatched)
        : connection(dispatched),
          thread([this] {
              nThread = TestSupport::GetThread();
              while (!bStop)
                  connection.Dispatch(nSleep);
          })
    {
    }

    ~Dispatcher()
    {
        bStop = true;
        connection.Send(TestSupport::CallToBus("GetId")); // the answer ends the sleep
        thread.join();
    }

    Dispatcher(const Dispatcher&) = delete;
    Dispatcher& operator=(const Dispatcher&) = delete;

    bool AwaitSleep() const
    {
        return TestSupport::Eventually(
            [&] { return nThread != 0 && TestSupport::IsInCall(nThread, SYS_poll); });
    }

private:
    Connection& connection;
    std::atomic<pid_t> nThread = 0;
    std::atomic<bool> bStop = false;
    std::thread thread;
};

std::chrono::steady_clock::duration Since(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::steady_clock::now() - begin;
}

} // namespace

using Dispatching = OnTheBus;

TEST_F(Dispatching, ALiveConnectionGivesFalseAfterAtMostTheTimeOut)
{
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_FALSE(connection.Dispatch(0));
    // Anything may hold a round up; that none of them ends in time has a reason.
    auto best = std::chrono::steady_clock::duration::max();
    for (int nRound = 0; nRound < 10 && best > std::chrono::milliseconds(200); ++nRound) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_FALSE(connection.Dispatch(100));
        best = std::min<std::chrono::steady_clock::duration>(best, Since(begin));
    }
    EXPECT_LE(best, std::chrono::milliseconds(200));
}

TEST_F(Dispatching, EveryNegativeTimeOutWaitsForTheNextMessage)
{
    bool bCalled = false;
    connection.RegisterObject(pPath, [&](const std::string&, const std::string&, const Message&) {
        return bCalled = true;
    });
    const pid_t nThread = TestSupport::GetThread();
    for (const int nTimeout : {-1, -2, INT_MIN}) {
        SCOPED_TRACE(nTimeout);
        ASSERT_TRUE(DispatchAllSoFar());
        bCalled = false;
        bool bSlept = false;
        std::thread sender([&] {
            bSlept =
                TestSupport::Eventually([&] { return TestSupport::IsInCall(nThread, SYS_poll); });
            connection.Send(MakeCall("Wake"));
        });
        while (!bCalled)
            EXPECT_FALSE(connection.Dispatch(nTimeout));
        sender.join();
        EXPECT_TRUE(bSlept);
    }
}

TEST_F(Dispatching, AClosedConnectionGivesTrueAtOnceAndEverAfter)
{
    ASSERT_TRUE(KillBus());
    const auto begin = std::chrono::steady_clock::now();
    for (const int nTimeout : {nSleep, -1, 0})
        EXPECT_TRUE(connection.Dispatch(nTimeout));
    EXPECT_LT(Since(begin), longBefore);
}

TEST_F(Dispatching, GivesTrueOnlyWhenAllThatArrivedIsDispatched)
{
    int nCalls = 0;
    connection.RegisterObject(pPath, [&](const std::string&, const std::string&, const Message&) {
        return ++nCalls != 0;
    });
    for (int nCall = 0; nCall < 10; ++nCall)
        connection.Send(MakeCall("Count"));
    ASSERT_TRUE(TestSupport::IsAlive(connection)); // the calls have come back before the answer
    EXPECT_EQ(nCalls, 0);
    ASSERT_TRUE(KillBus());
    EXPECT_EQ(nCalls, 10);
}

class SleepingDispatch : public OnTheBus
{
protected:
    Message MakeCallToPeer() const
    {
        return Message(peer.GetName().c_str(), "/peer", "net.example.Peer", "Take");
    }

    /** How long a message of another thread takes to arrive while the dispatcher sleeps. */
    std::chrono::steady_clock::duration TimeToArrive(const Message& message)
    {
        Dispatcher dispatcher(connection);
        EXPECT_TRUE(dispatcher.AwaitSleep());
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_NE(connection.Send(message), 0U);
        EXPECT_TRUE(peer.Take());
        return Since(begin);
    }

    TestSupport::SdBusPeer peer{TestSupport::GetSystemBus().GetAddress()};
};

TEST_F(SleepingDispatch, LetsTheMessageOfAnotherThreadLeaveAtOnce)
{
    EXPECT_LT(TimeToArrive(MakeCallToPeer()), longBefore);
}

TEST_F(SleepingDispatch, WritesOnAMessageThatAnotherThreadLeftHalfWritten)
{
    const Message message =
        MakeCallToPeer().Add(Data::MakeString(std::string(std::size_t{4} << 20U, 'x')));
    EXPECT_LT(TimeToArrive(message), longBefore);
}

// Whether the dispatcher looks before or after the other thread has read the signal is chance: a
// lost one shows within some dozens of rounds.
TEST_F(SleepingDispatch, CallsBackAtOnceForWhatABlockingCallOfAnotherThreadHasRead)
{
    TestSupport::Mailbox<std::string> mailbox;
    connection.Listen(pInterface);
    connection.Signal(pInterface, "Moved",
                      [&](const std::string& path, const Message&) { mailbox.Put(path); });
    peer.AnswerWith([](sd_bus_message* pReply) {
        return sd_bus_emit_signal(sd_bus_message_get_bus(pReply), pPath, pInterface, "Moved", "");
    });

    Dispatcher dispatcher(connection);
    for (int nRound = 0; nRound < 500; ++nRound) {
        ASSERT_TRUE(connection.SendWithReplyBlocking(MakeCallToPeer(), -1)) << nRound;
        ASSERT_EQ(mailbox.Take(longBefore), pPath) << nRound;
    }
}

} // namespace Tovra::DBus
