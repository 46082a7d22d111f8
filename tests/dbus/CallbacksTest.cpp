#include "Include/Callbacks.h"

#include "tests/dbus/OnTheBus.h"

#include <stdexcept>

namespace Tovra::DBus
{

namespace
{

struct Thrown : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace

class CallbackExceptions : public OnTheBus
{
protected:
    /** What leaves `Dispatch` as an exception; "" if nothing does before the bus has answered. */
    std::string GetThrown()
    {
        try {
            return DispatchAllSoFar() ? "" : "no answer";
        } catch (const Thrown& thrown) {
            return thrown.what();
        } catch (const std::bad_function_call&) {
            return "bad_function_call";
        }
    }

    void ThrowOnSignal(const std::string& sText)
    {
        connection.Listen(pInterface);
        connection.Signal(pInterface, "Throw",
                          [=](const std::string&, const Message&) { throw Thrown(sText); });
    }

    void RegisterThrowing(const std::string& sText)
    {
        connection.RegisterObject(
            pPath, [=](const std::string&, const std::string& member, const Message&) {
                if (member == "Throw")
                    throw Thrown(sText);
                return true;
            });
    }
};

TEST_F(CallbackExceptions, OfASignalLeaveDispatchAndTheNextOneWorks)
{
    ThrowOnSignal("signal");
    connection.Send(MakeSignal("Throw"));
    EXPECT_EQ(GetThrown(), "signal");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, OfAnObjectLeaveDispatchAndTheNextOneWorks)
{
    RegisterThrowing("object");
    connection.Send(MakeCall("Throw"));
    EXPECT_EQ(GetThrown(), "object");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, OfAReplyLeaveDispatchAndTheNextOneWorks)
{
    connection.SendWithReply(TestSupport::CallToBus("GetId"), -1).SetOnComplete([](PendingCall&) {
        throw Thrown("reply");
    });
    EXPECT_EQ(GetThrown(), "reply");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, LeaveDispatchOneByOneInTheOrderOfTheMessages)
{
    ThrowOnSignal("signal");
    RegisterThrowing("object");
    connection.Send(MakeSignal("Throw"));
    connection.Send(MakeCall("Throw"));
    connection.Send(MakeSignal("Throw"));
    EXPECT_EQ(GetThrown(), "signal");
    EXPECT_EQ(GetThrown(), "object");
    EXPECT_EQ(GetThrown(), "signal");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, OfAnObjectLeaveTheCallerWithAnUnknownMethod)
{
    RegisterThrowing("object");
    const PendingCall pending = connection.SendWithReply(MakeCall("Throw"), -1);
    EXPECT_EQ(GetThrown(), "object");
    EXPECT_EQ(GetErrorName(pending), DBUS_ERROR_UNKNOWN_METHOD);
}

TEST_F(CallbackExceptions, OfASignalConsumeIt)
{
    ThrowOnSignal("first");
    connection.Signal(pInterface, "Throw", [](const std::string&, const Message&) { FAIL(); });
    connection.Send(MakeSignal("Throw"));
    EXPECT_EQ(GetThrown(), "first");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, AreThrownForAnEmptySignalCallback)
{
    connection.Listen(pInterface);
    connection.Signal(pInterface, "Throw", nullptr);
    connection.Send(MakeSignal("Throw"));
    EXPECT_EQ(GetThrown(), "bad_function_call");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, AreThrownForAnEmptyObjectCallback)
{
    connection.RegisterObject(pPath, nullptr);
    connection.Send(MakeCall("Throw"));
    EXPECT_EQ(GetThrown(), "bad_function_call");
    EXPECT_EQ(GetThrown(), "");
}

TEST_F(CallbackExceptions, AreThrownForAnEmptyReplyCallback)
{
    connection.SendWithReply(TestSupport::CallToBus("GetId"), -1).SetOnComplete(nullptr);
    EXPECT_EQ(GetThrown(), "bad_function_call");
    EXPECT_EQ(GetThrown(), "");
}

// Both can only be made by hand: libdbus itself refuses a received signal without a path.
TEST(CallbackRecords, ASignalWithoutAPathHasAnEmptyOne)
{
    const Message signal = Message::Adopt(dbus_message_new(DBUS_MESSAGE_TYPE_SIGNAL));
    dbus_message_set_interface(signal.Get(), "net.a");
    dbus_message_set_member(signal.Get(), "A");
    std::string sSeen = "nothing";
    SignalFilter filter{"net.a", "A",
                        [&](const std::string& path, const Message&) { sSeen = path; }};
    EXPECT_EQ(SignalFilter::Call(nullptr, signal.Get(), &filter), DBUS_HANDLER_RESULT_HANDLED);
    EXPECT_EQ(sSeen, "");
}

TEST(CallbackRecords, ACallWithoutInterfaceAndMemberHasEmptyOnes)
{
    const Message call = Message::Adopt(dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_CALL));
    std::string sSeen = "nothing";
    ObjectHandler handler{
        [&](const std::string& interface, const std::string& member, const Message&) {
            sSeen = interface + member;
            return true;
        }};
    EXPECT_EQ(ObjectHandler::MessageFunction(nullptr, call.Get(), &handler),
              DBUS_HANDLER_RESULT_HANDLED);
    EXPECT_EQ(sSeen, "");
}

TEST(CallbackRecords, AMessageThatACallbackKeepsOutlivesTheCall)
{
    DBusMessage* const pSignal = dbus_message_new_signal("/a", "net.a", "A");
    Message kept;
    SignalFilter filter{"net.a", "A",
                        [&](const std::string&, const Message& message) { kept = message; }};
    SignalFilter::Call(nullptr, pSignal, &filter);
    dbus_message_unref(pSignal);
    EXPECT_STREQ(kept.GetType(), "signal");
}

TEST(CallbackRecords, AreFreedByTheirFreeFunctions)
{
    const auto pKept = std::make_shared<int>();
    SignalFilter::Free(
        new SignalFilter{"net.a", "A", [pKept](const std::string&, const Message&) {}});
    ObjectHandler::UnregisterFunction(
        nullptr, new ObjectHandler{[pKept](const std::string&, const std::string&, const Message&) {
            return true;
        }});
    ReturnWrapper::Free(new ReturnWrapper{[pKept](PendingCall&) {}});
    EXPECT_EQ(pKept.use_count(), 1);
}

TEST(CallbackRecords, OfNullAreFreedWithoutHarm)
{
    SignalFilter::Free(nullptr);
    ObjectHandler::UnregisterFunction(nullptr, nullptr);
    ReturnWrapper::Free(nullptr);
}

TEST(CallbackRecords, TheTableNamesTheTwoObjectFunctionsAndNothingElse)
{
    EXPECT_EQ(DBusObjectPathVTable.unregister_function, ObjectHandler::UnregisterFunction);
    EXPECT_EQ(DBusObjectPathVTable.message_function, ObjectHandler::MessageFunction);
    EXPECT_EQ(DBusObjectPathVTable.dbus_internal_pad1, nullptr);
    EXPECT_EQ(DBusObjectPathVTable.dbus_internal_pad2, nullptr);
    EXPECT_EQ(DBusObjectPathVTable.dbus_internal_pad3, nullptr);
    EXPECT_EQ(DBusObjectPathVTable.dbus_internal_pad4, nullptr);
}

TEST(CallbackRecords, AreFreedWithTheConnection)
{
    const auto pKept = std::make_shared<int>();
    TestSupport::PrivateBus bus;
    {
        Connection connection(bus.GetAddress());
        connection.Signal("net.a", "A", [pKept](const std::string&, const Message&) {});
        connection.RegisterObject(
            "/a", [pKept](const std::string&, const std::string&, const Message&) { return true; });
        EXPECT_EQ(pKept.use_count(), 3);
        // libdbus lets go of an open connection only when it is closed.
        bus.Stop();
        ASSERT_TRUE(TestSupport::Eventually([&] { return connection.Dispatch(10); }));
        EXPECT_EQ(pKept.use_count(), 3);
    }
    EXPECT_EQ(pKept.use_count(), 1);
}

} // namespace Tovra::DBus
