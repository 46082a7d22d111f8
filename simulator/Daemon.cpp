#include "simulator/Daemon.h"
#include "simulator/DaemonImpl.h"

namespace Tovra::Simulator
{

Daemon::Daemon(const Scenario& scenario, const std::string& sBusAddress)
    : pImpl(std::make_unique<Impl>(scenario, sBusAddress))
{
}

Daemon::~Daemon() = default;

std::string Daemon::AddService(const Network& network)
{
    return pImpl->Run([&] { return pImpl->simulation.AddService(network); });
}

void Daemon::PushButton(const std::string& sPath)
{
    pImpl->Run([&] { pImpl->simulation.PushButton(sPath); });
}

void Daemon::RemoveService(const std::string& sPath)
{
    pImpl->Run([&] { pImpl->simulation.RemoveService(sPath); });
}

void Daemon::SetState(const std::string& sPath, const std::string& sState)
{
    pImpl->Run([&] { pImpl->simulation.SetState(sPath, sState); });
}

void Daemon::ChangeNetwork(const std::string& sPath, const std::function<void(Network&)>& fnChange)
{
    pImpl->Run([&] { pImpl->simulation.ChangeNetwork(sPath, fnChange); });
}

void Daemon::SetServiceProperty(const std::string& sPath, const std::string& sName,
                                const std::optional<Value>& value)
{
    pImpl->Run([&] { pImpl->simulation.SetServiceProperty(sPath, sName, value); });
}

std::string Daemon::AddTechnology(const TechnologySettings& settings)
{
    return pImpl->Run([&] { return pImpl->simulation.AddTechnology(settings); });
}

void Daemon::RemoveTechnology(const std::string& sPath)
{
    pImpl->Run([&] { pImpl->simulation.RemoveTechnology(sPath); });
}

void Daemon::SetTechnologyProperty(const std::string& sPath, const std::string& sName,
                                   const std::optional<Value>& value)
{
    pImpl->Run([&] { pImpl->simulation.SetTechnologyProperty(sPath, sName, value); });
}

std::vector<std::string> Daemon::GetServicePaths() const
{
    return pImpl->Run([&] { return pImpl->simulation.GetServicePaths(); });
}

Json Daemon::GetServiceProperties(const std::string& sPath) const
{
    return pImpl->Run([&] {
        const Simulation& simulation = pImpl->simulation;
        return MakeDictionary(
            GetProperties(simulation.GetService(sPath), simulation.GetWorld().version));
    });
}

std::string Daemon::GetState(const std::string& sPath) const
{
    return pImpl->Run([&] { return pImpl->simulation.GetService(sPath).sState; });
}

std::size_t Daemon::GetAgentCount() const
{
    return pImpl->Run([&] { return pImpl->simulation.GetAgents().GetAll().size(); });
}

std::string Daemon::GetUniqueName() const
{
    return pImpl->Run([&] { return pImpl->bus.GetUniqueName(); });
}

std::vector<Call> Daemon::GetCalls() const
{
    return pImpl->log.GetAll();
}

std::vector<Call> Daemon::GetCalls(const std::string& sMember) const
{
    std::vector<Call> vecCalls;
    for (Call& call : pImpl->log.GetAll())
        if (call.sMember == sMember)
            vecCalls.push_back(std::move(call));
    return vecCalls;
}

void Daemon::ClearCalls()
{
    pImpl->log.Clear();
}

std::optional<Call> Daemon::WaitForCall(const std::function<bool(const Call&)>& predicate,
                                        std::chrono::milliseconds limit) const
{
    return pImpl->log.Wait(predicate, limit);
}

std::optional<Call> Daemon::WaitForCall(const std::string& sMember,
                                        std::chrono::milliseconds limit) const
{
    return WaitForCall([&](const Call& call) { return call.sMember == sMember; }, limit);
}

void Daemon::SetObserver(std::function<void(const Call&)> fnObserver)
{
    pImpl->Run([&] { pImpl->fnObserver = std::move(fnObserver); });
}

void Daemon::OnCall(const CallPattern& pattern, const Behaviour& behaviour)
{
    CheckArguments(behaviour.reply.arguments, "the reply");
    pImpl->Run([&] { pImpl->rules.Add({pattern, behaviour}); });
}

void Daemon::ClearBehaviours()
{
    pImpl->Run([&] { pImpl->rules.Clear(); });
}

std::size_t Daemon::GetHeldCount() const
{
    return pImpl->Run([&] { return pImpl->vecHeld.size(); });
}

void Daemon::ReleaseReplies(bool bNewestFirst)
{
    pImpl->Run([&] { pImpl->Release(bNewestFirst); });
}

void Daemon::EmitRaw(const Signal& signal)
{
    EmitStorm(signal, 1);
}

void Daemon::EmitStorm(const Signal& signal, unsigned nCount, std::chrono::milliseconds interval)
{
    CheckArguments(signal.arguments, "the signal");
    pImpl->Run([&] { pImpl->Storm(signal, nCount, interval); });
}

Reply Daemon::CallRaw(const OutgoingCall& call, std::chrono::milliseconds timeout)
{
    CheckArguments(call.arguments, "the call");
    return pImpl->CallOut(call, timeout);
}

void Daemon::Leave()
{
    pImpl->Run([&] { pImpl->Leave(); });
}

void Daemon::Return()
{
    pImpl->Run([&] { pImpl->Return(); });
}

void Daemon::Restart()
{
    pImpl->Run([&] {
        pImpl->Leave();
        pImpl->Return();
    });
}

void Daemon::Stop()
{
    pImpl->Stop();
}

} // namespace Tovra::Simulator
