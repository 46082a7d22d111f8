#pragma once

#include "Common/Commands.h"
#include "Common/ConnMan.h"
#include "Common/Lists.h"
#include "Common/Log.h"
#include "Common/Published.h"

#include <mutex>

namespace Tovra
{

/**
 * The client's state and handlers.
 *
 * All handlers and what they call run on the dispatch thread. What is bound to the bus holds this
 * object weakly: libdbus keeps its callbacks for as long as the connection lives, which is longer
 * than the client.
 *
 * A client owns it by a shared pointer. One that is owned otherwise can be called, but nothing that
 * it binds to the bus does anything.
 *
 * The functions throw as they say; only what is bound catches (`Guard`), so that no exception
 * reaches libdbus.
 */
class ConnMan::Impl : public std::enable_shared_from_this<ConnMan::Impl>
{
public:
    /** What the client does to the system; a test may put its own in their place. */
    struct SystemActions {
        /** Runs a shell command and waits for its end. */
        std::function<void(const std::string& sCommand)> fnRunCommand;
        /** As `WifiSettings::RemoveOld` on ConnMan's storage directory. */
        std::function<void(const std::string& sConnectedIdentifier,
                           const std::function<void(const std::string&)>& fnRemoving)>
            fnRemoveOldSettings;
    };

    static SystemActions GetSystemActions();

    explicit Impl(DBus::Connection& dbusConnection,
                  SystemActions systemActions = GetSystemActions());

    /** Subscribes to ConnMan's signals. */
    void ConnectSignals();

    /** Registers the agent, waiting for the answer, and asks for both lists. */
    void Startup();

    void SetOnNetworksChanged(const ChangedFunction& fn, unsigned int mask);
    void SetOnAgentRequest(const AgentFunction& fn);
    std::vector<NetworkService> GetNetworks() const;
    std::vector<NetworkTechnology> GetTechnologies() const;
    void ScanTechnology(const NetworkTechnology& technology);
    void SetTechnologyPower(const NetworkTechnology& technology, bool on);
    void SetNetworkProperties(const NetworkService& service, unsigned int flags);

    void Signal_Manager_ServicesChanged(const std::string& path, const DBus::Message& message);
    void Signal_Manager_TechnologyAddedOrRemoved(const std::string& path,
                                                 const DBus::Message& message);
    void Signal_Technology_PropertyChanged(const std::string& path, const DBus::Message& message);
    void Signal_Service_PropertyChanged(const std::string& path, const DBus::Message& message);
    void Return_Manager_GetServices(unsigned int flags, DBus::PendingCall& pending);
    void Return_Manager_GetTechnologies(DBus::PendingCall& pending);

    /** Answers "RequestInput"; false leaves the call to libdbus's unknown-method error. */
    bool Object_Agent(const std::string& interface, const std::string& member,
                      const DBus::Message& message);

    /**
     * Builds and installs a new service list, calls the callbacks with `flags` | ServicesUpdated,
     * and tells the host when the first connected service changed. What is no array empties the
     * list and tells the host nothing.
     */
    void UpdateNetworks(const DBus::Data& services, unsigned int flags);

    /** The same for technologies, always with TechnologiesChanged. */
    void UpdateTechnologies(const DBus::Data& technologies);

    /** Runs the host's command for the first connected service, if there is one. */
    void UpdateNetworkStateIpc();

    /**
     * Removes the stored settings of every WiFi network but the connected one; nothing while no
     * service is connected. Throws boost::filesystem::filesystem_error.
     */
    void DeleteOldWifiSettings();

private:
    struct ChangedCallback {
        std::uint32_t nMask;
        ChangedFunction fn;
    };

    void Send(const Commands::Command& command);
    void SwapNetworks(std::vector<NetworkService>& list, unsigned int flags);
    void SwapTechnologies(std::vector<NetworkTechnology>& list);
    void CallServices(unsigned int flags);
    void CallTechnologies();
    void ChangeStrength(const std::string& path, std::uint32_t nStrength);
    void Notify(unsigned int nWord) const;
    void ReportDropped(const char* pHandler, const char* pText) const noexcept;
    template <class Function>
    void Guard(const char* pHandler, const Function& fnHandler) const noexcept;
    template <class... Args>
    std::function<void(Args...)> Bound(const char* pHandler, void (Impl::*pMember)(Args...));

    DBus::Connection& connection;
    Published<std::vector<ChangedCallback>> vecCallbacks;
    Published<AgentFunction> fnAgentRequest;
    mutable std::mutex
        mtxLists; // guards the two lists; after the host's network lock, never before
    std::vector<NetworkTechnology> vecTechnologies;
    std::vector<NetworkService> vecServices;
    Lists::ServiceIndex mapServicesByPath; // dispatch thread only; points into vecServices
    SystemActions actions;
};

} // namespace Tovra
