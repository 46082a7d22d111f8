#pragma once

#include "corvane/Events.h"
#include "corvane/Interrupts.h"
#include "corvane/Ipc.h"
#include "host/DeviceConfig.h"
#include "host/ITargetSpecific.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>

namespace Tovra::Corvane
{

using Technologies = std::map<std::string, DeviceConfig::NetworkTechnology>;
using Services = std::map<std::string, DeviceConfig::NetworkService>;
using Clock = std::chrono::steady_clock;

/** A copy of the host's records, without credentials. */
struct Picture {
    Technologies mapTechnologies; ///< by type
    Services mapServices;         ///< by network key
    bool bAsRead = false;         ///< false: as wished, not read since
};

/**
 * The device program's side of the plug-in: the configuration object, the observer, and the waiting
 * for what the plug-in tells. It is never destroyed, since the plug-in's thread uses it until the
 * process has ended. The main thread calls it; the plug-in's thread calls it back.
 */
class Host final : private INetworkObserver
{
public:
    /** Loads the plug-in and starts to listen for its events. Throws Failure. */
    static Host& Start(const std::string& sLibrary);

    /** What is to be done at the end of the process: nothing is left behind. Any thread. */
    static void TidyUp();

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /** Reads the network's state through the plug-in. Stored credentials are lost by it. */
    Picture Read();

    /** The records as they were last read, by whomever. */
    Picture Look();

    /** Whether a network's passphrase or wish for WPS has not been asked for yet. */
    bool HoldsCredential(const std::string& sKey);

    /**
     * Read, edit one record and apply it, in one go. What the host has no record of the plug-in
     * leaves alone, so while it applies there is none but this one: another network that came up
     * meanwhile, or that shares its name with a third, would be disconnected. Throw Failure when
     * what is to be changed has gone.
     */
    void ChangeNetwork(const std::string& sKey,
                       const std::function<void(DeviceConfig::NetworkService&)>& fnEdit);
    void ChangeTechnology(const std::string& sType,
                          const std::function<void(DeviceConfig::NetworkTechnology&)>& fnEdit);

    /**
     * While true (it starts false), a change that the plug-in tells is read at once, and without
     * loss of credentials: a failed connection shows for a moment only.
     */
    void SetReadOnChange(bool bRead) { bReadOnChange = bRead; }

    enum class Wake { Event, Deadline, Interrupt };

    /** Waits for the next event; the event is taken. */
    Wake WaitForEvent(Clock::time_point until, Event* pEvent = nullptr);

    /** Another descriptor to wait for beside events: readable input ends the wait with true. */
    bool WaitForInput(int nInput);

    Interrupts& GetInterrupts() { return interrupts; }

    /** As the plug-in's `RefreshIpSettings` reaches it. */
    void OnAddressesChanged();

private:
    Host();

    void NetworksChanged(unsigned flags) override;
    bool TakeIpcEvent(Event& event);
    void ReadKeepingCredentials();

    template <class Map, class Edit>
    void Change(Map DeviceConfig::*pMap, const std::string& sKey, const Edit& fnEdit);

    Interrupts interrupts; // first: the plug-in's thread inherits the blocked signals
    EventQueue events;
    Ipc::Receiver receiver;
    DeviceConfig config;
    std::atomic<bool> bAsRead = false;
    std::mutex mtxReading; // before the network lock: readings and changes are one at a time
    std::atomic<ITargetSpecific*> pPlugIn = nullptr;
    std::atomic<bool> bReadOnChange = false;
};

} // namespace Tovra::Corvane
