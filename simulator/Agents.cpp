#include "simulator/Agents.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

auto FindOwned(const std::vector<Agent>& vecAgents, const std::string& sOwner)
{
    return std::find_if(vecAgents.begin(), vecAgents.end(),
                        [&](const Agent& agent) { return agent.sOwner == sOwner; });
}

} // namespace

bool Agents::Register(const std::string& sOwner, const std::string& sPath)
{
    if (FindOwned(vecAgents, sOwner) != vecAgents.end())
        return false;
    vecAgents.push_back({sOwner, sPath});
    return true;
}

bool Agents::Unregister(const std::string& sOwner)
{
    const auto agent = FindOwned(vecAgents, sOwner);
    if (agent == vecAgents.end())
        return false;
    vecAgents.erase(agent);
    return true;
}

std::optional<Agent> Agents::Find(const std::string& sOwner) const
{
    const auto agent = FindOwned(vecAgents, sOwner);
    if (agent != vecAgents.end())
        return *agent;
    return vecAgents.empty() ? std::nullopt : std::optional<Agent>(vecAgents.front());
}

} // namespace Tovra::Simulator
