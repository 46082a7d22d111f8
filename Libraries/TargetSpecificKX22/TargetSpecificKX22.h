#pragma once

#include "Common/ConnMan.h"
#include "host/DeviceConfig.h"
#include "host/ITargetSpecific.h"

namespace Tovra
{

/**
 * The plug-in: reads and applies the host's network configuration through the ConnMan client.
 *
 * It has no state of its own beside the reference to the host's configuration. Lock order: the
 * host's network lock, then the client's list lock. Nothing here waits for the bus, so a host
 * thread that holds the network lock never waits for the dispatch thread.
 */
class TargetSpecificKX22 final : public ITargetSpecific
{
public:
    /**
     * Starts the dispatch thread and registers both callbacks with the client. `deviceConfig` is
     * the host's and outlives this object.
     */
    explicit TargetSpecificKX22(DeviceConfig& deviceConfig);

    int TargetSpecificLoad() override;
    int TargetSpecificSetNetworkConfiguration() override;
    int TargetSpecificGetNetworkConfiguration() override;

    /**
     * Passes a change of services or technologies to the host's observer, then calls
     * `RefreshIpSettings`; does neither without an observer. Dispatch thread; takes no lock.
     */
    void OnNetworksChanged(unsigned flags);

    /**
     * Answers ConnMan's question for a passphrase from the host's record of the network; each
     * credential serves once. Empty for any other question and for an unknown network.
     * `sUniqueId`: the service's object path. Dispatch thread; waits for the network lock.
     */
    std::map<std::string, std::string>
    OnAgentRequest(const std::string& sUniqueId,
                   const std::map<std::string, ConnMan::AgentRequest>& request);

private:
    bool ApplyTechnologies();
    void ApplyServices();
    void TakeAnswers(const std::string& sUniqueId, bool bWpsOffered,
                     std::map<std::string, std::string>& mapAnswer);

    DeviceConfig& config;
};

} // namespace Tovra
