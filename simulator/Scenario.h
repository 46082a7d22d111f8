#pragma once

#include "simulator/Behaviour.h"
#include "simulator/Value.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

// A version's number has a dot. NOLINTNEXTLINE(readability-identifier-naming)
enum class Version { V1_29, V1_41 };

/** How long the simulated daemon takes for what. */
struct Timing {
    using Duration = std::chrono::milliseconds;

    Duration servicesChanged{100}; ///< by which "ServicesChanged" is delayed, to gather changes
    Duration association{300};
    Duration configuration{500};
    Duration address{0};  ///< by which the address comes after the state ready
    Duration online{400}; ///< from ready to online
    Duration disconnect{100};
    Duration scan{1000};
    Duration power{200};
    Duration connectTimeout{120000};
    Duration agentTimeout{120000};

    /** For tests: everything within a few milliseconds, only the time-outs as they are. */
    static Timing Quick();
};

/** Values that take the place of the usual ones; without a value the property is left out. */
using Overrides = std::map<std::string, std::optional<Value>>;

struct TechnologySettings {
    std::string sType = "wifi";
    std::optional<std::string> sName; ///< absent: ConnMan's name for the type
    bool bPowered = true;
    bool bTethering = false;
    Overrides overrides;
};

enum class Appearance {
    AtStart,
    AfterScan,
    WhenNamed, ///< a hidden access point: listed once somebody has asked for it by name
};

/** A cable, or a network in the air. */
struct Network {
    std::string sPath; ///< empty: made from the type, the hardware address and the name
    std::string sType = "wifi";
    std::optional<std::string> sName; ///< absent: hidden, and asks for its name when connected
    std::vector<std::string> vecSecurity = {"psk"}; ///< of a cable it is left out
    unsigned nStrength = 60;                        ///< 0: the property is absent
    std::string sState = "idle";                    ///< at the start
    std::string sError;                             ///< at the start
    bool bSaved = false;      ///< known from earlier: a favourite, whose passphrase is remembered
    bool bAutoConnect = true; ///< of a favourite
    bool bImmutable = false;
    Appearance appearance = Appearance::AtStart;

    std::string sPassphrase;                     ///< the one that the access point accepts
    std::optional<std::string> sSavedPassphrase; ///< absent: of a saved network, the right one
    std::string sWpsPin;                         ///< accepted beside the push button, if not empty
    bool bWaitsForButton = false; ///< WPS without a PIN goes on only when its button is pushed
    std::string sFailure;         ///< every attempt ends with this error, for example "dhcp-failed"
    bool bOnline = true;          ///< whether it gets from ready to online

    std::string sInterface = "wlan0";
    std::string sMacAddress = "02:00:00:00:00:00"; ///< of the device's own interface
    unsigned nMtu = 1500;
    std::string sMethod = "dhcp"; ///< of "IPv4.Configuration" at the start
    std::string sAddress = "192.168.1.20";
    std::string sNetmask = "255.255.255.0";
    std::string sGateway = "192.168.1.1";
    std::vector<std::string> vecNameservers = {"192.168.1.1"};
    std::vector<std::string> vecDomains;

    Overrides overrides;
};

struct Scenario {
    Version version = Version::V1_41;
    Timing timing;
    std::string sStorage; ///< directory for saved services' settings; empty: none are kept
    bool bOfflineMode = false;

    /** Announces the order after each change of state even if it is the same, as ConnMan does. */
    bool bAnnounceEverySort = false;

    /** A network that lets nobody in goes from "failure" to "idle" at once, as ConnMan's do. */
    bool bFailurePasses = false;

    /**
     * At its start, and when it is back on the bus, it tells of all there is, and knows of services
     * what is stored, as ConnMan does; else it goes on as it was left.
     */
    bool bFreshStarts = false;

    /** Keeps services in ConnMan's order; else in the order in which they were added. */
    bool bSorted = true;

    /** Connects favourites by itself: as soon as they are there, and after disconnects. */
    bool bAutoConnects = false;

    std::vector<TechnologySettings> vecTechnologies;
    std::vector<Network> vecServices;
    std::vector<Rule> vecBehaviours;
};

/** Throw Problem with one line that names the field and what would be right. */
Scenario ReadScenario(const Json& scenario);
Scenario LoadScenario(const std::string& sFile);

/** Reads over what `network` holds already. */
Network ReadNetwork(const Json& fields, const std::string& sWhere, Network network = {});
TechnologySettings ReadTechnology(const Json& fields, const std::string& sWhere);
Timing ReadTiming(const Json& fields, const std::string& sWhere, Timing timing = {});

/** The last element of the path that ConnMan gives to the network's service. */
std::string MakeServiceIdentifier(const Network& network);

} // namespace Tovra::Simulator
