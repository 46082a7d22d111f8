#include "tests/connman/PrivateOpt.h"
#include "tests/plugin/StackDump.h"
#include "tests/plugin/Stage.h"
#include "tests/support/Counts.h"

#include <array>
#include <atomic>
#include <boost/thread/thread.hpp>
#include <random>

/** Many threads of the host use the plug-in while ConnMan has much to tell and to ask. */

namespace Tovra
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int nAllSeconds = 60;
constexpr int nSeconds = TestSupport::ReduceCount(nAllSeconds, 3, 6);
constexpr std::size_t nThreads = 16;

/**
 * How many signals of a kind come at once, and how often the host may apply meanwhile. The plug-in
 * asks ConnMan once for each signal; the bus refuses what is asked beyond 128 open questions.
 */
constexpr unsigned nBurst = 16;
constexpr int nApplications = 32;

/** Within it every thread gets something done, or there is a deadlock. */
constexpr std::chrono::seconds patience{60};

constexpr const char* pHome = "/net/connman/service/wifi_Home";
constexpr const char* pGuest = "/net/connman/service/wifi_Guest";

/** Changes some wishes at random. */
void Edit(DeviceConfig& config, unsigned nRandom)
{
    for (auto& [sType, technology] : config.mapNetworkTechnologies) {
        technology.bScan = nRandom % 64 == 0;
        technology.bPowered = sType == "wifi" || nRandom % 32 != 1;
    }
    for (auto& [sKey, service] : config.mapNetworkServices) {
        service.bConnected = (nRandom & 1U) != 0;
        service.bDhcp = (nRandom & 2U) != 0;
        service.bUseWps = (nRandom & 4U) != 0;
        service.sIPv4Address = "10.0.0." + std::to_string(nRandom % 256);
        service.vecNameservers = {service.sIPv4Address, "10.0.0.1"};
        service.sPassphrase = "correct horse";
        nRandom /= 8;
    }
}

} // namespace

class HostStorm : public Stage
{
protected:
    void SetUp() override;
    void TearDown() override { StopThreads(); }

    void EmitBurst(const char* pPath, const char* pInterface, const char* pProperty,
                   const Simulator::Value& value);
    void StartThreads();
    void StopThreads();
    void Work(std::size_t nThread);
    void DoSomething(unsigned nRandom);
    void Stir(unsigned nRandom);
    void AwaitProgress();

    std::atomic<bool> bStop = false;
    std::atomic<int> nMayApply = 0;
    std::array<std::atomic<unsigned long>, nThreads> counts = {};
    std::vector<std::unique_ptr<boost::thread>> vecThreads;
};

void HostStorm::SetUp()
{
    TestSupport::PrepareStackDump();
    Simulator::Network home = Scenes::Wifi("Home", "online");
    home.vecSecurity = {"psk", "wps"};
    home.sPassphrase = "correct horse";
    Simulator::Network guest = Scenes::Wifi("Guest");
    guest.sPassphrase = "another horse";
    Simulator::Scenario scenario =
        Scenes::Quiet({home, guest, Scenes::Cable("ready")}, {"wifi", "ethernet"});
    scenario.bSorted = true;
    scenario.bAutoConnects = true;
    scenario.bAnnounceEverySort = true;
    scenario.sStorage = PrivateOpt::pStorage;
    Start(scenario);
}

void HostStorm::EmitBurst(const char* pPath, const char* pInterface, const char* pProperty,
                          const Simulator::Value& value)
{
    const Simulator::Json values = Simulator::Json::array({pProperty, MakeVariant(value)});
    pConnMan->EmitStorm({pPath, pInterface, "PropertyChanged", {"sv", values}, ""}, nBurst);
}

void HostStorm::StartThreads()
{
    for (std::size_t nThread = 0; nThread < nThreads; ++nThread)
        vecThreads.push_back(std::make_unique<boost::thread>([this, nThread] { Work(nThread); }));
}

void HostStorm::StopThreads()
{
    bStop = true;
    for (const auto& pThread : vecThreads)
        pThread->join();
    vecThreads.clear();
}

void HostStorm::Work(std::size_t nThread)
{
    std::mt19937 random(static_cast<unsigned>(nThread));
    while (!bStop) {
        DoSomething(static_cast<unsigned>(random()));
        ++counts.at(nThread);
        try {
            boost::this_thread::interruption_point();
        } catch (const boost::thread_interrupted&) { // only ever here: see `AwaitProgress`
        }
    }
}

void HostStorm::DoSomething(unsigned nRandom)
{
    const unsigned nWhat = nRandom % 8;
    if (nWhat < 3)
        EXPECT_EQ(Read(), 1);
    else if (nWhat < 6 && nMayApply-- > 0)
        EXPECT_EQ(Apply(), 1);
    else if (nWhat == 6)
        EXPECT_EQ(pPlugIn->TargetSpecificLoad(), 0);
    else
        host.Edit([&](DeviceConfig& config) { Edit(config, nRandom / 8); });
}

/** What ConnMan tells, does of itself, and asks. When it is answered, it has answered all. */
void HostStorm::Stir(unsigned nRandom)
{
    const char* const pService = "net.connman.Service";
    EmitBurst(pHome, pService, "State", Simulator::MakeString("online"));
    EmitBurst(pHome, pService, "Strength", Simulator::MakeByte(nRandom % 100));
    EmitBurst(pGuest, pService, "Domains", Simulator::MakeStrings({}));
    EmitBurst("/net/connman/technology/wifi", "net.connman.Technology", "Connected",
              Simulator::MakeBool(true));
    nMayApply = nApplications;
    const std::array<const char*, 4> states = {"idle", "ready", "online", "failure"};
    pConnMan->SetState(nRandom % 2 == 0 ? pHome : pGuest, states.at(nRandom / 2 % states.size()));
    const Simulator::Value field =
        Simulator::MakeDictionaryValue({{"Type", Simulator::MakeString("psk")},
                                        {"Requirement", Simulator::MakeString("mandatory")}});
    const Simulator::Reply reply =
        AskAgent(pHome, Simulator::MakeDictionary({{"Passphrase", field}}));
    EXPECT_EQ(reply.sError, "");
}

/** Returns once each thread has got something done; some are interrupted, which must not show. */
void HostStorm::AwaitProgress()
{
    std::array<unsigned long, nThreads> before = {};
    for (std::size_t nThread = 0; nThread < nThreads; ++nThread) {
        before.at(nThread) = counts.at(nThread);
        if (nThread % 4 == 0)
            vecThreads.at(nThread)->interrupt();
    }
    const auto haveAllGotOn = [&] {
        for (std::size_t nThread = 0; nThread < nThreads; ++nThread) {
            if (counts.at(nThread) == before.at(nThread))
                return false;
        }
        return true;
    };
    if (!TestSupport::Eventually(haveAllGotOn, patience))
        TestSupport::DumpStacksAndAbort("A thread of the host does not get on");
}

TEST_F(HostStorm, DoesNotStopAnybody)
{
    const Clock::time_point start = Clock::now();
    StartThreads();
    std::mt19937 random(1);
    std::size_t nWords = 0;
    while (Clock::now() - start < std::chrono::seconds(nSeconds)) {
        Stir(static_cast<unsigned>(random()));
        AwaitProgress();
        nWords += host.GetEvents().size();
        host.ForgetEvents();
        TestSupport::HostLog::Reset();
        pConnMan->ClearCalls();
    }
    StopThreads();
    EXPECT_GT(nWords, 0U);
    TestSupport::PrintCount("seconds of host storm", nSeconds, nAllSeconds);

    pConnMan->SetServiceProperty(pHome, "State", Simulator::MakeString("online"));
    EXPECT_TRUE(ReadUntil([](const DeviceConfig& config) {
        const auto home = config.mapNetworkServices.find("Home52F50EAE");
        return home != config.mapNetworkServices.end() && home->second.bConnected;
    }));
}

} // namespace Tovra
