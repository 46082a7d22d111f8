#include "tests/plugin/Stage.h"
#include "tests/support/ProcessThreads.h"

#include <atomic>
#include <boost/thread/thread.hpp>
#include <future>
#include <sys/syscall.h>

/** The host's network lock, and the order in which it and the client's list lock are taken. */

namespace Tovra
{

using TestSupport::Eventually;
using TestSupport::HostEvent;
using TestSupport::LogMessage;

namespace
{

constexpr const char* pHome = "/net/connman/service/wifi_Home";
constexpr const char* pHomeKey = "Home52F50EAE";

Simulator::Network Hidden()
{
    Simulator::Network network = Scenes::Wifi("hidden");
    network.sName.reset();
    return network;
}

Simulator::Json PassphraseRequest()
{
    using Simulator::MakeString;
    const Simulator::Value field = Simulator::MakeDictionaryValue(
        {{"Type", MakeString("psk")}, {"Requirement", MakeString("mandatory")}});
    return Simulator::MakeDictionary({{"Passphrase", field}});
}

} // namespace

class Locking : public Stage
{
protected:
    void SetUp() override { Start(Scenes::Quiet({Scenes::Wifi("Home"), Hidden()})); }
    void TearDown() override { TestSupport::HostLog::SetOnMessage(nullptr); }

    using Operation = int (ITargetSpecific::*)();

    /** Whether another thread could read the maps now. */
    static bool IsFree()
    {
        boost::shared_mutex& mtxNetwork = TestSupport::Host::Get().config.mtxNetworkConfig;
        const auto tryIt = [&] {
            const boost::shared_lock<boost::shared_mutex> lock(mtxNetwork, boost::try_to_lock);
            return lock.owns_lock();
        };
        return std::async(std::launch::async, tryIt).get();
    }

    /**
     * For each line that is logged from now on, whether the lock was free then. ConnMan may still
     * be asking when the test is over: what notes the line shares what it needs.
     */
    void WatchLines()
    {
        TestSupport::HostLog::SetOnMessage([pLines = pLines](const LogMessage& message) {
            pLines->Put({message.nLine, IsFree()});
        });
    }

    void ExpectLine(int nLine, bool bFree)
    {
        const auto line = pLines->Take();
        ASSERT_TRUE(line);
        EXPECT_EQ(line->first, nLine);
        EXPECT_EQ(line->second, bFree) << "line " << nLine;
    }

    void WantHomeConnected()
    {
        host.Edit(
            [](DeviceConfig& config) { config.mapNetworkServices.at(pHomeKey).bConnected = true; });
    }

    /** Runs an operation on a thread that is interrupted while it waits for the host's lock. */
    void ExpectUninterrupted(Operation pOperation);

    using Lines = TestSupport::Mailbox<std::pair<int, bool>>;
    const std::shared_ptr<Lines> pLines = std::make_shared<Lines>();
};

TEST_F(Locking, ReadingHoldsTheLockAgainstReadersAndThenLeavesIt)
{
    WatchLines();
    Read();
    ExpectLine(112, false);
    EXPECT_TRUE(IsFree());
}

TEST_F(Locking, ApplyingHoldsTheLockAgainstReadersAndThenLeavesIt)
{
    WantHomeConnected();
    host.Edit([](DeviceConfig& config) { config.mapNetworkTechnologies.at("wifi").bScan = true; });
    WatchLines();
    Apply();
    ExpectLine(177, false);
    EXPECT_TRUE(IsFree());
    Apply();
    ExpectLine(234, false);
    // ConnMan may be asking already, and the answer takes the lock.
    EXPECT_TRUE(TestSupport::Eventually([&] { return IsFree(); }));
}

TEST_F(Locking, AnsweringHoldsTheLockFromAfterItsFirstLineToItsEnd)
{
    WatchLines();
    AskAgent(pHome, PassphraseRequest());
    ExpectLine(262, true);
    for (const int nLine : {271, 278, 283, 295})
        ExpectLine(nLine, false);
    EXPECT_TRUE(IsFree());
}

TEST_F(Locking, AnsweringWaitsForTheHostAndSeesWhatItChanged)
{
    auto answer = std::async(std::launch::deferred, [] { return Simulator::Reply(); });
    {
        const boost::unique_lock<boost::shared_mutex> lock(host.config.mtxNetworkConfig);
        answer =
            std::async(std::launch::async, [this] { return AskAgent(pHome, PassphraseRequest()); });
        ASSERT_TRUE(TestSupport::HostLog::AwaitText(
            std::string("TargetSpecificKX22::OnAgentRequest() called for sUniqueId=") + pHome));
        host.config.mapNetworkServices.at(pHomeKey).sPassphrase = "correct horse";
    }
    const Simulator::Json values = answer.get().arguments.values.at(0);
    EXPECT_EQ(values.at("Passphrase").at(1), "correct horse");
}

TEST_F(Locking, TheHostsReadersKeepThePlugInOut)
{
    boost::shared_lock<boost::shared_mutex> lock(host.config.mtxNetworkConfig);
    std::atomic<pid_t> nReader = 0;
    auto reading = std::async(std::launch::async, [&] {
        nReader = TestSupport::GetThread();
        return Read();
    });
    ASSERT_TRUE(Eventually([&] { return nReader && TestSupport::IsInCall(nReader, SYS_futex); }));
    EXPECT_EQ(reading.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    lock.unlock();
    EXPECT_EQ(reading.get(), 1);
}

// The lists are exchanged under the client's lock: a change that is told shows that it is free.
TEST_F(Locking, AThreadThatWaitsForTheHostsLockDoesNotHoldTheListLock)
{
    boost::unique_lock<boost::shared_mutex> lock(host.config.mtxNetworkConfig);
    for (const Operation pOperation : {&ITargetSpecific::TargetSpecificGetNetworkConfiguration,
                                       &ITargetSpecific::TargetSpecificSetNetworkConfiguration}) {
        host.ForgetEvents();
        std::atomic<pid_t> nWaiter = 0;
        auto waiting = std::async(std::launch::async, [&] {
            nWaiter = TestSupport::GetThread();
            return (pPlugIn->*pOperation)();
        });
        ASSERT_TRUE(
            Eventually([&] { return nWaiter && TestSupport::IsInCall(nWaiter, SYS_futex); }));
        pConnMan->SetServiceProperty(pHome, "Domains", Simulator::MakeStrings({"example.net"}));
        pConnMan->SetServiceProperty(pHome, "Domains", Simulator::MakeStrings({}));
        EXPECT_TRUE(host.AwaitWord(4, 2));
        lock.unlock();
        EXPECT_EQ(waiting.get(), 1);
        lock.lock();
    }
}

TEST_F(Locking, TellingTheHostTakesNoLock)
{
    const boost::unique_lock<boost::shared_mutex> lock(host.config.mtxNetworkConfig);
    pConnMan->SetState(pHome, "ready");
    EXPECT_TRUE(host.AwaitWord(5));
    EXPECT_TRUE(Eventually([&] { return host.CountRefreshes() > 0; }));
}

void Locking::ExpectUninterrupted(Operation pOperation)
{
    boost::unique_lock<boost::shared_mutex> lock(host.config.mtxNetworkConfig);
    std::atomic<pid_t> nWaiter = 0;
    TestSupport::Mailbox<std::string> ends;
    boost::thread waiter([&] {
        nWaiter = TestSupport::GetThread();
        try {
            (pPlugIn->*pOperation)();
            ends.Put(boost::this_thread::interruption_requested() ? "done, then interrupted"
                                                                  : "done, not interrupted");
        } catch (const boost::thread_interrupted&) {
            ends.Put("interrupted");
        }
    });
    EXPECT_TRUE(Eventually([&] { return nWaiter && TestSupport::IsInCall(nWaiter, SYS_futex); }));
    waiter.interrupt();
    EXPECT_TRUE(ends.IsEmpty());
    lock.unlock();
    EXPECT_EQ(ends.Take(), "done, then interrupted");
    waiter.join();
}

TEST_F(Locking, WaitingForItToReadIsNotInterrupted)
{
    ExpectUninterrupted(&ITargetSpecific::TargetSpecificGetNetworkConfiguration);
}

TEST_F(Locking, WaitingForItToApplyIsNotInterrupted)
{
    ExpectUninterrupted(&ITargetSpecific::TargetSpecificSetNetworkConfiguration);
}

} // namespace Tovra
