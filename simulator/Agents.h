#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

struct Agent {
    std::string sOwner; ///< the unique name of the connection that registered it
    std::string sPath;
};

/** The registered agents: one a connection. */
class Agents
{
public:
    /** False if the connection has one already. */
    bool Register(const std::string& sOwner, const std::string& sPath);

    /** False if the connection has none. ConnMan does not look at the path. */
    bool Unregister(const std::string& sOwner);

    /** The one of the same connection, else the one that was registered first. */
    std::optional<Agent> Find(const std::string& sOwner) const;

    const std::vector<Agent>& GetAll() const { return vecAgents; }
    void Clear() { vecAgents.clear(); }

private:
    std::vector<Agent> vecAgents; ///< in the order of registration
};

} // namespace Tovra::Simulator
