#include "tests/plugin/Host.h"

#include "tests/support/HostLog.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <pthread.h>

namespace Tovra
{

namespace TestSupport
{

namespace
{

struct Recorder {
    std::mutex mtxEvents; // guards all that follows
    std::vector<HostEvent> vecEvents;
    std::function<void(unsigned)> fnOnChange;
};

// Never destroyed: the dispatch thread tells the host of changes until the library's end.
Recorder& GetRecorder()
{
    static auto& recorder = *new Recorder;
    return recorder;
}

std::string GetThreadName()
{
    std::array<char, 16> name = {};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

void Record(HostEvent::Kind kind, unsigned nWord, const DeviceConfig* pConfig)
{
    HostEvent event{kind, nWord, pConfig, GetThreadName()};
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxEvents);
    recorder.vecEvents.push_back(std::move(event));
}

template <class Map>
std::optional<typename Map::mapped_type> Find(const Map& mapRecords, const std::string& sKey)
{
    const auto found = mapRecords.find(sKey);
    if (found == mapRecords.end())
        return std::nullopt;
    return found->second;
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const HostEvent& event)
{
    if (event.kind == HostEvent::RefreshIpSettings)
        return stream << "RefreshIpSettings on " << event.pConfig << " by " << event.sThread;
    return stream << "NetworksChanged(" << event.nWord << ") by " << event.sThread;
}

Host::Host()
{
    HostLog::Reset(); // also has the linker take in the host's logging functions
    config.pNetworkObserver = this;
}

Host& Host::Get()
{
    static auto& host = *new Host;
    return host;
}

void Host::NetworksChanged(unsigned flags)
{
    Record(HostEvent::NetworksChanged, flags, nullptr);
    Recorder& recorder = GetRecorder();
    std::unique_lock<std::mutex> lock(recorder.mtxEvents);
    const auto fnOnChange = recorder.fnOnChange;
    lock.unlock();
    if (fnOnChange)
        fnOnChange(flags);
}

void Host::SetOnChange(std::function<void(unsigned)> fn)
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxEvents);
    recorder.fnOnChange = std::move(fn);
}

std::vector<HostEvent> Host::GetEvents() const
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxEvents);
    return recorder.vecEvents;
}

void Host::ForgetEvents()
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxEvents);
    recorder.vecEvents.clear();
}

std::size_t Host::CountWord(unsigned nWord) const
{
    const std::vector<HostEvent> vecEvents = GetEvents();
    const auto nCount =
        std::count_if(vecEvents.begin(), vecEvents.end(), [&](const HostEvent& event) {
            return event.kind == HostEvent::NetworksChanged && event.nWord == nWord;
        });
    return static_cast<std::size_t>(nCount);
}

std::size_t Host::CountRefreshes() const
{
    const std::vector<HostEvent> vecEvents = GetEvents();
    const auto nCount =
        std::count_if(vecEvents.begin(), vecEvents.end(), [](const HostEvent& event) {
            return event.kind == HostEvent::RefreshIpSettings;
        });
    return static_cast<std::size_t>(nCount);
}

bool Host::AwaitWord(unsigned nWord, std::size_t nTimes, std::chrono::milliseconds limit) const
{
    return Eventually([&] { return CountWord(nWord) >= nTimes; }, limit);
}

std::optional<DeviceConfig::NetworkService> Host::FindNetwork(const std::string& sKey)
{
    return Look([&](const DeviceConfig& shown) { return Find(shown.mapNetworkServices, sKey); });
}

std::optional<DeviceConfig::NetworkTechnology> Host::FindTechnology(const std::string& sType)
{
    return Look(
        [&](const DeviceConfig& shown) { return Find(shown.mapNetworkTechnologies, sType); });
}

} // namespace TestSupport

void DeviceConfig::RefreshIpSettings()
{
    TestSupport::Record(TestSupport::HostEvent::RefreshIpSettings, 0, this);
}

} // namespace Tovra
