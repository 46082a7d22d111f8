#include "Include/D-Bus.h"
#include "tests/support/BadTexts.h"
#include "tests/support/Dispatching.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

using TestSupport::CallToBus;

Message MakeCall()
{
    return Message("net.connman", "/net/connman", "net.connman.Manager", "GetServices");
}

Message MakeRaw(int nType)
{
    return Message::Adopt(dbus_message_new(nType));
}

// A call is what ReturnMessage answers once it bears the serial number of its sender.
Message MakeReceivedCall(std::uint32_t nSerial)
{
    Message call = MakeCall();
    dbus_message_set_serial(call.Get(), nSerial);
    return call;
}

std::size_t CountArguments(const Message& message)
{
    DBusMessageIter iter;
    std::size_t nArguments = 0;
    if (dbus_message_iter_init(message.Get(), &iter)) {
        do {
            ++nArguments;
        } while (dbus_message_iter_next(&iter));
    }
    return nArguments;
}

} // namespace

TEST(Message, BearsTheFourTextsOfTheCall)
{
    const Message call = MakeCall();
    ASSERT_TRUE(call);
    EXPECT_EQ(dbus_message_get_type(call.Get()), DBUS_MESSAGE_TYPE_METHOD_CALL);
    EXPECT_STREQ(dbus_message_get_destination(call.Get()), "net.connman");
    EXPECT_STREQ(dbus_message_get_path(call.Get()), "/net/connman");
    EXPECT_STREQ(dbus_message_get_interface(call.Get()), "net.connman.Manager");
    EXPECT_STREQ(dbus_message_get_member(call.Get()), "GetServices");
}

TEST(Message, NeedsNoDestinationAndNoInterface)
{
    const Message call(nullptr, "/", nullptr, "Get");
    ASSERT_TRUE(call);
    EXPECT_EQ(dbus_message_get_destination(call.Get()), nullptr);
    EXPECT_EQ(dbus_message_get_interface(call.Get()), nullptr);
}

TEST(Message, TakesNamesOfTheGreatestLength)
{
    const std::string sName = TestSupport::MakeLongestName();
    const std::string sMember(255, 'a');
    EXPECT_TRUE(Message(sName.c_str(), "/", sName.c_str(), sMember.c_str()));
}

TEST(Message, OfTheLocalPathIsEmptyAndTheConnectionSurvives)
{
    Connection connection = Connection::SystemBus();
    const Message call("org.freedesktop.DBus", "/org/freedesktop/DBus/Local", "net.example.A", "B");
    EXPECT_FALSE(call);
    EXPECT_FALSE(connection.SendWithReplyBlocking(call, -1));
    EXPECT_TRUE(TestSupport::IsAlive(connection));
}

TEST(Message, OfTheLocalInterfaceIsEmptyAndTheConnectionSurvives)
{
    Connection connection = Connection::SystemBus();
    const Message call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.Local", "Disconnected");
    EXPECT_FALSE(call);
    EXPECT_FALSE(connection.SendWithReplyBlocking(call, -1));
    EXPECT_TRUE(TestSupport::IsAlive(connection));
}

TEST(MessageType, IsNamedAsInTheProtocol)
{
    EXPECT_STREQ(MakeCall().GetType(), "method_call");
    EXPECT_STREQ(MakeRaw(DBUS_MESSAGE_TYPE_METHOD_RETURN).GetType(), "method_return");
    EXPECT_STREQ(MakeRaw(DBUS_MESSAGE_TYPE_ERROR).GetType(), "error");
    EXPECT_STREQ(MakeRaw(DBUS_MESSAGE_TYPE_SIGNAL).GetType(), "signal");
}

TEST(MessageType, OfAnEmptyMessageIsAnEmptyText)
{
    EXPECT_STREQ(Message().GetType(), "");
}

TEST(ReturnMessage, AnswersTheCallItIsMadeFrom)
{
    const Message reply = MakeReceivedCall(7).ReturnMessage();
    ASSERT_TRUE(reply);
    EXPECT_STREQ(reply.GetType(), "method_return");
    EXPECT_EQ(dbus_message_get_reply_serial(reply.Get()), 7U);
}

TEST(ReturnMessage, OfAnEmptyMessageIsEmpty)
{
    EXPECT_FALSE(Message().ReturnMessage());
}

TEST(ReturnMessage, OfACallThatWasNeverSentIsEmpty)
{
    EXPECT_FALSE(MakeCall().ReturnMessage());
}

TEST(ReturnMessage, OfASignalIsEmpty)
{
    Message signal = MakeRaw(DBUS_MESSAGE_TYPE_SIGNAL);
    dbus_message_set_serial(signal.Get(), 7);
    EXPECT_FALSE(signal.ReturnMessage());
}

TEST(ReturnMessage, OfAReplyIsEmpty)
{
    Message reply = MakeReceivedCall(7).ReturnMessage();
    dbus_message_set_serial(reply.Get(), 8);
    EXPECT_FALSE(reply.ReturnMessage());
}

TEST(ReturnMessage, OfAnErrorIsEmpty)
{
    Message error = MakeRaw(DBUS_MESSAGE_TYPE_ERROR);
    dbus_message_set_serial(error.Get(), 7);
    EXPECT_FALSE(error.ReturnMessage());
}

TEST(MessageAdd, AppendsAfterTheArgumentsAlreadyThere)
{
    Message call = MakeCall();
    Message& same = call.Add(Data::MakeString("first")).Add(Data::MakeBool(true));
    EXPECT_EQ(&same, &call);
    call.Add(Data::MakeUInt32(3));
    const std::vector<Data> vecArguments = call.Contents(0);
    ASSERT_EQ(vecArguments.size(), 3U);
    EXPECT_EQ(vecArguments[0].As<std::string>(), "first");
    EXPECT_TRUE(vecArguments[1].As<bool>());
    EXPECT_EQ(vecArguments[2].As<std::uint32_t>(), 3U);
}

TEST(MessageAdd, OfAnEmptyValueLeavesTheMessageUnchanged)
{
    Message call = MakeCall();
    call.Add(Data::MakeString("only")).Add(Data());
    EXPECT_EQ(CountArguments(call), 1U);
}

// libdbus writes on, and then reads such a message for ever.
TEST(MessageAdd, AppendsAsManyArgumentsAsASignatureHasRoomFor)
{
    Message call = MakeCall();
    for (int n = 0; n < 254; ++n)
        call.Add(Data::MakeBool(true));
    call.Add(Data::MakeStringArray({"two codes"}));
    EXPECT_EQ(CountArguments(call), 254U);
    call.Add(Data::MakeStringArray({"one"}).SetVariant(true));
    EXPECT_EQ(CountArguments(call), 255U);
    call.Add(Data::MakeBool(true));
    EXPECT_EQ(CountArguments(call), 255U);
}

TEST(MessageAdd, OnAnEmptyMessageDoesNothing)
{
    Message empty;
    EXPECT_EQ(&empty.Add(Data::MakeString("x")), &empty);
    EXPECT_FALSE(empty);
}

TEST(MessageAdd, ChangesNothingOnAMessageThatWasSent)
{
    Connection connection = Connection::SystemBus();
    Message call = CallToBus("GetId");
    ASSERT_NE(connection.Send(call), 0U);
    call.Add(Data::MakeString("too late"));
    EXPECT_EQ(CountArguments(call), 0U);
}

TEST(MessageAdd, ChangesNothingOnAMessageThatWasReceived)
{
    Connection connection = Connection::SystemBus();
    Message reply = connection.SendWithReplyBlocking(CallToBus("GetId"), -1);
    ASSERT_TRUE(reply);
    reply.Add(Data::MakeString("too late"));
    EXPECT_EQ(CountArguments(reply), 1U);
}

TEST(MessageWithoutReply, SaysSoToItsReceiver)
{
    Message call = MakeCall();
    EXPECT_FALSE(dbus_message_get_no_reply(call.Get()));
    EXPECT_EQ(&call.SetNoReply(), &call);
    EXPECT_TRUE(dbus_message_get_no_reply(call.Get()));
}

TEST(MessageWithoutReply, CannotBeMadeOfAnEmptyMessage)
{
    Message empty;
    EXPECT_FALSE(empty.SetNoReply());
}

TEST(MessageWithoutReply, CannotBeMadeOfAMessageThatWasSent)
{
    Connection connection = Connection::SystemBus();
    Message call = CallToBus("GetId");
    ASSERT_NE(connection.Send(call), 0U);
    EXPECT_FALSE(dbus_message_get_no_reply(call.SetNoReply().Get()));
}

TEST(MessageContents, OfOneArgumentReadForThreeGivesItAndTwoEmptyValues)
{
    Message call = MakeCall();
    const std::vector<Data> vecArguments = call.Add(Data::MakeString("one")).Contents(3);
    ASSERT_EQ(vecArguments.size(), 3U);
    EXPECT_EQ(vecArguments[0].As<std::string>(), "one");
    EXPECT_EQ(vecArguments[1].GetType(), Data::Empty);
    EXPECT_EQ(vecArguments[2].GetType(), Data::Empty);
}

TEST(MessageContents, OfThreeArgumentsReadForOneGivesTheFirst)
{
    Message call = MakeCall();
    call.Add(Data::MakeString("one")).Add(Data::MakeString("two")).Add(Data::MakeString("three"));
    const std::vector<Data> vecArguments = call.Contents(1);
    ASSERT_EQ(vecArguments.size(), 1U);
    EXPECT_EQ(vecArguments[0].As<std::string>(), "one");
}

TEST(MessageContents, WithoutACountAreTheFirstArgument)
{
    Message call = MakeCall();
    call.Add(Data::MakeString("one")).Add(Data::MakeString("two"));
    EXPECT_EQ(call.Contents().As<std::string>(), "one");
}

TEST(MessageContents, OfAMessageWithoutArgumentsAreEmpty)
{
    EXPECT_EQ(MakeCall().Contents().GetType(), Data::Empty);
}

TEST(MessageContents, AllOfAMessageWithoutArgumentsAreOneEmptyValue)
{
    const std::vector<Data> vecArguments = MakeCall().Contents(0);
    ASSERT_EQ(vecArguments.size(), 1U);
    EXPECT_EQ(vecArguments[0].GetType(), Data::Empty);
}

TEST(MessageContents, OfAnEmptyMessageAreEmpty)
{
    EXPECT_EQ(Message().Contents().GetType(), Data::Empty);
    EXPECT_TRUE(Message().Contents(0).empty());
    const std::vector<Data> vecArguments = Message().Contents(2);
    ASSERT_EQ(vecArguments.size(), 2U);
    EXPECT_EQ(vecArguments[1].GetType(), Data::Empty);
}

} // namespace Tovra::DBus
