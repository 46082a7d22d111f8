#include "benchmarks/PlainLoop.h"
#include "benchmarks/Rounds.h"
#include "tests/plugin/Stage.h"
#include "tests/support/ProcessThreads.h"

#include <cstdio>
#include <random>
#include <sys/syscall.h>
#include <thread>

namespace Tovra::Benchmarks
{

namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr const char* pHome = "/net/connman/service/wifi_Home";

void Print(const char* pWhat, const std::vector<double>& vecTimes)
{
    std::printf("[ FIGURE   ] %s: median %.2f ms, worst %.2f ms, %zu times\n", pWhat,
                GetMedian(vecTimes), GetWorst(vecTimes), vecTimes.size());
}

} // namespace

/** From the host's thread to ConnMan's handler, while the dispatch thread has nothing to do. */
class CommandTime : public Stage
{
protected:
    void SetUp() override
    {
        Start(Scenes::Quiet({Scenes::Wifi("Home")}));
        pConnMan->OnCall({"Connect", "", "", ""}, Simulator::Behaviour::AnswerWith({}));
        pConnMan->SetObserver([this](const Simulator::Call&) { arrivals.Put(Clock::now()); });
    }

    void TearDown() override { pConnMan->SetObserver(nullptr); }

    /** After a pause, so that it meets the dispatch thread at any moment of its sleep. */
    template <class Function>
    double Measure(pid_t nThread, std::chrono::microseconds longestPause, const Function& fnSend)
    {
        std::uniform_int_distribution<std::chrono::microseconds::rep> pause(0,
                                                                            longestPause.count());
        std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
        EXPECT_TRUE(
            TestSupport::Eventually([&] { return TestSupport::IsInCall(nThread, SYS_poll); }));
        const Clock::time_point begin = Clock::now();
        fnSend();
        const auto arrival = arrivals.Take();
        EXPECT_TRUE(arrival);
        return Milliseconds(arrival.value_or(Clock::time_point::max()) - begin).count();
    }

    template <class Function>
    std::vector<double> MeasureOften(std::size_t nTimes, pid_t nThread,
                                     std::chrono::microseconds longestPause, const Function& fnSend)
    {
        std::vector<double> vecTimes;
        for (std::size_t n = 0; n < nTimes; ++n)
            vecTimes.push_back(Measure(nThread, longestPause, fnSend));
        return vecTimes;
    }

    TestSupport::Mailbox<Clock::time_point> arrivals;
    std::mt19937 random{1};
};

TEST_F(CommandTime, FromApplyingToConnMansHandlerIsBelowAMillisecond)
{
    host.Edit([](DeviceConfig& config) {
        config.mapNetworkServices.at("Home52F50EAE").bConnected = true;
    });
    const pid_t nThread = TestSupport::FindThreads("DBusThread").at(0);
    const auto vecTimes = MeasureOften(Rounds(1000), nThread, 10ms, [this] { Apply(); });
    Print("applying to ConnMan's handler", vecTimes);

    PlainLoop loop;
    ASSERT_TRUE(TestSupport::Eventually([&] { return loop.GetThread() != 0; }));
    const auto vecPlain = MeasureOften(Rounds(30), loop.GetThread(), 500ms,
                                       [&] { loop.Send(pHome, "net.connman.Service", "Connect"); });
    Print("the same with a plain 500 ms read-write-dispatch loop", vecPlain);
    if (IsHeld()) {
        EXPECT_LT(GetMedian(vecTimes), 1.0);
    }
}

} // namespace Tovra::Benchmarks
