#include "tests/dbus/OnTheBus.h"
#include "tests/support/ProcessThreads.h"
#include "tests/support/SdBusPeer.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <pthread.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <thread>

namespace Tovra::DBus
{

namespace
{

static_assert(!std::is_copy_constructible_v<Thread> && !std::is_move_constructible_v<Thread>);
static_assert(!std::is_copy_assignable_v<Thread> && !std::is_move_assignable_v<Thread>);

constexpr std::chrono::milliseconds longestDispatch{600};

std::vector<pid_t> FindDispatchThreads()
{
    return TestSupport::FindThreads("DBusThread");
}

} // namespace

class DispatchThread : public OnTheBus
{
protected:
    /** Destroys the thread object, on a thread to be joined. */
    void StartDestroying()
    {
        destroyer = std::thread([this] {
            nDestroyer = TestSupport::GetThread();
            pThread.reset();
            bDestroyed = true;
        });
    }

    /** The owner waits for the dispatch thread. */
    bool AwaitJoin() const
    {
        return TestSupport::Eventually([&] {
            return bDestroyed || (nDestroyer != 0 && TestSupport::IsInCall(nDestroyer, SYS_futex));
        });
    }

    std::unique_ptr<Thread> pThread = std::make_unique<Thread>();
    std::thread destroyer;
    std::atomic<pid_t> nDestroyer = 0;
    std::atomic<bool> bDestroyed = false;
};

TEST_F(DispatchThread, IsOneByItsNameHoweverOftenItIsStarted)
{
    pThread->RunIfNotRunning();
    pThread->RunIfNotRunning();
    EXPECT_EQ(FindDispatchThreads().size(), 1U);
}

TEST_F(DispatchThread, IsOneHoweverManyThreadsStartIt)
{
    std::vector<std::thread> vecStarters;
    for (int nStarter = 0; nStarter < 8; ++nStarter)
        vecStarters.emplace_back([this] { pThread->RunIfNotRunning(); });
    for (std::thread& starter : vecStarters)
        starter.join();
    EXPECT_EQ(FindDispatchThreads().size(), 1U);
}

TEST_F(DispatchThread, IsNotStartedByConstruction)
{
    EXPECT_TRUE(FindDispatchThreads().empty());
}

TEST_F(DispatchThread, HasTheConnectionThatTheProcessShares)
{
    Connection& own = pThread->GetDbusConnection();
    EXPECT_EQ(&own, &pThread->GetDbusConnection());
    EXPECT_EQ(own.Get(), connection.Get());
}

TEST_F(DispatchThread, RunsEveryCallback)
{
    TestSupport::Mailbox<pid_t> mailbox;
    connection.Listen(pInterface);
    connection.Signal(pInterface, "Moved", [&](const std::string&, const Message&) {
        mailbox.Put(TestSupport::GetThread());
    });
    connection.RegisterObject(pPath, [&](const std::string&, const std::string&, const Message&) {
        mailbox.Put(TestSupport::GetThread());
        connection.SendWithReply(TestSupport::CallToBus("GetId"), -1)
            .SetOnComplete([&](PendingCall&) { mailbox.Put(TestSupport::GetThread()); });
        return true;
    });
    pThread->RunIfNotRunning();
    const pid_t nThread = FindDispatchThreads().at(0);
    connection.Send(MakeSignal("Moved"));
    EXPECT_EQ(mailbox.Take(), nThread);
    connection.Send(MakeCall("Do"));
    EXPECT_EQ(mailbox.Take(), nThread);
    EXPECT_EQ(mailbox.Take(), nThread);
    pThread.reset(); // before the mailbox
}

TEST_F(DispatchThread, CompletesACallThatWasSentBeforeItRan)
{
    TestSupport::Mailbox<std::string> mailbox;
    connection.SendWithReply(TestSupport::CallToBus("GetId"), -1)
        .SetOnComplete(
            [&](PendingCall& completed) { mailbox.Put(completed.ReceiveReply().GetType()); });
    pThread->RunIfNotRunning();
    EXPECT_EQ(mailbox.Take(), "method_return");
    pThread.reset(); // before the mailbox
}

TEST_F(DispatchThread, ThatNeverRanIsDestroyedAtOnce)
{
    const auto begin = std::chrono::steady_clock::now();
    for (int nRound = 0; nRound < 100; ++nRound)
        pThread = std::make_unique<Thread>();
    // A hundred waits for one dispatch each would take 50 s.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_F(DispatchThread, ThatRunsIsDestroyedWithinOneDispatch)
{
    // Anything may hold a round up; that none of them ends in time has a reason.
    auto best = std::chrono::steady_clock::duration::max();
    for (int nRound = 0; nRound < 5 && best > longestDispatch; ++nRound) {
        pThread = std::make_unique<Thread>();
        pThread->RunIfNotRunning();
        const pid_t nThread = FindDispatchThreads().at(0);
        ASSERT_TRUE(
            TestSupport::Eventually([&] { return TestSupport::IsInCall(nThread, SYS_poll); }));
        const auto begin = std::chrono::steady_clock::now();
        pThread.reset();
        best = std::min(best, std::chrono::steady_clock::now() - begin);
        EXPECT_TRUE(FindDispatchThreads().empty());
    }
    EXPECT_LE(best, longestDispatch);
}

TEST_F(DispatchThread, LeavesTheSharedConnectionOpenWhenItIsDestroyed)
{
    pThread->RunIfNotRunning();
    pThread.reset();
    EXPECT_TRUE(TestSupport::IsAlive(connection));
}

TEST_F(DispatchThread, IsDestroyedAfterTheCallbackThatRuns)
{
    TestSupport::Mailbox<int> begun;
    TestSupport::Mailbox<int> goOn;
    std::atomic<bool> bReturned = false;
    connection.RegisterObject(pPath, [&](const std::string&, const std::string&, const Message&) {
        begun.Put(1);
        goOn.Take();
        return (bReturned = true);
    });
    pThread->RunIfNotRunning();
    connection.Send(MakeCall("Do"));
    ASSERT_TRUE(begun.Take());
    StartDestroying();
    EXPECT_TRUE(AwaitJoin());
    EXPECT_FALSE(bDestroyed);
    goOn.Put(1);
    destroyer.join();
    EXPECT_TRUE(bReturned);
}

TEST_F(DispatchThread, DeliversASignalThatFindsItsOwnerInTheDestructorThenOrToTheNextOwner)
{
    std::atomic<int> nSignals = 0;
    connection.Listen(pInterface);
    connection.Signal(pInterface, "Moved", [&](const std::string&, const Message&) { ++nSignals; });
    pThread->RunIfNotRunning();
    const pid_t nThread = FindDispatchThreads().at(0);
    ASSERT_TRUE(TestSupport::Eventually([&] { return TestSupport::IsInCall(nThread, SYS_poll); }));
    StartDestroying();
    EXPECT_TRUE(AwaitJoin());
    connection.Send(MakeSignal("Moved"));
    destroyer.join();
    const int nThen = nSignals;
    EXPECT_LE(nThen, 1);
    EXPECT_TRUE(TestSupport::IsAlive(connection)); // the signal is here, and nobody dispatches
    EXPECT_EQ(nSignals, nThen);

    pThread = std::make_unique<Thread>();
    pThread->RunIfNotRunning();
    EXPECT_TRUE(TestSupport::Eventually([&] { return nSignals == 1; }));
    pThread.reset();
    EXPECT_EQ(nSignals, 1);
}

TEST_F(DispatchThread, OfTheNextOwnerServesTheSameConnection)
{
    TestSupport::Mailbox<std::string> mailbox;
    connection.RegisterObject(pPath,
                              [&](const std::string&, const std::string& member, const Message&) {
                                  mailbox.Put(member);
                                  return true;
                              });
    for (const char* const pMember : {"First", "Second"}) {
        pThread = std::make_unique<Thread>();
        pThread->RunIfNotRunning();
        connection.Send(MakeCall(pMember));
        EXPECT_EQ(mailbox.Take(), pMember);
        pThread.reset();
    }
}

TEST_F(DispatchThread, IsNotThereWhenTheSystemGivesNoneAndMayBeStartedLater)
{
    pthread_attr_t before;
    pthread_attr_t greedy;
    ASSERT_EQ(pthread_getattr_default_np(&before), 0);
    ASSERT_EQ(pthread_attr_init(&greedy), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&greedy, std::size_t{1} << 46U), 0);
    ASSERT_EQ(pthread_setattr_default_np(&greedy), 0); // no address space holds such a stack
    EXPECT_THROW(pThread->RunIfNotRunning(), std::system_error);
    EXPECT_TRUE(FindDispatchThreads().empty());
    ASSERT_EQ(pthread_setattr_default_np(&before), 0);
    pThread->RunIfNotRunning();
    EXPECT_EQ(FindDispatchThreads().size(), 1U);
}

TEST(DispatchThreadWithoutABus, IsNotStartedAndHasAnEmptyConnection)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/at/all", 1);
    Thread thread;
    thread.RunIfNotRunning();
    EXPECT_TRUE(FindDispatchThreads().empty());
    EXPECT_FALSE(thread.GetDbusConnection());
}

using DispatchThreadDeathTest = DispatchThread;

TEST_F(DispatchThreadDeathTest, EndsTheProcessWhenACallbackThrows)
{
    EXPECT_EXIT(
        {
            connection.RegisterObject(
                pPath, [](const std::string&, const std::string&, const Message&) -> bool {
                    throw std::runtime_error("thrown by a callback");
                });
            pThread->RunIfNotRunning();
            connection.Send(MakeCall("Throw"));
            TestSupport::Mailbox<int>().Take(); // for the process to end
        },
        testing::KilledBySignal(SIGABRT), "thrown by a callback");
}

} // namespace Tovra::DBus
