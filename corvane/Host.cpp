#include "corvane/Host.h"

#include "corvane/PlugIn.h"
#include "corvane/Secret.h"
#include "corvane/Status.h"

#include <array>
#include <boost/thread/lock_types.hpp>
#include <cstdlib>
#include <poll.h>

namespace Tovra
{

namespace
{

std::atomic<Corvane::Host*> pRunningHost = nullptr;

} // namespace

// The host's own, in place of the library's: this is how the plug-in reaches it.
void DeviceConfig::RefreshIpSettings()
{
    if (Corvane::Host* pHost = pRunningHost)
        pHost->OnAddressesChanged();
}

namespace Corvane
{

namespace
{

int GetMilliseconds(Clock::time_point until)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
}

} // namespace

Host::Host() = default;

Host& Host::Start(const std::string& sLibrary)
{
    auto* const pHost = new Host; // never destroyed
    pRunningHost = pHost;
    pHost->config.pNetworkObserver = pHost;
    // Registered before the plug-in is loaded: called when its thread has ended. Until then it may
    // run its command, and events are welcome.
    std::atexit(TidyUp);
    const EndingOnInterrupt ending(pHost->interrupts); // a silent daemon makes this long
    pHost->pPlugIn = &LoadPlugIn(sLibrary, pHost->config);
    return *pHost;
}

void Host::TidyUp()
{
    if (Host* pHost = pRunningHost)
        pHost->receiver.Withdraw();
}

Picture Host::Look()
{
    const boost::shared_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
    Picture picture = {config.mapNetworkTechnologies, {}, bAsRead};
    for (const auto& [sKey, service] : config.mapNetworkServices) {
        DeviceConfig::NetworkService& copy = picture.mapServices[sKey];
        copy = service;
        Clear(copy.sPassphrase);
    }
    return picture;
}

bool Host::HoldsCredential(const std::string& sKey)
{
    const std::lock_guard<std::mutex> reading(mtxReading);
    const boost::shared_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
    const auto found = config.mapNetworkServices.find(sKey);
    return found != config.mapNetworkServices.end() &&
           (found->second.bUseWps || !found->second.sPassphrase.empty());
}

Picture Host::Read()
{
    const std::lock_guard<std::mutex> reading(mtxReading);
    pPlugIn.load()->TargetSpecificGetNetworkConfiguration();
    bAsRead = true;
    return Look();
}

template <class Map, class Edit>
void Host::Change(Map DeviceConfig::*pMap, const std::string& sKey, const Edit& fnEdit)
{
    const std::lock_guard<std::mutex> reading(mtxReading);
    pPlugIn.load()->TargetSpecificGetNetworkConfiguration();
    Technologies mapTechnologies;
    Services mapServices;
    {
        const boost::unique_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
        auto node = (config.*pMap).extract(sKey);
        if (node.empty())
            throw Failure(Status::Unknown, "what was to be changed is not there any more");
        fnEdit(node.mapped());
        bAsRead = false;
        mapTechnologies.swap(config.mapNetworkTechnologies);
        mapServices.swap(config.mapNetworkServices);
        (config.*pMap).insert(std::move(node));
    }
    pPlugIn.load()->TargetSpecificSetNetworkConfiguration();
    const boost::unique_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
    config.mapNetworkTechnologies.merge(mapTechnologies);
    config.mapNetworkServices.merge(mapServices);
}

void Host::ChangeNetwork(const std::string& sKey,
                         const std::function<void(DeviceConfig::NetworkService&)>& fnEdit)
{
    Change(&DeviceConfig::mapNetworkServices, sKey, fnEdit);
}

void Host::ChangeTechnology(const std::string& sType,
                            const std::function<void(DeviceConfig::NetworkTechnology&)>& fnEdit)
{
    Change(&DeviceConfig::mapNetworkTechnologies, sType, fnEdit);
}

// On the plug-in's thread, on which it also takes credentials: it takes none meanwhile.
void Host::ReadKeepingCredentials()
{
    const std::lock_guard<std::mutex> reading(mtxReading);
    Services mapBefore;
    {
        const boost::unique_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
        for (auto& [sKey, service] : config.mapNetworkServices) {
            DeviceConfig::NetworkService& kept = mapBefore[sKey];
            kept.bUseWps = service.bUseWps;
            kept.sPassphrase.swap(service.sPassphrase);
        }
    }
    pPlugIn.load()->TargetSpecificGetNetworkConfiguration();
    const boost::unique_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
    for (auto& [sKey, service] : config.mapNetworkServices) {
        DeviceConfig::NetworkService& kept = mapBefore[sKey];
        service.bUseWps = kept.bUseWps;
        service.sPassphrase.swap(kept.sPassphrase);
    }
    bAsRead = true;
    for (auto& [sKey, service] : mapBefore)
        Clear(service.sPassphrase); // of networks that have gone
}

void Host::NetworksChanged(unsigned flags)
{
    if (bReadOnChange)
        ReadKeepingCredentials();
    events.Put({Event::Kind::NetworksChanged, flags, {}});
}

void Host::OnAddressesChanged()
{
    events.Put({Event::Kind::AddressesChanged, 0, {}});
}

bool Host::TakeIpcEvent(Event& event)
{
    const std::optional<std::string> sName = receiver.Take();
    if (!sName || !Ipc::IsEvent(*sName))
        return false;
    event = {Event::Kind::Ipc, 0, *sName};
    return true;
}

Host::Wake Host::WaitForEvent(Clock::time_point until, Event* pEvent)
{
    Event taken = {Event::Kind::Ipc, 0, {}};
    Event& event = pEvent ? *pEvent : taken;
    for (;;) {
        if (interrupts.Take())
            return Wake::Interrupt;
        if (auto next = events.Take()) {
            event = std::move(*next);
            return Wake::Event;
        }
        if (TakeIpcEvent(event))
            return Wake::Event;
        const int nTimeout = GetMilliseconds(until);
        if (nTimeout == 0)
            return Wake::Deadline;
        std::array<pollfd, 3> descriptors = {pollfd{interrupts.GetDescriptor(), POLLIN, 0},
                                             pollfd{events.GetDescriptor(), POLLIN, 0},
                                             pollfd{receiver.GetDescriptor(), POLLIN, 0}};
        poll(descriptors.data(), descriptors.size(), nTimeout);
    }
}

bool Host::WaitForInput(int nInput)
{
    std::array<pollfd, 2> descriptors = {pollfd{nInput, POLLIN, 0},
                                         pollfd{interrupts.GetDescriptor(), POLLIN, 0}};
    while (poll(descriptors.data(), descriptors.size(), -1) < 0) {
    }
    return descriptors[1].revents == 0;
}

} // namespace Corvane

} // namespace Tovra
