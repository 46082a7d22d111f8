#include "tests/dbus/OnTheBus.h"

namespace Tovra::DBus
{

namespace
{

constexpr const char* pName = "net.example.Name";

/** Another client of the system bus that asks for names. */
class OtherOwner
{
public:
    OtherOwner() : pConnection(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr))
    {
        dbus_connection_set_exit_on_disconnect(pConnection, FALSE);
    }

    ~OtherOwner()
    {
        dbus_connection_close(pConnection);
        dbus_connection_unref(pConnection);
    }

    OtherOwner(const OtherOwner&) = delete;
    OtherOwner& operator=(const OtherOwner&) = delete;

    int Request(unsigned nFlags)
    {
        return dbus_bus_request_name(pConnection, pName, nFlags, nullptr);
    }

private:
    DBusConnection* const pConnection;
};

} // namespace

using BusName = OnTheBus;

TEST_F(BusName, ThatNobodyOwnsIsGiven)
{
    EXPECT_EQ(connection.Name(pName), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
}

TEST_F(BusName, ThatIsOwnedAlreadyIsOwnedOn)
{
    connection.Name(pName);
    EXPECT_EQ(connection.Name(pName), DBUS_REQUEST_NAME_REPLY_ALREADY_OWNER);
}

TEST_F(BusName, IsTakenFromAnOwnerThatAllowsIt)
{
    OtherOwner other;
    other.Request(DBUS_NAME_FLAG_ALLOW_REPLACEMENT);
    EXPECT_EQ(connection.Name(pName), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
}

TEST_F(BusName, OfAnOwnerThatDoesNotAllowItIsWaitedFor)
{
    OtherOwner other;
    other.Request(0);
    EXPECT_EQ(connection.Name(pName), DBUS_REQUEST_NAME_REPLY_IN_QUEUE);
}

TEST_F(BusName, IsNotGivenUpToAnother)
{
    connection.Name(pName);
    OtherOwner other;
    EXPECT_EQ(other.Request(DBUS_NAME_FLAG_REPLACE_EXISTING | DBUS_NAME_FLAG_DO_NOT_QUEUE),
              DBUS_REQUEST_NAME_REPLY_EXISTS);
}

TEST_F(BusName, OfTheGreatestLengthIsGiven)
{
    const std::string sLongest = "net." + std::string(251, 'a');
    EXPECT_EQ(connection.Name(sLongest.c_str()), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
}

TEST_F(BusName, ThatTheBusRefusesGivesMinusOne)
{
    EXPECT_EQ(connection.Name("org.freedesktop.DBus"), -1);
    EXPECT_EQ(connection.Name(":1.99"), -1);
    EXPECT_TRUE(TestSupport::IsAlive(connection));
}

} // namespace Tovra::DBus
