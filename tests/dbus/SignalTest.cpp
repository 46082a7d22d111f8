#include "tests/dbus/OnTheBus.h"

#include <csignal>

namespace Tovra::DBus
{

namespace
{

/** The match rules of a connection, as the bus itself lists them. */
std::vector<std::string> GetMatchRules(Connection& connection)
{
    const Message question("org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules");
    const Data answer = connection.SendWithReplyBlocking(question, -1).Contents();
    const Data& own =
        answer.As<std::map<std::string, Data>>().at(dbus_bus_get_unique_name(connection.Get()));
    std::vector<std::string> vecRules;
    for (const Data& rule : own.As<std::vector<Data>>())
        vecRules.push_back(rule.As<std::string>());
    return vecRules;
}

} // namespace

class Signals : public OnTheBus
{
protected:
    /** Subscribes to a signal; what arrives is written down under the subscription's name. */
    void Subscribe(const char* interface, const char* member, const std::string& sSubscription)
    {
        connection.Signal(interface, member, [=](const std::string& path, const Message& message) {
            vecSeen.push_back(sSubscription + " " + path + " " + message.GetType());
        });
    }

    void Send(const char* path, const char* interface, const char* member)
    {
        connection.Send(Message::Adopt(dbus_message_new_signal(path, interface, member)));
    }

    std::vector<std::string> vecSeen;
};

using Strings = std::vector<std::string>;

TEST_F(Signals, ListeningInstallsTheMatchRuleOfTheInterface)
{
    connection.Listen("net.connman.Manager");
    EXPECT_EQ(GetMatchRules(connection), Strings{"type='signal',interface='net.connman.Manager'"});
}

TEST_F(Signals, ListeningDoesNotWaitForTheBus)
{
    kill(TestSupport::GetSystemBus().GetProcess(), SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    connection.Listen(pInterface);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    kill(TestSupport::GetSystemBus().GetProcess(), SIGCONT);
    EXPECT_EQ(GetMatchRules(connection).size(), 1U);
}

TEST_F(Signals, WithoutListeningDoNotArrive)
{
    Subscribe(pInterface, "Moved", "only");
    Send(pPath, pInterface, "Moved");
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, Strings{});
}

TEST_F(Signals, AreDeliveredWithThePathTheyCameFrom)
{
    connection.Listen(pInterface);
    Subscribe(pInterface, "Moved", "only");
    Send("/one", pInterface, "Moved");
    Send("/two", pInterface, "Moved");
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, (Strings{"only /one signal", "only /two signal"}));
}

TEST_F(Signals, BearTheirArguments)
{
    connection.Listen(pInterface);
    std::string sArgument;
    connection.Signal(pInterface, "Moved", [&](const std::string&, const Message& message) {
        sArgument = message.Contents().As<std::string>();
    });
    connection.Send(MakeSignal("Moved").Add(Data::MakeString("here")));
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(sArgument, "here");
}

TEST_F(Signals, AreSeenByTheFirstOfTwoLikeSubscriptionsAlone)
{
    connection.Listen(pInterface);
    Subscribe(pInterface, "Moved", "first");
    Subscribe(pInterface, "Moved", "second");
    Send(pPath, pInterface, "Moved");
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, Strings{"first /probe signal"});
}

TEST_F(Signals, OfAnotherMemberOrInterfaceGoToTheNextSubscription)
{
    connection.Listen(pInterface);
    Subscribe(pInterface, "Stopped", "other member");
    Subscribe("net.example.Other", "Moved", "other interface");
    Subscribe(pInterface, "Moved", "last");
    Send(pPath, pInterface, "Moved");
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen, Strings{"last /probe signal"});
}

TEST_F(Signals, AreNotCallsOfTheSameName)
{
    Subscribe(pInterface, "Moved", "only");
    bool bCalled = false;
    connection.RegisterObject(pPath, [&](const std::string&, const std::string&, const Message&) {
        return bCalled = true;
    });
    connection.Send(MakeCall("Moved"));
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_TRUE(bCalled);
    EXPECT_EQ(vecSeen, Strings{});
}

TEST_F(Signals, SubscriptionsStayForAsLongAsTheConnection)
{
    connection.Listen(pInterface);
    Subscribe(pInterface, "Moved", "only");
    for (int nRound = 0; nRound < 100; ++nRound)
        Send(pPath, pInterface, "Moved");
    ASSERT_TRUE(DispatchAllSoFar());
    EXPECT_EQ(vecSeen.size(), 100U);
}

} // namespace Tovra::DBus
