#include "simulator/World.h"
#include "simulator/Order.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

template <class Pointer> void Erase(std::vector<Pointer>& vecPointers, const Pointer& pErased)
{
    vecPointers.erase(std::remove(vecPointers.begin(), vecPointers.end(), pErased),
                      vecPointers.end());
}

std::string GetState(const World& world)
{
    const auto isIn = [&](const char* pState) {
        return std::any_of(world.vecServices.begin(), world.vecServices.end(),
                           [&](const ServicePointer& p) { return p->sState == pState; });
    };
    if (isIn("online"))
        return "online";
    if (isIn("ready"))
        return "ready";
    return world.bOfflineMode ? "offline" : "idle";
}

} // namespace

World::World(const Scenario& scenario)
    : version(scenario.version),
      timing(scenario.timing),
      bOfflineMode(scenario.bOfflineMode),
      bAnnounceEverySort(scenario.bAnnounceEverySort),
      bFailurePasses(scenario.bFailurePasses),
      bFreshStarts(scenario.bFreshStarts),
      bSorted(scenario.bSorted),
      bAutoConnects(scenario.bAutoConnects)
{
    for (const TechnologySettings& settings : scenario.vecTechnologies) {
        if (FindTechnologyOfType(settings.sType))
            throw Problem("technologies: there are two of type " + settings.sType);
        vecTechnologies.push_back(std::make_shared<Technology>(settings));
    }
    for (const Network& network : scenario.vecServices) {
        const auto pService = std::make_shared<Service>(network);
        if (IsKnown(pService->sPath))
            throw Problem("services: there are two with the path " + pService->sPath);
        if (network.appearance == Appearance::AtStart && HasPower(*pService))
            List(pService);
        else
            Unlist(pService);
    }
    if (bSorted)
        Sort(vecServices);
    for (const TechnologyPointer& pTechnology : vecTechnologies)
        pTechnology->bConnected = HasConnection(*pTechnology);
}

ServicePointer World::FindService(const std::string& sPath) const
{
    const auto known = mapKnown.find(sPath);
    return known != mapKnown.end() && known->second.bListed ? known->second.pService : nullptr;
}

TechnologyPointer World::FindTechnology(const std::string& sPath) const
{
    for (const TechnologyPointer& pTechnology : vecTechnologies)
        if (pTechnology->sPath == sPath)
            return pTechnology;
    return nullptr;
}

TechnologyPointer World::FindTechnologyOfType(const std::string& sType) const
{
    return FindTechnology("/net/connman/technology/" + sType);
}

bool World::IsKnown(const std::string& sServicePath) const
{
    return mapKnown.count(sServicePath) > 0;
}

void World::List(const ServicePointer& pService)
{
    Erase(vecUnlisted, pService);
    vecServices.push_back(pService);
    mapKnown[pService->sPath] = {pService, true};
}

void World::Unlist(const ServicePointer& pService)
{
    Erase(vecServices, pService);
    vecUnlisted.push_back(pService);
    mapKnown[pService->sPath] = {pService, false};
}

void World::Forget(const ServicePointer& pService)
{
    Erase(vecServices, pService);
    Erase(vecUnlisted, pService);
    mapKnown.erase(pService->sPath);
}

bool World::HasPower(const Service& service) const
{
    const TechnologyPointer pTechnology = FindTechnologyOfType(service.network.sType);
    return !pTechnology || pTechnology->bPowered;
}

bool World::HasConnection(const Technology& technology) const
{
    return std::any_of(vecServices.begin(), vecServices.end(), [&](const ServicePointer& pService) {
        return pService->network.sType == technology.settings.sType && pService->IsConnected();
    });
}

Properties World::GetManagerProperties() const
{
    return {{"State", MakeString(GetState(*this))},
            {"OfflineMode", MakeBool(bOfflineMode)},
            {"SessionMode", MakeBool(bSessionMode)}};
}

} // namespace Tovra::Simulator
