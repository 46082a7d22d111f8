#include "Libraries/TargetSpecificKX22/TargetSpecificKX22.h"

#include "Common/Log.h"
#include "Include/Wipe.h"
#include "Libraries/TargetSpecificKX22/NetworkKey.h"
#include "Libraries/TargetSpecificKX22/Translation.h"

#include <boost/thread/lock_types.hpp>

namespace Tovra
{

namespace
{

using NetworkLock = boost::unique_lock<boost::shared_mutex>;

template <class... Parts> void Log(const char* pFunction, int nLine, const Parts&... parts)
{
    WriteLog(QelLogInfo, {pFunction, "Libraries/TargetSpecificKX22/TargetSpecificKX22", nLine},
             parts...);
}

ConnMan& GetClient()
{
    return globalConnManThread.connMan;
}

} // namespace

TargetSpecificKX22::TargetSpecificKX22(DeviceConfig& deviceConfig) : config(deviceConfig)
{
    globalConnManThread.thread.RunIfNotRunning();
    GetClient().SetOnNetworksChanged([this](unsigned flags) { OnNetworksChanged(flags); },
                                     0xFFFFFFFF);
    GetClient().SetOnAgentRequest(
        [this](const std::string& sUniqueId,
               const std::map<std::string, ConnMan::AgentRequest>& request) {
            return OnAgentRequest(sUniqueId, request);
        });
}

int TargetSpecificKX22::TargetSpecificLoad()
{
    return 0;
}

int TargetSpecificKX22::TargetSpecificGetNetworkConfiguration()
{
    const NetworkLock lock(config.mtxNetworkConfig);
    auto mapTechnologies = Translation::ReportTechnologies(GetClient().GetTechnologies());

    std::map<std::string, DeviceConfig::NetworkService> mapServices;
    for (const ConnMan::NetworkService& service : GetClient().GetNetworks()) {
        if (service.sName.empty()) {
            Log("TargetSpecificGetNetworkConfiguration", 112,
                "I don't know how to deal with hidden network ", service.sPath);
            continue;
        }
        const std::string sKey = MakeNetworkKey(service.sName);
        const auto replaced = config.mapNetworkServices.find(sKey);
        const bool bFailedBefore =
            replaced != config.mapNetworkServices.end() && replaced->second.bFailed;
        mapServices[sKey] = Translation::ReportService(service, bFailedBefore);
    }

    config.mapNetworkTechnologies.swap(mapTechnologies);
    config.mapNetworkServices.swap(mapServices);
    for (auto& [sKey, service] : mapServices)
        DBus::Wipe(service.sPassphrase);
    return 1;
}

int TargetSpecificKX22::TargetSpecificSetNetworkConfiguration()
{
    const NetworkLock lock(config.mtxNetworkConfig);
    if (ApplyTechnologies())
        ApplyServices();
    return 1;
}

// False once a scan was started: the rest is left for a later call.
bool TargetSpecificKX22::ApplyTechnologies()
{
    for (const ConnMan::NetworkTechnology& technology : GetClient().GetTechnologies()) {
        const auto found = config.mapNetworkTechnologies.find(technology.sType);
        if (found == config.mapNetworkTechnologies.end())
            continue;
        DeviceConfig::NetworkTechnology& wanted = found->second;
        const Translation::TechnologyChange change = Translation::Compare(technology, wanted);
        if (change.bSetPower)
            GetClient().SetTechnologyPower(technology, wanted.bPowered);
        if (change.bScan) {
            wanted.bScan = false;
            Log("TargetSpecificSetNetworkConfiguration", 177, "Starting scan for technology ",
                technology.sName);
            GetClient().ScanTechnology(technology);
            return false;
        }
    }
    return true;
}

void TargetSpecificKX22::ApplyServices()
{
    for (const ConnMan::NetworkService& service : GetClient().GetNetworks()) {
        const std::string sKey = MakeNetworkKey(service.sName);
        const auto found = config.mapNetworkServices.find(sKey);
        if (found == config.mapNetworkServices.end())
            continue;
        const Translation::ServiceChange change = Translation::Compare(service, found->second);
        if (change.nFlags == 0)
            continue;
        Log("TargetSpecificSetNetworkConfiguration", 234,
            "Updating network configuration for the network name ", sKey,
            " with flags: ", change.nFlags);
        GetClient().SetNetworkProperties(change.service, change.nFlags);
    }
}

void TargetSpecificKX22::OnNetworksChanged(unsigned flags)
{
    constexpr unsigned nRelevant =
        ConnMan::ServiceStateChanged | ConnMan::TechnologiesChanged | ConnMan::ServicesUpdated;
    if (!(flags & nRelevant))
        return;
    DeviceConfig& mainConfig = *config.pMainConfig;
    INetworkObserver* const pObserver = mainConfig.pNetworkObserver;
    if (!pObserver)
        return; // and no refresh: the host that does not observe does not refresh either
    pObserver->NetworksChanged(flags);
    mainConfig.RefreshIpSettings();
}

std::map<std::string, std::string>
TargetSpecificKX22::OnAgentRequest(const std::string& sUniqueId,
                                   const std::map<std::string, ConnMan::AgentRequest>& request)
{
    Log("OnAgentRequest", 262,
        "TargetSpecificKX22::OnAgentRequest() called for sUniqueId=", sUniqueId);
    const NetworkLock lock(config.mtxNetworkConfig);
    std::map<std::string, std::string> mapAnswer;
    if (request.count("Passphrase") == 0)
        return mapAnswer;
    try {
        TakeAnswers(sUniqueId, request.count("WPS") != 0, mapAnswer);
    } catch (...) {
        DBus::Wipe(mapAnswer);
        throw;
    }
    return mapAnswer;
}

void TargetSpecificKX22::TakeAnswers(const std::string& sUniqueId, bool bWpsOffered,
                                     std::map<std::string, std::string>& mapAnswer)
{
    const auto log = [](int nLine, const auto&... parts) {
        Log("OnAgentRequest", nLine, parts...);
    };
    const std::vector<ConnMan::NetworkService> vecServices = GetClient().GetNetworks();
    log(271, "Asking for Passphrase for ", sUniqueId);
    for (const ConnMan::NetworkService& service : vecServices) {
        if (service.sPath != sUniqueId)
            continue;
        const std::string sKey = MakeNetworkKey(service.sName);
        log(278, "Network name for ", sUniqueId, " is ", sKey);
        const auto found = config.mapNetworkServices.find(sKey);
        if (found == config.mapNetworkServices.end())
            continue;
        log(283, "Configuration for ", sKey, " exists.");
        const bool bByWps = Translation::AnswersByWps(found->second, bWpsOffered);
        if (bByWps)
            log(289, "Connecting to ", sKey, " using WPS.");
        else
            log(295, "Connecting to ", sKey, " using passphrase.");
        Translation::TakeAnswer(found->second, bByWps, mapAnswer);
    }
}

} // namespace Tovra
