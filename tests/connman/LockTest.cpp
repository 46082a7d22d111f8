#include "tests/connman/LiveClient.h"
#include "tests/support/ProcessThreads.h"

#include <future>
#include <gmock/gmock.h>
#include <sys/syscall.h>

namespace Tovra
{

using DaemonData::ServicePropertyChanged;
using DaemonData::ServicesChanged;
using DaemonData::StrengthChanged;
using DaemonData::TechnologyAdded;
using ListData::Paths;
using ListData::Service;
using testing::ElementsAre;
using TestSupport::Eventually;

/** What a host's thread finds that asks for the lists while a callback runs. */
class ListLock : public LiveClient
{
protected:
    /** What the thread was given, and whether the callback had returned by then. */
    struct Answer {
        std::size_t nServices;
        std::size_t nTechnologies;
        bool bAfterTheCallback;
    };

    ListLock() { Start(); }

    ~ListLock() override { StopClient(); }

    /** Emits the signal; its callback has another thread ask, and returns when that has both. */
    Answer AskDuringCallback(unsigned int mask, const Simulator::Signal& signal)
    {
        return AskUntil(mask, signal, [](const std::future<Answer>& answer) {
            return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        });
    }

    /** The same, but the callback returns also when the other thread is seen to wait for a lock. */
    Answer AskOrWaitDuringCallback(const Simulator::Signal& signal)
    {
        return AskUntil(8, signal, [this](const std::future<Answer>& answer) {
            return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready ||
                   (nAsking != 0 && TestSupport::IsInCall(nAsking, SYS_futex));
        });
    }

private:
    Answer Ask()
    {
        nAsking = TestSupport::GetThread();
        const std::size_t nServices = pClient->GetNetworks().size();
        const std::size_t nTechnologies = pClient->GetTechnologies().size();
        return {nServices, nTechnologies, bReturned};
    }

    Answer AskUntil(unsigned int mask, const Simulator::Signal& signal,
                    const std::function<bool(const std::future<Answer>&)>& fnUntil)
    {
        TestSupport::Mailbox<std::future<Answer>> asked;
        pClient->SetOnNetworksChanged(
            [&, this](unsigned int) {
                auto answer = std::async(std::launch::async, [this] { return Ask(); });
                EXPECT_TRUE(Eventually([&] { return fnUntil(answer); }));
                bReturned = true;
                asked.Put(std::move(answer));
            },
            mask);
        Emit(signal);
        auto taken = asked.Take();
        const Answer answer = taken ? taken->get() : Answer{};
        StopClient(); // what the callback uses is gone after this
        return answer;
    }

    std::atomic<pid_t> nAsking = 0;
    std::atomic<bool> bReturned = false;
};

TEST_F(ListLock, IsHeldWhileCallbacksRunForAStrength)
{
    const Answer answer = AskOrWaitDuringCallback(StrengthChanged(sHome, 1));
    EXPECT_TRUE(answer.bAfterTheCallback);
    EXPECT_EQ(answer.nServices, 2U);
    EXPECT_EQ(answer.nTechnologies, 1U);
}

TEST_F(ListLock, IsHeldForAStrengthOfAnUnknownServiceToo)
{
    EXPECT_TRUE(AskOrWaitDuringCallback(StrengthChanged("/unknown", 1)).bAfterTheCallback);
}

TEST_F(ListLock, IsFreeWhileCallbacksRunForTheTechnologies)
{
    const Answer answer = AskDuringCallback(2, TechnologyAdded());
    EXPECT_FALSE(answer.bAfterTheCallback);
    EXPECT_EQ(answer.nTechnologies, 1U);
}

TEST_F(ListLock, IsFreeWhileCallbacksRunForTheServices)
{
    EXPECT_FALSE(
        AskDuringCallback(4, ServicePropertyChanged(sHome, "Name", "New")).bAfterTheCallback);
}

TEST_F(ListLock, IsFreeWhileCallbacksRunForAState)
{
    const Answer answer = AskDuringCallback(1, ServicesChanged({Service{"/a"}}));
    EXPECT_FALSE(answer.bAfterTheCallback);
    EXPECT_EQ(answer.nServices, 1U); // the new list
}

TEST_F(ListLock, IsFreeForTheCallbacksThemselvesButForAStrength)
{
    TestSupport::Mailbox<std::vector<std::string>> seen;
    pClient->SetOnNetworksChanged(
        [&](unsigned int) {
            std::vector<std::string> vecPaths = Paths(pClient->GetNetworks());
            for (const std::string& sPath : Paths(pClient->GetTechnologies()))
                vecPaths.push_back(sPath);
            seen.Put(vecPaths);
        },
        ~8U);
    const std::string sWifi = "/net/connman/technology/wifi";
    Emit(ServicesChanged({Service{"/a"}}));
    EXPECT_EQ(seen.Take(), (std::vector<std::string>{"/a", sWifi}));
    Emit(TechnologyAdded());
    EXPECT_EQ(seen.Take(), (std::vector<std::string>{"/a", sWifi}));
    Emit(ServicePropertyChanged("/a", "Name", "New"));
    EXPECT_EQ(seen.Take(), (std::vector<std::string>{sHome, sAway, sWifi}));
    StopClient();
}

TEST_F(ListLock, IsReleasedWhenACallbackForAStrengthThrows)
{
    pClient->SetOnNetworksChanged([](unsigned int) { throw 42; }, 8);
    Emit(StrengthChanged(sHome, 33));
    EXPECT_TRUE(TestSupport::HostLog::Await(
        ClientLog::Dropped("Signal_Service_PropertyChanged", "unknown")));
    EXPECT_EQ(pClient->GetNetworks()[0].nStrength, 33U);
}

} // namespace Tovra
