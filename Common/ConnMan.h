#pragma once

/**
 * The client of the ConnMan network manager ("net.connman" on the system bus).
 *
 * It keeps copies of ConnMan's services and technologies, tells callbacks when they change, answers
 * ConnMan's agent calls through a callback and sends commands. When the first connected service
 * comes, goes or changes its address, it runs the host's notification command and removes the
 * stored settings of all other WiFi networks.
 *
 * Threads. Signals, replies, agent calls and all callbacks run on the dispatch thread of the
 * connection; what they throw is logged and dropped, so that the thread lives on. The public
 * operations are for the host's threads. One lock, `mtxLists`, guards the two lists; it is held to
 * copy a list, to compare and exchange it, which writes to the host's log, and while callbacks run
 * for a change of strength.
 */

#include "Include/D-Bus.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Tovra
{

class ConnMan
{
public:
    /** A ConnMan service: an Ethernet link or a WiFi network. Strings are ConnMan's own. */
    struct NetworkService {
        /**
         * `properties`: ConnMan's dictionary of the service; the keys that are read are added to it
         * where they are missing. Throws std::bad_cast when a required one is missing or is of
         * another type: Type and State; Interface and Address inside Ethernet, Method inside IPv4,
         * where those are dictionaries; a member of Nameservers or Security that is no string; a
         * Strength that is no number.
         */
        NetworkService(const std::string& path, std::map<std::string, DBus::Data>& properties);

        std::string sPath;       ///< object path
        std::string sInterface;  ///< Ethernet.Interface; empty without Ethernet
        std::string sMacAddress; ///< Ethernet.Address; empty without Ethernet
        std::string sName;       ///< Name; empty for a hidden network
        std::string sType;       ///< Type: "wifi", "ethernet", ...
        std::string sState;      ///< State: "idle", "ready", "online", ...
        std::string sIPv4Address;
        std::string sIPv4Netmask;
        std::string sIPv4Gateway;
        std::string sIPv4Method; ///< IPv4.Method: "dhcp", "manual", ...; empty without IPv4
        std::vector<std::string> vecNameservers;
        std::vector<std::string> vecSecurity; ///< Security: "psk", "wps", ...
        std::uint32_t nStrength;              ///< Strength in percent; 255 when ConnMan gives none
    };

    /** A ConnMan technology: the class of WiFi or Ethernet devices. */
    struct NetworkTechnology {
        /** As for `NetworkService`; Name, Type, Powered and Connected are all required. */
        NetworkTechnology(const std::string& path, std::map<std::string, DBus::Data>& properties);

        std::string sPath; ///< object path
        std::string sName;
        std::string sType; ///< "wifi", "ethernet", ...
        bool bPowered;
        bool bConnected;
    };

    /** One field that ConnMan's agent call "RequestInput" asks for. */
    struct AgentRequest {
        std::string sType;                      ///< Type: "psk", "wpspin", ...
        std::string sRequirement;               ///< Requirement: "mandatory", "alternate", ...
        std::vector<std::string> vecAlternates; ///< Alternates: fields that can stand in for it
    };

    /** Bits of the word that a networks-changed callback receives: 2, 4, 5 or 8. */
    enum NetworkChangedFlags : unsigned int {
        None = 0,
        ServiceStateChanged = 1, ///< services came or went, or one changed its state
        TechnologiesChanged = 2, ///< the technology list was replaced; always alone
        ServicesUpdated = 4,     ///< the service list was replaced
        StrengthChanged = 8,     ///< a service's strength changed, nothing else; always alone
    };

    /** Bits of what `SetNetworkProperties` is to send. */
    enum NetworkPropertyFlags : unsigned int {
        Connect = 0x01,     ///< ignored beside Disconnect
        Disconnect = 0x02,  ///< forgets the network unless it is an Ethernet link
        IPv4Dhcp = 0x04,    ///< by DHCP
        IPv4Manual = 0x08,  ///< the record's address, netmask, gateway; ignored beside IPv4Dhcp
        Nameservers = 0x10, ///< the record's name servers
    };

    using ChangedFunction = std::function<void(unsigned int)>;
    using AgentFunction = std::function<std::map<std::string, std::string>(
        const std::string&, const std::map<std::string, AgentRequest>&)>;

    /**
     * Subscribes to ConnMan's signals, registers the agent and asks for both lists; these fill in
     * once the connection is dispatched. Waits for ConnMan's answer to the agent's registration, 25
     * s at most; a failure of anything is silent. To be built before the dispatch thread runs. The
     * connection must outlive the client and its dispatching.
     */
    explicit ConnMan(DBus::Connection& connection);

    /**
     * Withdraws nothing from the bus and waits for nothing. A handler that is running on the
     * dispatch thread keeps what it needs until it returns; one that starts later does nothing.
     */
    ~ConnMan();

    ConnMan(const ConnMan&) = delete;
    ConnMan& operator=(const ConnMan&) = delete;

    /**
     * Adds a callback for the words that share a bit with `mask`; it is never removed. Callbacks
     * run on the dispatch thread, in the order of registration. For ServicesUpdated and
     * TechnologiesChanged no lock is held. For StrengthChanged `mtxLists` is: such a callback must
     * not call `GetNetworks` or `GetTechnologies`. An empty `fn` makes the handler throw
     * std::bad_function_call when it is reached. Any thread; takes no lock.
     */
    void SetOnNetworksChanged(const ChangedFunction& fn, unsigned int mask);

    /**
     * Sets the callback that answers ConnMan's requests: it receives the service's object path and
     * the requested fields, and returns a text for each field it knows. It runs on the dispatch
     * thread without a lock; meanwhile nothing else is dispatched. With an empty `fn` requests are
     * left unanswered. Any thread; takes no lock.
     */
    void SetOnAgentRequest(const AgentFunction& fn);

    /** A copy of the current list, in ConnMan's order. Any thread; takes `mtxLists`. */
    std::vector<NetworkService> GetNetworks() const;
    std::vector<NetworkTechnology> GetTechnologies() const;

    /**
     * Commands to ConnMan: sent one way, without waiting and without learning of their success. The
     * records' values go out unchecked, but for what libdbus cannot carry: in texts, bytes that are
     * no UTF-8 go out as U+FFFD; a path that is none, or what is too large, sends nothing. Any
     * thread; they take none of the client's locks.
     */
    void ScanTechnology(const NetworkTechnology& technology);
    void SetTechnologyPower(const NetworkTechnology& technology, bool on);

    /**
     * Sends what `flags` (bits of NetworkPropertyFlags) select, in this order: address, name
     * servers, then "Connect", or "Disconnect" ("Remove" unless the type is "ethernet").
     */
    void SetNetworkProperties(const NetworkService& service, unsigned int flags);

    class Impl;

private:
    // Lets go of the state when the client is destroyed; a handler that is running then still holds
    // it, and what it calls finds it by the plain pointer, which destruction leaves as it is.
    std::shared_ptr<Impl> pOwner;
    Impl* pImpl;
};

/** The dispatch thread and the client on its connection; destroyed in the reverse order. */
struct ConnManThread {
    DBus::Thread thread;
    ConnMan connMan{thread.GetDbusConnection()};
};

/**
 * The one client of the process. Built when the library is loaded, destroyed at process exit.
 * Dispatching begins with `thread.RunIfNotRunning()`.
 *
 * A callback that is running while the process exits may go on calling the client until it returns:
 * what the calls need is kept alive for it, and the thread is joined after the client is gone.
 */
extern ConnManThread globalConnManThread;

} // namespace Tovra
