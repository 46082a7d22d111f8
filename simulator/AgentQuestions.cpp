#include "simulator/Connections.h"
#include "simulator/Errors.h"

#include <algorithm>

// The part of `Connections` that talks with agents.

namespace Tovra::Simulator
{

void Connections::Ask(const ServicePointer& pService)
{
    const auto agent = agents.Find(mapAttempts[pService->sPath].sSender);
    if (!agent)
        return Finish(pService, Errors::NotRegistered());
    const Json values = Json::array({pService->sPath, MakeRequest(*pService)});
    CallAgent(pService, *agent, "RequestInput", {"oa{sv}", values}, &Connections::InputArrived);
}

// Without an agent the caller of "Connect" waits until the time is over, as in ConnMan.
void Connections::Report(const ServicePointer& pService)
{
    const auto agent = agents.Find(mapAttempts[pService->sPath].sSender);
    if (!agent)
        return;
    const Json values = Json::array({pService->sPath, pService->sError});
    CallAgent(pService, *agent, "ReportError", {"os", values}, &Connections::ReportAnswered);
    mapAttempts[pService->sPath].bReporting = true;
}

void Connections::CallAgent(const ServicePointer& pService, const Agent& agent, const char* pMember,
                            const Arguments& arguments,
                            void (Connections::*fnAnswered)(const ServicePointer&, const Reply&))
{
    const auto fnReply = [=](const Reply& reply) {
        mapAttempts[pService->sPath].nTicket = 0;
        (this->*fnAnswered)(pService, reply);
    };
    Attempt& attempt = mapAttempts[pService->sPath];
    attempt.sAsked = agent.sOwner;
    attempt.bReporting = false;
    attempt.nTicket = questions.Ask(agent, pMember, arguments, world.timing.agentTimeout, fnReply);
}

void Connections::InputArrived(const ServicePointer& pService, const Reply& reply)
{
    const AgentInput input = ReadInput(reply);
    if (input.sError == "net.connman.Agent.Error.Canceled")
        return GiveUp(pService, Errors::OperationAborted());
    if (!input.sError.empty())
        return GiveUp(pService, Errors::OperationTimeout());
    if (!input.bValues)
        return GiveUp(pService, Errors::InvalidArguments());
    if (pService->IsHidden())
        return ScanHidden(pService, input);

    const Verdict verdict = TakeInput(*pService, input);
    if (verdict == Verdict::NotAllowed)
        return GiveUp(pService, Errors::NotSupported());
    if (verdict == Verdict::InvalidKey)
        return Fail(pService, "invalid-key");
    SetError(pService, "");
    Try(pService);
}

void Connections::ReportAnswered(const ServicePointer& pService, const Reply& reply)
{
    if (reply.sError == "net.connman.Agent.Error.Retry")
        return Try(pService);
    GiveUp(pService, Errors::InputOutput());
}

Verdict Connections::TakeInput(Service& service, const AgentInput& input)
{
    if (input.sWps) {
        const Verdict verdict = JudgeWpsPin(*input.sWps);
        if (verdict != Verdict::Good)
            return verdict;
        service.bUseWps = true;
        service.sWpsPin = *input.sWps;
    }
    if (!input.sPassphrase)
        return Verdict::Good;
    const Verdict verdict = JudgePassphrase(service, *input.sPassphrase);
    if (verdict == Verdict::Good)
        service.sPassphrase = input.sPassphrase;
    return verdict;
}

void Connections::ScanHidden(const ServicePointer& pService, const AgentInput& input)
{
    if (!input.sName || input.sName->empty() || input.sName->size() > 32)
        return GiveUp(pService, Errors::InvalidArguments());
    mapSteps[pService->sPath] = outlet.After(world.timing.scan, [this, pService, input] {
        mapSteps.erase(pService->sPath);
        FoundHidden(pService, input);
    });
}

// The network in the air becomes a service of its own, which takes over the waiting caller.
void Connections::FoundHidden(const ServicePointer& pPlaceholder, const AgentInput& input)
{
    const auto found = std::find_if(
        world.vecUnlisted.begin(), world.vecUnlisted.end(), [&](const ServicePointer& pService) {
            return pService->network.appearance == Appearance::WhenNamed &&
                   pService->network.sName == input.sName;
        });
    if (found == world.vecUnlisted.end())
        return GiveUp(pPlaceholder, Errors::InputOutput());

    const ServicePointer pService = *found;
    mapAttempts[pService->sPath] = mapAttempts[pPlaceholder->sPath];
    mapAttempts[pPlaceholder->sPath].fnAnswer = nullptr;
    Finish(pPlaceholder, std::nullopt);
    announcer.AddService(pService);
    if (TakeInput(*pService, input) != Verdict::Good)
        return Fail(pService, "invalid-key");
    Try(pService);
}

void Connections::CancelAgent(const ServicePointer& pService)
{
    const auto attempt = mapAttempts.find(pService->sPath);
    if (attempt == mapAttempts.end() || attempt->second.nTicket == 0)
        return;
    questions.Cancel(attempt->second.nTicket);
    GiveUp(pService,
           attempt->second.bReporting ? Errors::InputOutput() : Errors::OperationTimeout());
}

void Connections::AgentGone(const std::string& sOwner)
{
    questions.Forget(sOwner);
    std::vector<ServicePointer> vecAsked;
    for (const auto& [sPath, attempt] : mapAttempts)
        if (attempt.nTicket != 0 && attempt.sAsked == sOwner)
            if (const ServicePointer pService = world.FindService(sPath))
                vecAsked.push_back(pService);
    for (const ServicePointer& pService : vecAsked)
        GiveUp(pService, mapAttempts[pService->sPath].bReporting ? Errors::InputOutput()
                                                                 : Errors::OperationTimeout());
}

} // namespace Tovra::Simulator
