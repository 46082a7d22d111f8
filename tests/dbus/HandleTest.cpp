#include "Include/D-Bus.h"
#include "tests/support/Dispatching.h"
#include "tests/support/PrivateBus.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

template <class T>
constexpr bool
    bIsHandle = sizeof(T) == sizeof(void*) &&
                std::is_nothrow_default_constructible_v<T>&& std::is_nothrow_copy_constructible_v<
                    T>&& std::is_nothrow_move_constructible_v<T>&& std::
                    is_nothrow_copy_assignable_v<T>&& std::is_nothrow_move_assignable_v<
                        T>&& std::is_nothrow_destructible_v<T>&& std::is_constructible_v<bool, T> &&
                !std::is_convertible_v<T, bool>;

static_assert(bIsHandle<Connection>);
static_assert(bIsHandle<Message>);
static_assert(bIsHandle<PendingCall>);

// A raw pointer becomes a handle only by a name that tells what happens to its reference.
static_assert(!std::is_constructible_v<Connection, DBusConnection*>);
static_assert(!std::is_constructible_v<Message, DBusMessage*>);
static_assert(!std::is_constructible_v<PendingCall, DBusPendingCall*>);

void CountEnd(void* pEnds)
{
    ++*static_cast<int*>(pEnds);
}

DBusMessage* MakeRawMessage(int& nEnds)
{
    static dbus_int32_t nSlot = -1;
    dbus_message_allocate_data_slot(&nSlot);
    DBusMessage* const pMessage = dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_CALL);
    dbus_message_set_data(pMessage, nSlot, &nEnds, CountEnd);
    return pMessage;
}

// Completed, so that the connection has let go of it and the caller's reference is the only one.
DBusPendingCall* MakeRawPendingCall(int& nEnds)
{
    static dbus_int32_t nSlot = -1;
    dbus_pending_call_allocate_data_slot(&nSlot);
    Connection connection = Connection::SystemBus();
    const Message call = TestSupport::CallToBus("GetId");
    DBusPendingCall* pPending = nullptr;
    dbus_connection_send_with_reply(connection.Get(), call.Get(), &pPending, -1);
    dbus_pending_call_set_data(pPending, nSlot, &nEnds, CountEnd);
    TestSupport::DispatchUntil(connection,
                               [&] { return dbus_pending_call_get_completed(pPending); });
    return pPending;
}

/** Makes a handle that holds the only reference to its object, whose end is counted. */
template <class T> T MakeSole(int& nEnds);

template <> Message MakeSole<Message>(int& nEnds)
{
    return Message::Adopt(MakeRawMessage(nEnds));
}

template <> PendingCall MakeSole<PendingCall>(int& nEnds)
{
    return PendingCall::Adopt(MakeRawPendingCall(nEnds));
}

// Closed, since libdbus keeps a reference of its own to an open one.
template <> Connection MakeSole<Connection>(int& nEnds)
{
    static dbus_int32_t nSlot = -1;
    dbus_connection_allocate_data_slot(&nSlot);
    TestSupport::PrivateBus bus;
    Connection connection(bus.GetAddress());
    dbus_connection_set_data(connection.Get(), nSlot, &nEnds, CountEnd);
    bus.Stop();
    TestSupport::Eventually([&] { return connection.Dispatch(10); });
    return connection;
}

} // namespace

template <class T> class Handles : public testing::Test
{
protected:
    int nEnds = 0;
    T handle = MakeSole<T>(nEnds);
};

class HandleNames
{
public:
    template <class T> static std::string GetName(int)
    {
        if (std::is_same_v<T, Connection>)
            return "Connection";
        return std::is_same_v<T, Message> ? "Message" : "PendingCall";
    }
};

using HandleTypes = testing::Types<Connection, Message, PendingCall>;
TYPED_TEST_SUITE(Handles, HandleTypes, HandleNames);

TYPED_TEST(Handles, ADefaultConstructedOneIsEmpty)
{
    const TypeParam empty;
    EXPECT_FALSE(empty);
    EXPECT_EQ(empty.Get(), nullptr);
}

TYPED_TEST(Handles, DestroyingTheOnlyOneEndsTheObject)
{
    {
        const TypeParam sole(std::move(this->handle));
        EXPECT_TRUE(sole);
        EXPECT_EQ(this->nEnds, 0);
    }
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, ACopyHoldsAReferenceOfItsOwn)
{
    TypeParam copy(this->handle);
    EXPECT_EQ(copy.Get(), this->handle.Get());
    this->handle = TypeParam();
    EXPECT_EQ(this->nEnds, 0);
    copy = TypeParam();
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, CopyingAnEmptyOneGivesAnEmptyOne)
{
    const TypeParam empty;
    const TypeParam copy(empty); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_FALSE(copy);
    this->handle = empty;
    EXPECT_FALSE(this->handle);
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, CopyAssignmentTakesTheNewReferenceAndReleasesTheOldOne)
{
    int nOtherEnds = 0;
    TypeParam other = MakeSole<TypeParam>(nOtherEnds);
    other = this->handle;
    EXPECT_EQ(nOtherEnds, 1);
    this->handle = TypeParam();
    EXPECT_EQ(this->nEnds, 0);
    other = TypeParam();
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, AssigningOneToItselfLeavesTheReferenceCountUnchanged)
{
    const TypeParam& same = this->handle;
    this->handle = same;
    EXPECT_TRUE(this->handle);
    EXPECT_EQ(this->nEnds, 0);
    this->handle = TypeParam();
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, MovingOneToItselfLeavesTheReferenceCountUnchanged)
{
    TypeParam& same = this->handle;
    this->handle = std::move(same);
    EXPECT_TRUE(this->handle);
    EXPECT_EQ(this->nEnds, 0);
    this->handle = TypeParam();
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, MovingTakesThePointerAndLeavesTheSourceEmpty)
{
    auto* const pObject = this->handle.Get();
    {
        const TypeParam target(std::move(this->handle));
        EXPECT_EQ(target.Get(), pObject);
        EXPECT_FALSE(this->handle); // NOLINT(bugprone-use-after-move)
    }
    EXPECT_EQ(this->nEnds, 1);
}

TYPED_TEST(Handles, DestroyingAMovedFromOneDoesNothing)
{
    auto pSource = std::make_unique<TypeParam>(std::move(this->handle));
    const TypeParam target(std::move(*pSource));
    pSource.reset();
    EXPECT_EQ(this->nEnds, 0);
}

TYPED_TEST(Handles, MoveAssignmentReleasesWhatTheTargetHeld)
{
    int nOtherEnds = 0;
    TypeParam other = MakeSole<TypeParam>(nOtherEnds);
    other = std::move(this->handle);
    EXPECT_EQ(nOtherEnds, 1);
    EXPECT_FALSE(this->handle); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(this->nEnds, 0);
    other = TypeParam();
    EXPECT_EQ(this->nEnds, 1);
}

TEST(HandleOfALibdbusObject, AdoptingAMessageTakesOverTheReference)
{
    int nEnds = 0;
    {
        const Message message = Message::Adopt(MakeRawMessage(nEnds));
        EXPECT_EQ(nEnds, 0);
    }
    EXPECT_EQ(nEnds, 1);
}

TEST(HandleOfALibdbusObject, ReferencingAMessageLeavesTheCallersReferenceAlone)
{
    int nEnds = 0;
    DBusMessage* const pMessage = MakeRawMessage(nEnds);
    {
        const Message message = Message::Reference(pMessage);
        EXPECT_EQ(message.Get(), pMessage);
    }
    EXPECT_EQ(nEnds, 0);
    dbus_message_unref(pMessage);
    EXPECT_EQ(nEnds, 1);
}

TEST(HandleOfALibdbusObject, AdoptingAPendingCallTakesOverTheReference)
{
    int nEnds = 0;
    {
        const PendingCall pending = PendingCall::Adopt(MakeRawPendingCall(nEnds));
        EXPECT_EQ(nEnds, 0);
    }
    EXPECT_EQ(nEnds, 1);
}

TEST(HandleOfALibdbusObject, ReferencingAPendingCallLeavesTheCallersReferenceAlone)
{
    int nEnds = 0;
    DBusPendingCall* const pPending = MakeRawPendingCall(nEnds);
    {
        const PendingCall pending = PendingCall::Reference(pPending);
        EXPECT_EQ(pending.Get(), pPending);
    }
    EXPECT_EQ(nEnds, 0);
    dbus_pending_call_unref(pPending);
    EXPECT_EQ(nEnds, 1);
}

TEST(HandleOfALibdbusObject, ANullPointerMakesAnEmptyHandle)
{
    EXPECT_FALSE(Message::Adopt(nullptr));
    EXPECT_FALSE(Message::Reference(nullptr));
    EXPECT_FALSE(PendingCall::Adopt(nullptr));
    EXPECT_FALSE(PendingCall::Reference(nullptr));
}

TEST(HandleOfALibdbusObject, TheSystemBusIsOneSharedConnection)
{
    const Connection first = Connection::SystemBus();
    const Connection second = Connection::SystemBus();
    EXPECT_TRUE(first);
    EXPECT_EQ(first.Get(), second.Get());
}

} // namespace Tovra::DBus
