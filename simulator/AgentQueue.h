#pragma once

#include "simulator/Agents.h"
#include "simulator/Outlet.h"

#include <deque>
#include <map>
#include <string>

namespace Tovra::Simulator
{

/** Puts questions to agents, to each one at a time, as ConnMan does. */
class AgentQueue
{
public:
    /** Names a question; never 0. */
    using Ticket = unsigned;

    explicit AgentQueue(Outlet& used) : outlet(used) {}

    Ticket Ask(const Agent& agent, const std::string& sMember, const Arguments& arguments,
               std::chrono::milliseconds timeout, Answer fnAnswer);

    /** Nobody wants the answer any more. An agent that has the question already gets "Cancel". */
    void Cancel(Ticket nTicket);

    /** The same without telling the agent. */
    void Drop(Ticket nTicket);

    /** No question to the agent is answered any more. */
    void Forget(const std::string& sOwner) { mapQueues.erase(sOwner); }

private:
    struct Question {
        Ticket nTicket;
        OutgoingCall call;
        std::chrono::milliseconds timeout;
        Answer fnAnswer;
        bool bSent = false;
    };

    void SendNext(const std::string& sOwner);
    void Answered(const std::string& sOwner, Ticket nTicket, const Reply& reply);
    void Withdraw(Ticket nTicket, bool bTell);

    Outlet& outlet;
    std::map<std::string, std::deque<Question>> mapQueues; ///< by the agent's owner
    Ticket nLast = 0;
};

} // namespace Tovra::Simulator
