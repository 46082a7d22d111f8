#include "Common/ConnManImpl.h"
#include "Common/ConnManLog.h"

namespace Tovra
{

using DBus::Data;

void ConnMan::Impl::SetOnNetworksChanged(const ChangedFunction& fn, unsigned int mask)
{
    vecCallbacks.Update([&](std::vector<ChangedCallback>& vecNext) {
        vecNext.push_back({mask, fn});
    });
}

void ConnMan::Impl::SetOnAgentRequest(const AgentFunction& fn)
{
    fnAgentRequest.Update([&](AgentFunction& fnNext) { fnNext = fn; });
}

std::vector<ConnMan::NetworkService> ConnMan::Impl::GetNetworks() const
{
    const std::unique_lock<std::mutex> lock(mtxLists);
    return vecServices;
}

std::vector<ConnMan::NetworkTechnology> ConnMan::Impl::GetTechnologies() const
{
    const std::unique_lock<std::mutex> lock(mtxLists);
    return vecTechnologies;
}

void ConnMan::Impl::UpdateNetworks(const Data& services, unsigned int flags)
{
    std::vector<NetworkService> vecNew;
    if (services.GetType() != Data::Array) {
        SwapNetworks(vecNew, flags);
        return;
    }
    vecNew =
        Lists::ReadNetworks(services, mapServicesByPath, [] { LogBadVersion("UpdateNetworks"); });

    bool bChanged = false;
    {
        const std::unique_lock<std::mutex> lock(mtxLists);
        const NetworkService* pOld = Lists::FindConnected(vecServices);
        const NetworkService* pNew = Lists::FindConnected(vecNew);
        if (pOld && pNew)
            LogConnMan(QelLogDebug, "operator()", 338, "Check for network change, old: '",
                       pOld->sIPv4Address, "' (", pOld->sIPv4Method, "), new: '",
                       pNew->sIPv4Address, "' (", pNew->sIPv4Method, ")");
        bChanged = Lists::IsConnectionChanged(pOld, pNew);
    }
    SwapNetworks(vecNew, flags);
    if (bChanged) {
        UpdateNetworkStateIpc();
        DeleteOldWifiSettings();
    }
}

void ConnMan::Impl::SwapNetworks(std::vector<NetworkService>& list, unsigned int flags)
{
    Lists::ServiceIndex mapFresh = Lists::MakeIndex(list);
    {
        const std::unique_lock<std::mutex> lock(mtxLists);
        vecServices.swap(list);
    }
    // Until here the index points into the previous list, which the caller keeps.
    mapServicesByPath.swap(mapFresh);
    Notify(flags | ServicesUpdated);
}

void ConnMan::Impl::UpdateTechnologies(const Data& technologies)
{
    std::vector<NetworkTechnology> vecNew;
    if (technologies.GetType() == Data::Array)
        vecNew = Lists::ReadTechnologies(technologies, [] { LogBadVersion("UpdateTechnologies"); });
    SwapTechnologies(vecNew);
}

void ConnMan::Impl::SwapTechnologies(std::vector<NetworkTechnology>& list)
{
    {
        const std::unique_lock<std::mutex> lock(mtxLists);
        vecTechnologies.swap(list);
    }
    Notify(TechnologiesChanged);
}

void ConnMan::Impl::ChangeStrength(const std::string& path, std::uint32_t nStrength)
{
    const std::unique_lock<std::mutex> lock(mtxLists);
    const auto found = mapServicesByPath.find(path);
    if (found != mapServicesByPath.end())
        found->second->nStrength = nStrength;
    Notify(StrengthChanged);
}

void ConnMan::Impl::Notify(unsigned int nWord) const
{
    for (const ChangedCallback& callback : vecCallbacks.Get()) {
        if (callback.nMask & nWord)
            callback.fn(nWord);
    }
}

} // namespace Tovra
