#include "tests/dbus/OnTheBus.h"

namespace Tovra::DBus
{

class Objects : public OnTheBus
{
protected:
    /** Registers an object that writes each call down and gives it the answer. */
    void Register(const char* path, const std::string& sObject, bool bHandled = true)
    {
        connection.RegisterObject(path, [=](const std::string& interface, const std::string& member,
                                            const Message& message) {
            vecSeen.push_back(sObject + ": " + interface + " " + member + " " + message.GetType());
            return bHandled;
        });
    }

    Message MakeCallTo(const char* path, const char* interface = pInterface) const
    {
        return TestSupport::CallToOneself(connection, path, interface, "Do");
    }

    std::vector<std::string> vecSeen;
};

using Strings = std::vector<std::string>;

TEST_F(Objects, AreCalledWithTheInterfaceTheMemberAndTheMessage)
{
    Register(pPath, "probe");
    connection.Send(MakeCallTo(pPath));
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, Strings{"probe: net.example.Probe Do method_call"});
}

TEST_F(Objects, ACallThatNamesNoInterfaceHasAnEmptyOne)
{
    Register(pPath, "probe");
    connection.Send(MakeCallTo(pPath, nullptr));
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, Strings{"probe:  Do method_call"});
}

TEST_F(Objects, ACallThatTheCallbackDoesNotHandleIsAnsweredWithUnknownMethod)
{
    Register(pPath, "probe", false);
    EXPECT_EQ(GetErrorName(connection.SendWithReply(MakeCallTo(pPath), -1)),
              DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_EQ(vecSeen.size(), 1U);
}

TEST_F(Objects, ACallThatTheCallbackHandlesWithoutReplyIsLeftUnanswered)
{
    Register(pPath, "probe");
    const PendingCall pending = connection.SendWithReply(MakeCallTo(pPath), -1);
    // Once for the call to arrive, once for a reply to it.
    ASSERT_TRUE(DispatchAllSoFar() && DispatchAllSoFar());
    EXPECT_EQ(vecSeen.size(), 1U);
    EXPECT_FALSE(pending.IsCompleted());
}

TEST_F(Objects, TheReplyThatTheCallbackSendsReachesTheCaller)
{
    connection.RegisterObject(
        pPath, [&](const std::string&, const std::string&, const Message& message) {
            Message reply = message.ReturnMessage();
            connection.Send(reply.Add(message.Contents()).Add(Data::MakeString("answer")));
            return true;
        });
    PendingCall pending =
        connection.SendWithReply(MakeCallTo(pPath).Add(Data::MakeString("question")), -1);
    ASSERT_TRUE(DispatchUntil([&] { return pending.IsCompleted(); }));
    const std::vector<Data> vecAnswer = pending.ReceiveReply().Contents(2);
    EXPECT_EQ(vecAnswer[0].As<std::string>(), "question");
    EXPECT_EQ(vecAnswer[1].As<std::string>(), "answer");
}

// The bus refuses further calls of a caller to whom it counts 128 replies as owed.
TEST_F(Objects, MayLeaveAnyNumberOfCallsUnansweredThatAskForNoReply)
{
    Register(pPath, "probe");
    for (int nCall = 0; nCall < 200; ++nCall)
        connection.Send(MakeCallTo(pPath).SetNoReply());
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen.size(), 200U);
}

TEST_F(Objects, AreCalledForTheirOwnPathAlone)
{
    Register("/probe/one", "one");
    Register("/probe/two", "two");
    connection.Send(MakeCallTo("/probe/two"));
    EXPECT_EQ(GetErrorName(connection.SendWithReply(MakeCallTo("/probe"), -1)),
              DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_EQ(GetErrorName(connection.SendWithReply(MakeCallTo("/probe/one/below"), -1)),
              DBUS_ERROR_UNKNOWN_METHOD);
    EXPECT_EQ(vecSeen, Strings{"two: net.example.Probe Do method_call"});
}

TEST_F(Objects, OnAPathThatIsTakenChangeNothingAndAreNotKept)
{
    Register(pPath, "first");
    const auto pKept = std::make_shared<int>();
    connection.RegisterObject(
        pPath, [pKept](const std::string&, const std::string&, const Message&) { return true; });
    EXPECT_EQ(pKept.use_count(), 1);
    connection.Send(MakeCallTo(pPath));
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, Strings{"first: net.example.Probe Do method_call"});
}

TEST_F(Objects, OfTheRootPathAreCalled)
{
    Register("/", "root");
    connection.Send(MakeCallTo("/"));
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen.size(), 1U);
}

} // namespace Tovra::DBus
