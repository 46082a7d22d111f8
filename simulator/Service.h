#pragma once

#include "simulator/IpConfiguration.h"
#include "simulator/Scenario.h"

#include <optional>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

/** A service as the simulated ConnMan knows it. */
struct Service {
    explicit Service(Network settings);

    /** The placeholder for networks in the air that do not tell their name. */
    bool IsHidden() const { return network.sType == "wifi" && !network.sName; }
    bool IsWifi() const { return network.sType == "wifi"; }
    bool IsConnected() const;
    bool IsConnecting() const;

    /** The last element of the path: the name of its settings directory. */
    std::string GetIdentifier() const;

    Network network;
    std::string sPath;
    std::string sState;
    std::string sError; ///< stays until the next success, disconnect or input, as in ConnMan
    bool bFavorite;
    bool bAutoConnect;
    bool bIgnored = false;      ///< disconnected on request: does not connect by itself
    bool bButtonPushed = false; ///< of WPS: for an attempt that waits, or for the next one

    std::optional<std::string> sPassphrase; ///< the one that ConnMan knows
    bool bUseWps = false;
    std::string sWpsPin;

    IpConfiguration ipv4;
    bool bAddressed = true;                  ///< false: connected, but the address has not come yet
    std::vector<std::string> vecNameservers; ///< configured ones, instead of the network's
    std::vector<std::string> vecTimeservers;
    std::vector<std::string> vecDomains;
    Json proxy = Json::object(); ///< the JSON of the configured a{sv}
    Json ipv6;
    bool bMdns = false;
};

/** All that "GetServices" tells of the service: 22 properties in 1.29, 24 in 1.41. */
Properties GetProperties(const Service& service, Version version);

} // namespace Tovra::Simulator
