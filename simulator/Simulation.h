#pragma once

#include "simulator/Methods.h"

#include <string>

namespace Tovra::Simulator
{

/**
 * The simulated ConnMan without a bus: method calls come in, answers and signals go out through the
 * `Outlet`. Used by one thread.
 */
class Simulation
{
public:
    Simulation(const Scenario& scenario, Outlet& outlet);

    /** What ConnMan does with the call. `fnAnswer` is called once, now or later. */
    void Handle(const Call& call, const Answer& fnAnswer);

    /** A connection is gone from the bus. */
    void ConnectionGone(const std::string& sName);

    /** The daemon ends: it knows no agents and owes nobody an answer. */
    void End();

    /** The daemon starts, at first or again: it is on the bus. */
    void Begin();

    // What happens in the world outside. Paths that are not there throw Problem.

    std::string AddService(const Network& network);
    void RemoveService(const std::string& sPath);
    void PushButton(const std::string& sPath);
    void SetState(const std::string& sPath, const std::string& sState);
    void ChangeNetwork(const std::string& sPath, const std::function<void(Network&)>& fnChange);
    void SetServiceProperty(const std::string& sPath, const std::string& sName,
                            const std::optional<Value>& value);
    std::string AddTechnology(const TechnologySettings& settings);
    void RemoveTechnology(const std::string& sPath);
    void SetTechnologyProperty(const std::string& sPath, const std::string& sName,
                               const std::optional<Value>& value);

    /** The service as it is now. */
    const Service& GetService(const std::string& sPath) const;
    std::vector<std::string> GetServicePaths() const;
    const Agents& GetAgents() const { return agents; }
    const World& GetWorld() const { return world; }

private:
    void Reload(const ServicePointer& pService);

    World world;
    Storage storage;
    Agents agents;
    Announcer announcer;
    Connections connections;
    Technologies technologies;
    Parts parts;
};

} // namespace Tovra::Simulator
