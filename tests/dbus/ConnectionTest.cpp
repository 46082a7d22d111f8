#include "tests/dbus/OnTheBus.h"

#include <array>
#include <climits>
#include <filesystem>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace Tovra::DBus
{

namespace
{

using TestSupport::CallToBus;
using TestSupport::GetSystemBus;
using TestSupport::IsAlive;

constexpr const char* pNoAddress = "unix:path=/nowhere/at/all";

std::ptrdiff_t CountDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace

TEST(OpeningAConnection, ToAnAddressGivesAConnection)
{
    EXPECT_TRUE(Connection(GetSystemBus().GetAddress()));
    EXPECT_TRUE(Connection(GetSystemBus().GetAddress().c_str()));
}

TEST(OpeningAConnection, ToAnAddressWhereNobodyListensGivesAnEmptyOne)
{
    EXPECT_FALSE(Connection(pNoAddress));
}

TEST(OpeningAConnection, ToWhatIsNoAddressGivesAnEmptyOne)
{
    EXPECT_FALSE(Connection("no address"));
    EXPECT_FALSE(Connection(""));
    EXPECT_FALSE(Connection("unix:path=\xFF"));
    EXPECT_FALSE(Connection(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(Connection(std::string()));
}

TEST(OpeningAConnection, ToTheSystemBusThatCannotBeReachedGivesAnEmptyOne)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", pNoAddress, 1);
    EXPECT_FALSE(Connection::SystemBus());
}

TEST(OpeningAConnection, ToTheSessionBusGivesAConnectionOfItsOwn)
{
    const TestSupport::PrivateBus sessionBus;
    setenv("DBUS_SESSION_BUS_ADDRESS", sessionBus.GetAddress().c_str(), 1);
    Connection session = Connection::SessionBus();
    ASSERT_TRUE(session);
    EXPECT_TRUE(IsAlive(session));
    EXPECT_NE(session.Get(), Connection::SystemBus().Get());
}

TEST(OpeningAConnection, ToTheSessionBusThatCannotBeReachedGivesAnEmptyOne)
{
    setenv("DBUS_SESSION_BUS_ADDRESS", pNoAddress, 1);
    EXPECT_FALSE(Connection::SessionBus());
}

TEST(OpeningAConnection, ByManyThreadsAtOnceGivesOneThatWorks)
{
    dbus_threads_init_default(); // libdbus itself must be used by one thread first
    std::array<Connection, 8> connections;
    std::vector<std::thread> vecThreads;
    for (Connection& connection : connections)
        vecThreads.emplace_back([&connection] { connection = Connection::SystemBus(); });
    for (std::thread& thread : vecThreads)
        thread.join();
    for (const Connection& connection : connections)
        EXPECT_EQ(connection.Get(), connections.front().Get());
    EXPECT_TRUE(IsAlive(connections.front()));
}

TEST(OpeningAConnection, TakesDescriptorsThatItGivesBackWhenTheConnectionIsGone)
{
    const auto nBefore = CountDescriptors();
    {
        TestSupport::PrivateBus bus;
        Connection connection(bus.GetAddress());
        EXPECT_GT(CountDescriptors(), nBefore);
        bus.Stop();
        ASSERT_TRUE(TestSupport::Eventually([&] { return connection.Dispatch(10); }));
    }
    EXPECT_EQ(CountDescriptors(), nBefore);
}

// The connection's socket takes the last descriptor, so that none is left for its wake-up.
TEST(OpeningAConnection, NeedsNoMoreDescriptorsThanLibdbusDoes)
{
    const int nFree = dup(STDIN_FILENO);
    ASSERT_GE(nFree, 0);
    close(nFree);
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit narrow = {static_cast<rlim_t>(nFree) + 1, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &narrow), 0);
    Connection connection(GetSystemBus().GetAddress());
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(dbus_bus_register(connection.Get(), nullptr));
    EXPECT_TRUE(TestSupport::DispatchAllSoFar(connection));
}

TEST(AnEmptyConnection, DoesNothing)
{
    Connection empty;
    const auto pKept = std::make_shared<int>();
    EXPECT_EQ(empty.Name("net.example.Name"), 0);
    empty.Listen("net.example.Probe");
    empty.Signal("net.example.Probe", "Moved", [pKept](const std::string&, const Message&) {});
    empty.RegisterObject(
        "/probe", [pKept](const std::string&, const std::string&, const Message&) { return true; });
    EXPECT_EQ(pKept.use_count(), 1);
    EXPECT_FALSE(empty.SendWithReply(CallToBus("GetId"), -1));
    EXPECT_FALSE(empty.SendWithReplyBlocking(CallToBus("GetId"), -1));
}

TEST(AnEmptyConnection, IsNeitherDispatchedNorClosed)
{
    const TestSupport::Watchdog watchdog;
    EXPECT_FALSE(Connection().Dispatch(-1));
}

// What libdbus does with a null pointer is told at the declarations; here it is held to that.
TEST(AnEmptyConnectionDeathTest, EndsTheProcessWhenItIsSentOn)
{
    EXPECT_DEATH(Connection().Send(CallToBus("GetId")), "dbus_connection_send");
}

using Sending = OnTheBus;

TEST_F(Sending, GivesTheSerialNumberOfTheMessage)
{
    const Message first = CallToBus("GetId");
    const Message second = CallToBus("GetId");
    const std::uint32_t nFirst = connection.Send(first);
    const std::uint32_t nSecond = connection.Send(second);
    EXPECT_NE(nFirst, 0U);
    EXPECT_NE(nSecond, nFirst);
    EXPECT_EQ(dbus_message_get_serial(first.Get()), nFirst);
}

TEST_F(Sending, ABlockingCallGivesTheReply)
{
    const Message reply = connection.SendWithReplyBlocking(CallToBus("GetId"), 10000);
    EXPECT_STREQ(reply.GetType(), "method_return");
    EXPECT_EQ(reply.Contents().GetType(), Data::String);
}

TEST_F(Sending, ABlockingCallAnsweredWithAnErrorGivesAnEmptyMessage)
{
    EXPECT_FALSE(connection.SendWithReplyBlocking(CallToBus("NoSuchMethod"), -1));
    EXPECT_TRUE(IsAlive(connection));
}

TEST_F(Sending, ABlockingCallThatIsNotAnsweredInTimeGivesAnEmptyMessage)
{
    connection.RegisterObject(
        pPath, [](const std::string&, const std::string&, const Message&) { return true; });
    EXPECT_FALSE(connection.SendWithReplyBlocking(MakeCall("Wait"), 20));
    EXPECT_FALSE(connection.SendWithReplyBlocking(MakeCall("Wait"), 0));
    EXPECT_TRUE(IsAlive(connection));
}

TEST_F(Sending, EveryNegativeTimeOutStandsForTheDefault)
{
    for (const int nTimeout : {-1, -2, -1000, INT_MIN}) {
        SCOPED_TRACE(nTimeout);
        EXPECT_TRUE(connection.SendWithReplyBlocking(CallToBus("GetId"), nTimeout));
        EXPECT_EQ(GetErrorName(connection.SendWithReply(CallToBus("GetId"), nTimeout)), "");
    }
}

TEST_F(Sending, TheGreatestTimeOutIsNone)
{
    EXPECT_TRUE(connection.SendWithReplyBlocking(CallToBus("GetId"), INT_MAX));
    EXPECT_EQ(GetErrorName(connection.SendWithReply(CallToBus("GetId"), INT_MAX)), "");
}

TEST_F(Sending, AnEmptyMessageAwaitsNoReply)
{
    EXPECT_FALSE(connection.SendWithReply(Message(), -1));
    EXPECT_FALSE(connection.SendWithReplyBlocking(Message(), -1));
    EXPECT_TRUE(IsAlive(connection));
}

using SendingDeathTest = OnTheBus;

TEST_F(SendingDeathTest, AnEmptyMessageEndsTheProcess)
{
    EXPECT_DEATH(connection.Send(Message()), "dbus_connection_send");
}

} // namespace Tovra::DBus
