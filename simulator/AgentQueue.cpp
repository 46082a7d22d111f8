#include "simulator/AgentQueue.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pAgentInterface = "net.connman.Agent";

} // namespace

AgentQueue::Ticket AgentQueue::Ask(const Agent& agent, const std::string& sMember,
                                   const Arguments& arguments, std::chrono::milliseconds timeout,
                                   Answer fnAnswer)
{
    const OutgoingCall call = {agent.sOwner, agent.sPath, pAgentInterface, sMember, arguments};
    mapQueues[agent.sOwner].push_back({++nLast, call, timeout, std::move(fnAnswer)});
    SendNext(agent.sOwner);
    return nLast;
}

void AgentQueue::Cancel(Ticket nTicket)
{
    Withdraw(nTicket, true);
}

void AgentQueue::Drop(Ticket nTicket)
{
    Withdraw(nTicket, false);
}

void AgentQueue::SendNext(const std::string& sOwner)
{
    const auto queue = mapQueues.find(sOwner);
    if (queue == mapQueues.end() || queue->second.empty() || queue->second.front().bSent)
        return;
    Question& question = queue->second.front();
    question.bSent = true;
    outlet.Call(question.call, question.timeout,
                [this, sOwner, nTicket = question.nTicket](const Reply& reply) {
                    Answered(sOwner, nTicket, reply);
                });
}

// What is answered after it was withdrawn is not at the head of the queue any more.
void AgentQueue::Answered(const std::string& sOwner, Ticket nTicket, const Reply& reply)
{
    const auto queue = mapQueues.find(sOwner);
    if (queue == mapQueues.end() || queue->second.empty() ||
        queue->second.front().nTicket != nTicket)
        return;
    const Answer fnAnswer = std::move(queue->second.front().fnAnswer);
    queue->second.pop_front();
    fnAnswer(reply);
    SendNext(sOwner);
}

void AgentQueue::Withdraw(Ticket nTicket, bool bTell)
{
    for (auto& [sOwner, questions] : mapQueues) {
        const auto question =
            std::find_if(questions.begin(), questions.end(),
                         [&](const Question& each) { return each.nTicket == nTicket; });
        if (question == questions.end())
            continue;
        if (question->bSent && bTell)
            outlet.Call({sOwner, question->call.sPath, pAgentInterface, "Cancel", {}}, {}, nullptr);
        questions.erase(question);
        return SendNext(sOwner);
    }
}

} // namespace Tovra::Simulator
