#include "simulator/Simulation.h"
#include "simulator/Signature.h"

namespace Tovra::Simulator
{

namespace
{

ServicePointer GetListed(const World& world, const std::string& sPath)
{
    ServicePointer pService = world.FindService(sPath);
    if (!pService)
        throw Problem("there is no service " + sPath);
    return pService;
}

TechnologyPointer GetTechnology(const World& world, const std::string& sPath)
{
    TechnologyPointer pTechnology = world.FindTechnology(sPath);
    if (!pTechnology)
        throw Problem("there is no technology " + sPath);
    return pTechnology;
}

void Override(Overrides& overrides, const std::string& sName, const std::optional<Value>& value)
{
    if (value) {
        CheckSingleType(value->sSignature);
        CheckValue(value->sSignature, value->contents, sName);
    }
    overrides[sName] = value;
}

} // namespace

Simulation::Simulation(const Scenario& scenario, Outlet& outlet)
    : world(scenario),
      storage(scenario.sStorage),
      announcer(world, outlet),
      connections(world, announcer, outlet, agents, storage),
      technologies(world, announcer, outlet, connections),
      parts{world, storage, agents, announcer, connections, technologies}
{
    for (const ServicePointer& pService : world.vecServices)
        if (!world.bFreshStarts || !storage.Load(*pService))
            storage.Save(*pService);
    connections.AutoConnect();
}

void Simulation::Handle(const Call& call, const Answer& fnAnswer)
{
    Simulator::Handle(parts, call, fnAnswer);
}

void Simulation::ConnectionGone(const std::string& sName)
{
    if (agents.Unregister(sName))
        connections.AgentGone(sName);
}

void Simulation::End()
{
    agents.Clear();
    announcer.Reset();
    connections.ForgetCallers();
    technologies.ForgetCallers();
    if (!world.bFreshStarts)
        return;
    for (const auto& vecServices : {world.vecServices, world.vecUnlisted})
        for (const ServicePointer& pService : vecServices)
            Reload(pService);
}

void Simulation::Begin()
{
    if (!world.bFreshStarts)
        return;
    announcer.AnnounceAll();
    connections.AutoConnect();
}

std::string Simulation::AddService(const Network& network)
{
    auto pService = std::make_shared<Service>(network);
    if (!IsObjectPath(pService->sPath))
        throw Problem("path: \"" + pService->sPath + "\" is no object path");
    if (world.IsKnown(pService->sPath))
        throw Problem("there is a service " + pService->sPath + " already");
    if (network.appearance == Appearance::AtStart && world.HasPower(*pService))
        announcer.AddService(pService);
    else
        world.Unlist(pService);
    if (!storage.Load(*pService))
        storage.Save(*pService);
    connections.AutoConnect();
    return pService->sPath;
}

void Simulation::RemoveService(const std::string& sPath)
{
    const ServicePointer pService = GetListed(world, sPath);
    connections.Abandon(pService);
    announcer.RemoveService(pService, true);
}

void Simulation::PushButton(const std::string& sPath)
{
    connections.PushButton(GetListed(world, sPath));
}

void Simulation::SetState(const std::string& sPath, const std::string& sState)
{
    connections.Force(GetListed(world, sPath), sState);
}

void Simulation::ChangeNetwork(const std::string& sPath,
                               const std::function<void(Network&)>& fnChange)
{
    const ServicePointer pService = GetListed(world, sPath);
    announcer.Change(*pService, [&] { fnChange(pService->network); });
}

void Simulation::SetServiceProperty(const std::string& sPath, const std::string& sName,
                                    const std::optional<Value>& value)
{
    if (sName == "State" && value && value->sSignature == "s")
        return SetState(sPath, value->contents.get<std::string>());
    ChangeNetwork(sPath, [&](Network& network) {
        if (sName == "Strength" && value && value->sSignature == "y")
            network.nStrength = value->contents.get<unsigned>();
        else
            Override(network.overrides, sName, value);
    });
}

std::string Simulation::AddTechnology(const TechnologySettings& settings)
{
    if (world.FindTechnologyOfType(settings.sType))
        throw Problem("there is a technology of type " + settings.sType + " already");
    const auto pTechnology = std::make_shared<Technology>(settings);
    announcer.AddTechnology(pTechnology);
    return pTechnology->sPath;
}

void Simulation::RemoveTechnology(const std::string& sPath)
{
    technologies.Remove(GetTechnology(world, sPath));
}

void Simulation::SetTechnologyProperty(const std::string& sPath, const std::string& sName,
                                       const std::optional<Value>& value)
{
    const TechnologyPointer pTechnology = GetTechnology(world, sPath);
    announcer.Change(*pTechnology,
                     [&] { Override(pTechnology->settings.overrides, sName, value); });
}

// What is stored of it, and otherwise as it was found.
void Simulation::Reload(const ServicePointer& pService)
{
    connections.Abandon(pService);
    announcer.Change(*pService, [&] {
        Network network = pService->network;
        network.sState = "idle";
        network.sError.clear();
        network.bSaved = network.bSaved && !storage.IsKept();
        *pService = Service(network);
        storage.Load(*pService);
    });
}

const Service& Simulation::GetService(const std::string& sPath) const
{
    return *GetListed(world, sPath);
}

std::vector<std::string> Simulation::GetServicePaths() const
{
    std::vector<std::string> vecPaths;
    for (const ServicePointer& pService : world.vecServices)
        vecPaths.push_back(pService->sPath);
    return vecPaths;
}

} // namespace Tovra::Simulator
