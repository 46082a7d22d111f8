#include "tests/dbus/OnTheBus.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace Tovra::DBus
{

using TestSupport::CallToBus;

class PendingCalls : public OnTheBus
{
protected:
    PendingCall Ask(const char* method) { return connection.SendWithReply(CallToBus(method), -1); }

    bool Await(const PendingCall& pending)
    {
        return DispatchUntil([&] { return pending.IsCompleted(); });
    }
};

TEST_F(PendingCalls, AreCompletedOnceTheReplyIsDispatched)
{
    const PendingCall pending = Ask("GetId");
    ASSERT_TRUE(pending);
    EXPECT_FALSE(pending.IsCompleted());
    EXPECT_TRUE(Await(pending));
}

TEST_F(PendingCalls, GiveTheReplyOnceAndThenAnEmptyMessage)
{
    PendingCall pending = Ask("GetId");
    ASSERT_TRUE(Await(pending));
    EXPECT_STREQ(pending.ReceiveReply().GetType(), "method_return");
    EXPECT_FALSE(pending.ReceiveReply());
    EXPECT_FALSE(pending.ReceiveReply());
    EXPECT_TRUE(pending.IsCompleted());
}

TEST_F(PendingCalls, GiveTheReplyOnceThroughWhicheverCopyIsAsked)
{
    PendingCall pending = Ask("GetId");
    PendingCall copy(pending);
    ASSERT_TRUE(Await(pending));
    EXPECT_TRUE(copy.ReceiveReply());
    EXPECT_FALSE(pending.ReceiveReply());
}

TEST_F(PendingCalls, GiveAnEmptyMessageBeforeCompletionAndTheReplyAfterIt)
{
    PendingCall pending = Ask("GetId");
    EXPECT_FALSE(pending.ReceiveReply());
    ASSERT_TRUE(Await(pending));
    EXPECT_TRUE(pending.ReceiveReply());
}

TEST_F(PendingCalls, GiveAnErrorReplyAsAMessageOfThatType)
{
    PendingCall pending = Ask("NoSuchMethod");
    ASSERT_TRUE(Await(pending));
    EXPECT_STREQ(pending.ReceiveReply().GetType(), "error");
}

TEST_F(PendingCalls, CallBackOnceWithTheReply)
{
    std::vector<std::string> vecReplies;
    PendingCall pending = Ask("GetId");
    pending.SetOnComplete([&](PendingCall& completed) {
        EXPECT_EQ(completed.Get(), pending.Get());
        EXPECT_TRUE(completed.IsCompleted());
        vecReplies.emplace_back(completed.ReceiveReply().GetType());
    });
    EXPECT_TRUE(vecReplies.empty());
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecReplies, std::vector<std::string>{"method_return"});
}

TEST_F(PendingCalls, CallBackThoughTheirHandleIsGone)
{
    bool bCalled = false;
    Ask("GetId").SetOnComplete([&](PendingCall&) { bCalled = true; });
    EXPECT_TRUE(DispatchUntil([&] { return bCalled; }));
}

TEST_F(PendingCalls, FreeTheCallbackWithTheCall)
{
    const auto pKept = std::make_shared<int>();
    {
        const PendingCall pending = Ask("GetId");
        PendingCall(pending).SetOnComplete([pKept](PendingCall&) {});
        EXPECT_EQ(pKept.use_count(), 2);
        ASSERT_TRUE(Await(pending));
    }
    EXPECT_EQ(pKept.use_count(), 1);
}

TEST_F(PendingCalls, CallBackTheLastCallbackSetAndFreeTheOneBefore)
{
    const auto pKept = std::make_shared<int>();
    bool bCalled = false;
    PendingCall pending = Ask("GetId");
    pending.SetOnComplete([pKept](PendingCall&) { FAIL(); });
    pending.SetOnComplete([&](PendingCall&) { bCalled = true; });
    EXPECT_EQ(pKept.use_count(), 1);
    ASSERT_TRUE(Await(pending));
    EXPECT_TRUE(bCalled);
}

TEST_F(PendingCalls, MayBeGivenAnotherCallbackInTheirCallback)
{
    PendingCall pending = Ask("GetId");
    std::string sType;
    pending.SetOnComplete([&sType, sPrefix = std::string(100, 'x')](PendingCall& completed) {
        completed.SetOnComplete([](PendingCall&) { FAIL(); });
        sType = sPrefix + completed.ReceiveReply().GetType(); // what it holds is still there
    });
    ASSERT_TRUE(Await(pending));
    EXPECT_EQ(sType, std::string(100, 'x') + "method_return");
}

TEST_F(PendingCalls, GiveTheReplyToOneOfTwoThreadsThatAskAtOnce)
{
    std::vector<PendingCall> vecPending;
    for (int n = 0; n < 2000; ++n)
        vecPending.push_back(Ask("GetId"));
    const auto isCompleted = [](const PendingCall& pending) { return pending.IsCompleted(); };
    ASSERT_TRUE(DispatchUntil(
        [&] { return std::all_of(vecPending.begin(), vecPending.end(), isCompleted); }));

    std::atomic<std::size_t> nReplies = 0;
    std::atomic<std::size_t> nArrivals = 0;
    const auto fnTakeAll = [&, vecCopies = vecPending]() mutable {
        for (std::size_t n = 0; n < vecCopies.size(); ++n) {
            ++nArrivals;
            // For the other, so that both ask at once.
            for (int nLook = 0; nArrivals < 2 * (n + 1); ++nLook)
                if (nLook > 10000)
                    std::this_thread::yield();
            nReplies += vecCopies[n].ReceiveReply() ? 1U : 0U;
        }
    };
    std::thread first(fnTakeAll);
    std::thread second(fnTakeAll);
    first.join();
    second.join();
    EXPECT_EQ(nReplies, vecPending.size());
}

TEST_F(PendingCalls, ForgetACallbackThatIsSetAfterCompletion)
{
    PendingCall pending = Ask("GetId");
    ASSERT_TRUE(Await(pending));
    pending.SetOnComplete([](PendingCall&) { FAIL(); });
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_TRUE(pending.ReceiveReply());
}

TEST_F(PendingCalls, CanSendTheNextCallFromTheirCallback)
{
    bool bLast = false;
    Ask("GetId").SetOnComplete([&](PendingCall&) {
        Ask("ListNames").SetOnComplete([&](PendingCall& completed) {
            bLast = completed.ReceiveReply().Contents().GetType() == Data::Array;
        });
    });
    EXPECT_TRUE(DispatchUntil([&] { return bLast; }));
}

TEST_F(PendingCalls, CanMakeABlockingCallFromTheirCallback)
{
    bool bAnswered = false;
    Ask("GetId").SetOnComplete([&](PendingCall&) { bAnswered = TestSupport::IsAlive(connection); });
    EXPECT_TRUE(DispatchUntil([&] { return bAnswered; }));
}

// libdbus drops them; a callback that waits for its call waits for ever.
TEST_F(PendingCalls, AreFreedButNeverCompletedWhenTheBusGoesAway)
{
    const auto pKept = std::make_shared<int>();
    connection.RegisterObject(
        pPath, [](const std::string&, const std::string&, const Message&) { return true; });
    PendingCall pending = connection.SendWithReply(MakeCall("Wait"), -1);
    pending.SetOnComplete([pKept](PendingCall&) { FAIL(); });
    ASSERT_TRUE(KillBus());
    EXPECT_FALSE(pending.IsCompleted());
    EXPECT_FALSE(pending.ReceiveReply());
    EXPECT_EQ(pKept.use_count(), 2);
    pending = PendingCall();
    EXPECT_EQ(pKept.use_count(), 1);
}

TEST(AnEmptyPendingCall, TakesNoCallback)
{
    const auto pKept = std::make_shared<int>();
    PendingCall().SetOnComplete([pKept](PendingCall&) {});
    EXPECT_EQ(pKept.use_count(), 1);
}

// What libdbus does with a null pointer is told at the declarations; here it is held to that.
TEST(AnEmptyPendingCallDeathTest, EndsTheProcessWhenItIsAskedForCompletion)
{
    EXPECT_DEATH((void)PendingCall().IsCompleted(), "dbus_pending_call_get_completed");
}

TEST(AnEmptyPendingCallDeathTest, EndsTheProcessWhenItIsAskedForTheReply)
{
    EXPECT_DEATH((void)PendingCall().ReceiveReply(), "dbus_pending_call_get_completed");
}

} // namespace Tovra::DBus
