#include "Common/ConnMan.h"

#include "Common/ConnManImpl.h"

namespace Tovra
{

ConnMan::ConnMan(DBus::Connection& connection)
    : pOwner(std::make_shared<Impl>(connection)),
      pImpl(pOwner.get())
{
    pImpl->ConnectSignals();
    pImpl->Startup();
}

ConnMan::~ConnMan() = default;

void ConnMan::SetOnNetworksChanged(const ChangedFunction& fn, unsigned int mask)
{
    pImpl->SetOnNetworksChanged(fn, mask);
}

void ConnMan::SetOnAgentRequest(const AgentFunction& fn)
{
    pImpl->SetOnAgentRequest(fn);
}

std::vector<ConnMan::NetworkService> ConnMan::GetNetworks() const
{
    return pImpl->GetNetworks();
}

std::vector<ConnMan::NetworkTechnology> ConnMan::GetTechnologies() const
{
    return pImpl->GetTechnologies();
}

void ConnMan::ScanTechnology(const NetworkTechnology& technology)
{
    pImpl->ScanTechnology(technology);
}

void ConnMan::SetTechnologyPower(const NetworkTechnology& technology, bool on)
{
    pImpl->SetTechnologyPower(technology, on);
}

void ConnMan::SetNetworkProperties(const NetworkService& service, unsigned int flags)
{
    pImpl->SetNetworkProperties(service, flags);
}

} // namespace Tovra
