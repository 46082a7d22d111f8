#pragma once

#include "simulator/AgentInput.h"
#include "simulator/AgentQueue.h"
#include "simulator/Agents.h"
#include "simulator/Announcer.h"
#include "simulator/Storage.h"

#include <map>
#include <optional>

namespace Tovra::Simulator
{

/**
 * Connecting and disconnecting: who is asked for what, which states a service walks through, and
 * when a waiting "Connect" is answered.
 */
class Connections
{
public:
    Connections(World& described, Announcer& told, Outlet& used, const Agents& registered,
                const Storage& kept);

    /** `fnAnswer` is called when it is connected, has failed or takes too long. */
    void Connect(const ServicePointer& pService, const std::string& sSender,
                 const Answer& fnAnswer);
    Reply Disconnect(const ServicePointer& pService);
    Reply Remove(const ServicePointer& pService);
    void ClearError(const ServicePointer& pService);

    /** A connected service goes through configuration again. */
    void Configure(const ServicePointer& pService, const IpConfiguration& configuration);

    /** The WPS button of the network's access point. */
    void PushButton(const ServicePointer& pService);

    /**
     * Connects favourites that may connect by themselves, if the scenario wants that: each cable,
     * and of networks in the air the first, while nothing is connected.
     */
    void AutoConnect();

    /** Ends what is under way and puts the service into a state, as from outside. */
    void Force(const ServicePointer& pService, const std::string& sState);

    /** The service leaves the list: what is under way ends, and is answered as aborted. */
    void Abandon(const ServicePointer& pService);

    /** Whoever was asked will not answer any more. */
    void AgentGone(const std::string& sOwner);

    /** Nobody waits for an answer any more, and nobody is asked. */
    void ForgetCallers();

private:
    struct Attempt {
        Answer fnAnswer; ///< empty: nobody waits
        std::string sSender;
        bool bByUser = true;
        Outlet::TimerId nTimeout = 0;
        AgentQueue::Ticket nTicket = 0; ///< of the question whose answer is awaited
        std::string sAsked;             ///< the owner of the agent that it was put to
        bool bReporting = false;        ///< asked by "ReportError", not "RequestInput"
    };

    void LeaveOthers(const Service& service);
    void Try(const ServicePointer& pService);
    void TryByItself(const ServicePointer& pService);
    bool IsBusy(const Service& service) const;
    bool MayConnectItself(const Service& service) const;
    void Walk(const ServicePointer& pService);
    void Associated(const ServicePointer& pService);
    void Configured(const ServicePointer& pService);
    void BecomeReady(const ServicePointer& pService);
    void GetAddress(const ServicePointer& pService);
    void BecomeOnline(const ServicePointer& pService);
    void BecomeIdle(const ServicePointer& pService);
    void Fail(const ServicePointer& pService, const std::string& sError);
    void Refuse(const ServicePointer& pService, const std::string& sError);
    void TimedOut(const ServicePointer& pService);
    void Leave(const ServicePointer& pService);

    void Ask(const ServicePointer& pService);
    void Report(const ServicePointer& pService);
    void CallAgent(const ServicePointer& pService, const Agent& agent, const char* pMember,
                   const Arguments& arguments,
                   void (Connections::*fnAnswered)(const ServicePointer&, const Reply&));
    void InputArrived(const ServicePointer& pService, const Reply& reply);
    void ReportAnswered(const ServicePointer& pService, const Reply& reply);
    Verdict TakeInput(Service& service, const AgentInput& input);
    void ScanHidden(const ServicePointer& pService, const AgentInput& input);
    void FoundHidden(const ServicePointer& pPlaceholder, const AgentInput& input);
    void CancelAgent(const ServicePointer& pService);

    void GiveUp(const ServicePointer& pService, const Reply& reply);
    void Finish(const ServicePointer& pService, const std::optional<Reply>& reply);
    void SetState(const ServicePointer& pService, const std::string& sState);
    void SetError(const ServicePointer& pService, const std::string& sError);

    /** The next step on the service's way; a step that was to come before is given up. */
    void Step(const ServicePointer& pService, std::chrono::milliseconds delay,
              void (Connections::*fnStep)(const ServicePointer&));
    void CancelStep(const std::string& sPath);

    World& world;
    Announcer& announcer;
    Outlet& outlet;
    const Agents& agents;
    const Storage& storage;
    AgentQueue questions;
    std::map<std::string, Attempt> mapAttempts; ///< by the service's path
    std::map<std::string, Outlet::TimerId> mapSteps;
};

} // namespace Tovra::Simulator
