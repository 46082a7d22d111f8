#include "tests/dbus/OnTheBus.h"
#include "tests/support/Counts.h"
#include "tests/support/ProcessThreads.h"

#include <atomic>
#include <thread>

namespace Tovra::DBus
{

namespace
{

constexpr int nLives = 1000;

/** Keeps messages coming in, so that a dispatch thread soon sees that it is to stop. */
class Traffic
{
public:
    explicit Traffic(const Connection& used) : connection(used), thread(&Traffic::Run, this) {}

    ~Traffic()
    {
        bStop = true;
        thread.join();
    }

    Traffic(const Traffic&) = delete;
    Traffic& operator=(const Traffic&) = delete;

private:
    void Run()
    {
        while (!bStop) {
            connection.Send(TestSupport::CallToBus("GetId"));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    Connection connection;
    std::atomic<bool> bStop = false;
    std::thread thread;
};

} // namespace

using ThreadStress = OnTheBus;

TEST_F(ThreadStress, TheDispatchThreadCanBeStartedUsedAndDestroyedOverAndOver)
{
    const TestSupport::Watchdog whole(std::chrono::minutes(9));
    TestSupport::Mailbox<std::uint32_t> mailbox;
    connection.RegisterObject(pPath,
                              [&](const std::string&, const std::string&, const Message& message) {
                                  mailbox.Put(message.Contents().As<std::uint32_t>());
                                  return true;
                              });
    const Traffic traffic(connection);
    for (std::uint32_t nLife = 0; nLife < nLives; ++nLife) {
        Thread thread;
        thread.RunIfNotRunning();
        // The bus lets only so many replies be owed.
        connection.Send(MakeCall("Live").SetNoReply().Add(Data::MakeUInt32(nLife)));
        ASSERT_EQ(mailbox.Take(), nLife);
    }
    EXPECT_TRUE(TestSupport::FindThreads("DBusThread").empty());
    TestSupport::PrintCount("thread lives", nLives, nLives);
}

} // namespace Tovra::DBus
