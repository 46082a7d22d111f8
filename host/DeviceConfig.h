#pragma once

/**
 * The host's configuration object, from libcorvane.so: what the plug-in reads and writes of it.
 */

#include <boost/thread/shared_mutex.hpp>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Tovra
{

/**
 * The host's object that is told of network changes. It stays until the process has ended: it may
 * be told of a change before the plug-in's entry function has returned, and after main() has.
 */
class INetworkObserver
{
public:
    /**
     * `flags`: 2, the technologies have changed; 4, the networks have; 5, the networks have, and
     * one came, went or changed its state. Called on the plug-in's dispatch thread, without a lock,
     * and nothing else happens there meanwhile; it may call the plug-in's operations. What it
     * throws is logged and dropped, and with it all that was to follow for this change.
     */
    virtual void NetworksChanged(unsigned flags) = 0;

protected:
    ~INetworkObserver() = default;
};

class [[gnu::visibility("default")]] DeviceConfig
{
public:
    /** One technology: what the network daemon reports, and what the host wants of it. */
    struct NetworkTechnology {
        std::string sName;
        bool bPowered = false; ///< reported; wanted
        bool bConnected = false;
        bool bScan = false; ///< wanted: one scan; cleared when it is started
    };

    /** One network: what the network daemon reports, and what the host wants of it. */
    struct NetworkService {
        std::string sType; ///< "wifi", "ethernet", ...
        std::string sName;
        std::string sInterface;
        std::string sMacAddress;
        /** Reported; wanted. Disconnecting a WiFi network forgets it, with its passphrase. */
        bool bConnected = false;

        /** A connection failed; stays until the host clears it or the network goes. */
        bool bFailed = false;
        std::string sSecurity;      ///< the network's security methods, one blank between them
        std::int32_t nStrength = 0; ///< percent; 255: unknown
        bool bDhcp = false;         ///< reported; wanted: it clears the name servers set before
        std::string sIPv4Address;   ///< reported; wanted when not by DHCP
        std::string sIPv4Netmask;   ///< reported; wanted when not by DHCP
        std::string sIPv4Gateway;   ///< reported; wanted when not by DHCP
        std::vector<std::string> vecNameservers; ///< reported; wanted when not by DHCP
        bool bUseWps = false;    ///< wanted: answer the next question by WPS; cleared when used
        std::string sPassphrase; ///< the answer to the next question; cleared when handed over
    };

    /**
     * Tells the host that the device's addresses may have changed. Called on the plug-in's dispatch
     * thread, after the observer, as that is. Does its own locking.
     */
    void RefreshIpSettings();

    /**
     * Guards the two maps: the host holds it shared to read and exclusively to edit them. The
     * plug-in holds it exclusively for the whole of each operation that touches them.
     */
    boost::shared_mutex mtxNetworkConfig;

    std::map<std::string, NetworkTechnology> mapNetworkTechnologies; ///< by type
    std::map<std::string, NetworkService> mapNetworkServices;        ///< by network key

    /**
     * The object that owns the observer and receives `RefreshIpSettings`; never null. This and the
     * observer are read without a lock: the host sets them before it calls the entry function.
     */
    DeviceConfig* pMainConfig = this;

    /** Of the main object; may be null: then a change is told to nobody. */
    INetworkObserver* pNetworkObserver = nullptr;
};

} // namespace Tovra
