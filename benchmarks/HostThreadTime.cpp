#include "benchmarks/Rounds.h"
#include "tests/plugin/Stage.h"

#include <cmath>
#include <cstdio>

namespace Tovra::Benchmarks
{

namespace
{

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using Simulator::Json;
using Simulator::MakeString;

std::string MakeName(std::size_t n)
{
    return "Network " + std::to_string(n);
}

/** About what ConnMan tells of a service. */
Json MakeProperties(std::size_t n)
{
    const Simulator::Value ethernet =
        Simulator::MakeDictionaryValue({{"Method", MakeString("auto")},
                                        {"Interface", MakeString("wlan0")},
                                        {"Address", MakeString("02:00:00:00:00:00")}});
    const Simulator::Value ipv4 =
        Simulator::MakeDictionaryValue({{"Method", MakeString("manual")},
                                        {"Address", MakeString("10.0.0.2")},
                                        {"Netmask", MakeString("255.0.0.0")},
                                        {"Gateway", MakeString("10.0.0.1")}});
    return Simulator::MakeDictionary(
        {{"Name", MakeString(MakeName(n))},
         {"Type", MakeString("wifi")},
         {"State", MakeString("idle")},
         {"Strength", Simulator::MakeByte(50)},
         {"Security", Simulator::MakeStrings({"psk", "wps"})},
         {"Nameservers", Simulator::MakeStrings({"10.0.0.3", "10.0.0.4"})},
         {"Ethernet", ethernet},
         {"IPv4", ipv4}});
}

Simulator::Arguments MakeServices(std::size_t nServices)
{
    Json services = Json::array();
    for (std::size_t n = 0; n < nServices; ++n)
        services.push_back(
            Json::array({"/net/connman/service/wifi_" + std::to_string(n), MakeProperties(n)}));
    return {"a(oa{sv})ao", Json::array({std::move(services), Json::array()})};
}

struct Times {
    double nReading;
    double nComparing;
    double nApplying;
};

} // namespace

/** How long the host's thread is held: that of the user interface, as like as not. */
class HostThreadTime : public Stage
{
protected:
    void SetUp() override
    {
        Start(Scenes::Quiet());
        pConnMan->OnCall({"SetProperty", "", "", ""}, Simulator::Behaviour::StaySilent());
    }

    void Announce(std::size_t nServices)
    {
        pConnMan->EmitRaw(
            {"/", "net.connman.Manager", "ServicesChanged", MakeServices(nServices), ""});
        ASSERT_TRUE(ReadUntil([&](const DeviceConfig& config) {
            return config.mapNetworkServices.size() == nServices;
        }));
    }

    void WantOtherAddresses()
    {
        host.Edit([](DeviceConfig& config) {
            for (auto& [sKey, service] : config.mapNetworkServices)
                service.sIPv4Address = "10.0.0.9";
        });
    }

    template <class Function> double Measure(std::size_t nTimes, const Function& fn)
    {
        std::vector<double> vecTimes;
        for (std::size_t n = 0; n < nTimes; ++n) {
            const Clock::time_point begin = Clock::now();
            fn();
            vecTimes.push_back(Milliseconds(Clock::now() - begin).count());
            AwaitDispatched(); // ConnMan has taken what was sent
            pConnMan->ClearCalls();
        }
        return GetMedian(vecTimes);
    }

    Times MeasureAll(std::size_t nServices)
    {
        Announce(nServices);
        const std::size_t nTimes = Rounds(20000 / nServices + 9);
        Times times = {};
        times.nReading = Measure(nTimes, [this] { Read(); });
        times.nComparing = Measure(nTimes, [this] { Apply(); });
        WantOtherAddresses();
        times.nApplying = Measure(Rounds(5), [this] { Apply(); });
        std::printf("[ FIGURE   ] host thread held for %5zu services: reading %8.3f ms, applying "
                    "nothing %8.3f ms, an address to each %8.3f ms\n",
                    nServices, times.nReading, times.nComparing, times.nApplying);
        return times;
    }

    /** Ten times as many services: no worse than n log n, with room for what caches do not hold. */
    static void ExpectGrowth(double nFew, double nMany, std::size_t nServices, const char* pWhat)
    {
        const double nLogarithms = std::log(10.0 * static_cast<double>(nServices)) /
                                   std::log(static_cast<double>(nServices));
        std::printf("[ FIGURE   ] %s, %zu to %zu services: %.1f times as long\n", pWhat, nServices,
                    10 * nServices, nMany / nFew);
        if (IsHeld()) {
            EXPECT_LT(nMany / nFew, 10.0 * nLogarithms * 2.0) << pWhat;
        }
    }
};

TEST_F(HostThreadTime, GrowsNoWorseThanNLogNWithTheServices)
{
    const std::size_t nMost = IsSmoke() ? 100 : 10000;
    Times before = MeasureAll(10);
    for (std::size_t nServices = 10; nServices < nMost; nServices *= 10) {
        const Times after = MeasureAll(10 * nServices);
        if (nServices > 10) { // what ten services take is hardly more than the lock
            ExpectGrowth(before.nReading, after.nReading, nServices, "reading");
            ExpectGrowth(before.nComparing, after.nComparing, nServices, "applying nothing");
            ExpectGrowth(before.nApplying, after.nApplying, nServices, "applying addresses");
        }
        before = after;
    }
}

} // namespace Tovra::Benchmarks
