#include "simulator/Connections.h"
#include "simulator/Errors.h"

#include <algorithm>

namespace Tovra::Simulator
{

Connections::Connections(World& described, Announcer& told, Outlet& used, const Agents& registered,
                         const Storage& kept)
    : world(described),
      announcer(told),
      outlet(used),
      agents(registered),
      storage(kept),
      questions(used)
{
}

void Connections::Connect(const ServicePointer& pService, const std::string& sSender,
                          const Answer& fnAnswer)
{
    if (mapAttempts.count(pService->sPath) > 0 || pService->IsConnecting())
        return fnAnswer(Errors::InProgress());
    if (pService->IsConnected())
        return fnAnswer(Errors::AlreadyConnected());
    LeaveOthers(*pService);
    pService->bIgnored = false;
    Attempt attempt;
    attempt.fnAnswer = fnAnswer;
    attempt.sSender = sSender;
    mapAttempts[pService->sPath] = attempt;
    Try(pService);
}

Reply Connections::Disconnect(const ServicePointer& pService)
{
    pService->bIgnored = true;
    CancelAgent(pService);
    if (!pService->IsConnected() && !pService->IsConnecting())
        return Errors::NotConnected();
    Leave(pService);
    return MakeDone();
}

Reply Connections::Remove(const ServicePointer& pService)
{
    if (pService->network.sType == "ethernet" || pService->network.bImmutable ||
        pService->IsHidden())
        return Errors::NotSupported();
    Disconnect(pService);
    announcer.Change(*pService, [&] {
        pService->sPassphrase.reset();
        pService->bUseWps = false;
        pService->sError.clear();
        pService->bFavorite = false;
        pService->bIgnored = false;
    });
    storage.Forget(*pService);
    return MakeDone();
}

void Connections::ClearError(const ServicePointer& pService)
{
    SetError(pService, "");
    if (pService->sState == "failure")
        SetState(pService, "idle");
    Finish(pService, Errors::InputOutput());
}

void Connections::Configure(const ServicePointer& pService, const IpConfiguration& configuration)
{
    const bool bConnected = pService->IsConnected();
    announcer.Change(*pService, [&] {
        pService->ipv4 = configuration;
        if (bConnected)
            pService->sState = "configuration";
    });
    if (bConnected)
        Step(pService, world.timing.configuration, &Connections::Configured);
}

void Connections::AutoConnect()
{
    if (!world.bAutoConnects)
        return;
    const std::vector<ServicePointer> vecServices = world.vecServices; // trying one changes these
    for (const ServicePointer& pService : vecServices)
        if (!pService->IsWifi() && MayConnectItself(*pService))
            TryByItself(pService);
    const auto isBusy = [this](const ServicePointer& pService) { return IsBusy(*pService); };
    if (std::any_of(vecServices.begin(), vecServices.end(), isBusy))
        return;
    for (const ServicePointer& pService : vecServices)
        if (MayConnectItself(*pService))
            return TryByItself(pService);
}

void Connections::PushButton(const ServicePointer& pService)
{
    pService->bButtonPushed = true;
    if (pService->sState == "association" && mapSteps.count(pService->sPath) == 0)
        Associated(pService);
}

void Connections::Force(const ServicePointer& pService, const std::string& sState)
{
    Abandon(pService);
    announcer.Change(*pService, [&] {
        pService->sState = sState;
        pService->bAddressed = true;
        pService->bFavorite = pService->bFavorite || pService->IsConnected();
    });
}

void Connections::Abandon(const ServicePointer& pService)
{
    CancelStep(pService->sPath);
    CancelAgent(pService);
    Finish(pService, Errors::OperationAborted());
}

void Connections::ForgetCallers()
{
    std::vector<std::string> vecAsked;
    for (auto& [sPath, attempt] : mapAttempts) {
        attempt.fnAnswer = nullptr;
        if (attempt.nTicket != 0)
            vecAsked.push_back(sPath);
    }
    for (const std::string& sPath : vecAsked)
        if (const ServicePointer pService = world.FindService(sPath))
            GiveUp(pService, MakeDone());
}

// One device, one connection: the others that use it are left.
void Connections::LeaveOthers(const Service& service)
{
    const std::vector<ServicePointer> vecServices = world.vecServices;
    for (const ServicePointer& pOther : vecServices)
        if (pOther.get() != &service && pOther->network.sType == service.network.sType &&
            pOther->network.sInterface == service.network.sInterface &&
            (pOther->IsConnected() || pOther->IsConnecting()))
            Leave(pOther);
}

void Connections::Try(const ServicePointer& pService)
{
    CancelStep(pService->sPath);
    if (pService->sState == "failure" || pService->sState == "disconnect")
        SetState(pService, "idle");
    if (!NeedsInput(*pService))
        return Walk(pService);
    if (mapAttempts[pService->sPath].bByUser)
        return Ask(pService);
    Finish(pService, std::nullopt);
}

void Connections::TryByItself(const ServicePointer& pService)
{
    mapAttempts[pService->sPath].bByUser = false;
    Try(pService);
}

bool Connections::IsBusy(const Service& service) const
{
    return service.IsConnected() || service.IsConnecting() || mapAttempts.count(service.sPath) > 0;
}

bool Connections::MayConnectItself(const Service& service) const
{
    return service.bFavorite && service.bAutoConnect && !service.bIgnored &&
           service.sState == "idle" && !IsBusy(service);
}

void Connections::Walk(const ServicePointer& pService)
{
    Attempt& attempt = mapAttempts[pService->sPath];
    if (!pService->IsWifi()) {
        // ConnMan answers at once for a cable, which is as good as connected.
        if (attempt.fnAnswer)
            std::exchange(attempt.fnAnswer, nullptr)(MakeDone());
        return Associated(pService);
    }
    if (attempt.nTimeout == 0)
        attempt.nTimeout =
            outlet.After(world.timing.connectTimeout, [this, pService] { TimedOut(pService); });
    SetState(pService, "association");
    Step(pService, world.timing.association, &Connections::Associated);
}

void Connections::Associated(const ServicePointer& pService)
{
    const std::string& sFailure = pService->network.sFailure;
    if (!sFailure.empty() && sFailure != "dhcp-failed")
        return Refuse(pService, sFailure);
    if (WaitsForButton(*pService))
        return;
    if (!IsAdmitted(*pService))
        return Refuse(pService, pService->bUseWps ? "connect-failed" : "invalid-key");
    SetState(pService, "configuration");
    Step(pService, world.timing.configuration, &Connections::Configured);
}

void Connections::Configured(const ServicePointer& pService)
{
    if (pService->network.sFailure == "dhcp-failed" && pService->ipv4.sMethod == "dhcp")
        return Fail(pService, "dhcp-failed");
    // Nothing to be configured with: so it stays.
    if (pService->ipv4.sMethod != "off")
        BecomeReady(pService);
}

void Connections::BecomeReady(const ServicePointer& pService)
{
    announcer.Change(*pService, [&] {
        pService->sState = "ready";
        pService->bAddressed = world.timing.address.count() == 0;
        pService->sError.clear();
        pService->bFavorite = true;
        if (pService->bUseWps)
            pService->sPassphrase = pService->network.sPassphrase;
        pService->bUseWps = false;
        pService->bButtonPushed = false;
    });
    storage.Save(*pService);
    Finish(pService, MakeDone());
    Step(pService, world.timing.address, &Connections::GetAddress);
}

void Connections::GetAddress(const ServicePointer& pService)
{
    announcer.Change(*pService, [&] { pService->bAddressed = true; });
    if (pService->network.bOnline)
        Step(pService, world.timing.online, &Connections::BecomeOnline);
}

void Connections::BecomeOnline(const ServicePointer& pService)
{
    SetState(pService, "online");
}

void Connections::Fail(const ServicePointer& pService, const std::string& sError)
{
    CancelStep(pService->sPath);
    SetError(pService, sError);
    SetState(pService, "failure");
    const auto attempt = mapAttempts.find(pService->sPath);
    if (attempt != mapAttempts.end() && attempt->second.bByUser)
        return Report(pService);
    Finish(pService, std::nullopt);
}

void Connections::Refuse(const ServicePointer& pService, const std::string& sError)
{
    Fail(pService, sError);
    if (world.bFailurePasses && pService->sState == "failure")
        SetState(pService, "idle");
}

void Connections::TimedOut(const ServicePointer& pService)
{
    CancelStep(pService->sPath);
    SetState(pService, "failure");
    mapAttempts[pService->sPath].nTimeout = 0;
    Finish(pService, Errors::OperationTimeout());
}

void Connections::Leave(const ServicePointer& pService)
{
    SetError(pService, "");
    SetState(pService, "disconnect");
    Finish(pService, Errors::OperationAborted());
    Step(pService, world.timing.disconnect, &Connections::BecomeIdle);
}

void Connections::BecomeIdle(const ServicePointer& pService)
{
    SetState(pService, "idle");
    AutoConnect();
}

void Connections::GiveUp(const ServicePointer& pService, const Reply& reply)
{
    SetState(pService, "idle");
    Finish(pService, reply);
}

void Connections::Finish(const ServicePointer& pService, const std::optional<Reply>& reply)
{
    const auto attempt = mapAttempts.find(pService->sPath);
    if (attempt == mapAttempts.end())
        return;
    outlet.Cancel(attempt->second.nTimeout);
    questions.Drop(attempt->second.nTicket);
    const Answer fnAnswer = attempt->second.fnAnswer;
    mapAttempts.erase(attempt);
    if (fnAnswer && reply)
        fnAnswer(*reply);
}

void Connections::SetState(const ServicePointer& pService, const std::string& sState)
{
    announcer.Change(*pService, [&] { pService->sState = sState; });
}

void Connections::SetError(const ServicePointer& pService, const std::string& sError)
{
    announcer.Change(*pService, [&] { pService->sError = sError; });
}

void Connections::Step(const ServicePointer& pService, std::chrono::milliseconds delay,
                       void (Connections::*fnStep)(const ServicePointer&))
{
    CancelStep(pService->sPath);
    mapSteps[pService->sPath] = outlet.After(delay, [this, pService, fnStep] {
        mapSteps.erase(pService->sPath);
        (this->*fnStep)(pService);
    });
}

void Connections::CancelStep(const std::string& sPath)
{
    const auto step = mapSteps.find(sPath);
    if (step == mapSteps.end())
        return;
    outlet.Cancel(step->second);
    mapSteps.erase(step);
}

} // namespace Tovra::Simulator
