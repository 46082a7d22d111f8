#pragma once

#include "Common/ConnMan.h"
#include "host/DeviceConfig.h"

/**
 * Between the host's records and ConnMan's: what is reported, what is to be changed, what is
 * answered. Plain functions: no bus, no lock, no log, any thread.
 */
namespace Tovra::Translation
{

/** The host's map of technologies; of two with the same type the later one stands. */
std::map<std::string, DeviceConfig::NetworkTechnology>
ReportTechnologies(const std::vector<ConnMan::NetworkTechnology>& vecTechnologies);

/** The host's record of a network; `bFailedBefore`: bFailed of the record that it replaces. */
DeviceConfig::NetworkService ReportService(const ConnMan::NetworkService& service,
                                           bool bFailedBefore);

struct TechnologyChange {
    bool bSetPower; ///< to what is wanted
    bool bScan;
};

TechnologyChange Compare(const ConnMan::NetworkTechnology& current,
                         const DeviceConfig::NetworkTechnology& wanted);

struct ServiceChange {
    ConnMan::NetworkService service; ///< the current record, with the wanted values to be sent
    unsigned nFlags;                 ///< bits of ConnMan::NetworkPropertyFlags
};

ServiceChange Compare(const ConnMan::NetworkService& current,
                      const DeviceConfig::NetworkService& wanted);

/**
 * Whether ConnMan's question for a passphrase is answered by WPS: when it is wanted and offered.
 */
bool AnswersByWps(const DeviceConfig::NetworkService& wanted, bool bWpsOffered);

/**
 * Puts the answer into `mapAnswer`: the name, and either the wish for WPS or the passphrase, which
 * may be empty. The credential is taken out of `wanted`: it serves once.
 */
void TakeAnswer(DeviceConfig::NetworkService& wanted, bool bByWps,
                std::map<std::string, std::string>& mapAnswer);

} // namespace Tovra::Translation
