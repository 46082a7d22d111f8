#include "corvane/Host.h"

#include "corvane/PlugIn.h"
#include "corvane/Secret.h"

#include <array>
#include <boost/thread/lock_types.hpp>
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
    pHost->pPlugIn = &LoadPlugIn(sLibrary, pHost->config);
    return *pHost;
}

Picture Host::Look()
{
    const boost::shared_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
    Picture picture = {config.mapNetworkTechnologies, {}};
    for (const auto& [sKey, service] : config.mapNetworkServices) {
        DeviceConfig::NetworkService& copy = picture.mapServices[sKey];
        copy = service;
        Clear(copy.sPassphrase);
    }
    return picture;
}

bool Host::HoldsCredential(const std::string& sKey)
{
    const boost::shared_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
    const auto found = config.mapNetworkServices.find(sKey);
    return found != config.mapNetworkServices.end() &&
           (found->second.bUseWps || !found->second.sPassphrase.empty());
}

Picture Host::Read()
{
    pPlugIn.load()->TargetSpecificGetNetworkConfiguration();
    return Look();
}

void Host::Change(const std::function<void(DeviceConfig&)>& fnEdit)
{
    pPlugIn.load()->TargetSpecificGetNetworkConfiguration();
    {
        const boost::unique_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
        fnEdit(config);
    }
    pPlugIn.load()->TargetSpecificSetNetworkConfiguration();
}

void Host::NetworksChanged(unsigned flags)
{
    ITargetSpecific* const pLoaded = pPlugIn;
    if (pLoaded && bReadOnChange)
        pLoaded->TargetSpecificGetNetworkConfiguration();
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
