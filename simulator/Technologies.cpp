#include "simulator/Technologies.h"
#include "simulator/Errors.h"

namespace Tovra::Simulator
{

Technologies::Technologies(World& described, Announcer& told, Outlet& used, Connections& affected)
    : world(described),
      announcer(told),
      outlet(used),
      connections(affected)
{
}

void Technologies::SetPowered(const TechnologyPointer& pTechnology, bool bPowered,
                              const Answer& fnAnswer)
{
    if (pTechnology->bPowerChanging)
        return fnAnswer(Errors::Busy());
    if (pTechnology->bPowered == bPowered)
        return fnAnswer(bPowered ? Errors::AlreadyEnabled() : Errors::AlreadyDisabled());
    pTechnology->bPowerChanging = true;
    if (!bPowered)
        UnlistServices(pTechnology->settings.sType); // as in ConnMan, before the power is off
    outlet.After(world.timing.power, [=] {
        pTechnology->bPowerChanging = false;
        ApplyPower(pTechnology, bPowered);
        fnAnswer(MakeDone());
    });
}

void Technologies::Scan(const TechnologyPointer& pTechnology, const Answer& fnAnswer)
{
    if (pTechnology->settings.sType != "wifi")
        return fnAnswer(Errors::NotSupported());
    if (!pTechnology->bPowered)
        return fnAnswer(Errors::NoCarrier());
    std::vector<Answer>& vecWaiting = mapScans[pTechnology->sPath];
    vecWaiting.push_back(fnAnswer);
    if (vecWaiting.size() == 1)
        outlet.After(world.timing.scan, [=] { ScanEnded(pTechnology); });
}

void Technologies::Remove(const TechnologyPointer& pTechnology)
{
    UnlistServices(pTechnology->settings.sType);
    AnswerScans(pTechnology->sPath, Errors::Interrupted());
    announcer.RemoveTechnology(pTechnology);
}

void Technologies::SetOfflineMode(bool bOffline)
{
    announcer.ChangeManager([&] { world.bOfflineMode = bOffline; });
    for (const TechnologyPointer& pTechnology : world.vecTechnologies)
        if (pTechnology->bPowered == bOffline)
            ApplyPower(pTechnology, !bOffline);
}

void Technologies::ForgetCallers()
{
    for (auto& [sPath, vecWaiting] : mapScans)
        for (Answer& fnAnswer : vecWaiting)
            fnAnswer = nullptr;
}

void Technologies::ApplyPower(const TechnologyPointer& pTechnology, bool bPowered)
{
    const std::string& sType = pTechnology->settings.sType;
    if (!bPowered)
        UnlistServices(sType);
    announcer.Change(*pTechnology, [&] { pTechnology->bPowered = bPowered; });
    if (!bPowered)
        return;
    ListServices(sType, Appearance::AtStart);
    connections.AutoConnect();
}

void Technologies::ListServices(const std::string& sType, Appearance appearance)
{
    const std::vector<ServicePointer> vecUnlisted = world.vecUnlisted;
    for (const ServicePointer& pService : vecUnlisted)
        if (pService->network.sType == sType && pService->network.appearance == appearance) {
            pService->network.appearance = Appearance::AtStart; // found once, found from now on
            announcer.AddService(pService);
        }
}

void Technologies::UnlistServices(const std::string& sType)
{
    const std::vector<ServicePointer> vecServices = world.vecServices;
    for (const ServicePointer& pService : vecServices)
        if (pService->network.sType == sType) {
            if (pService->IsConnected() || pService->IsConnecting())
                connections.Force(pService, "disconnect");
            connections.Force(pService, "idle");
            announcer.RemoveService(pService, false);
        }
}

void Technologies::ScanEnded(const TechnologyPointer& pTechnology)
{
    if (pTechnology->bPowered && world.FindTechnology(pTechnology->sPath) == pTechnology)
        ListServices("wifi", Appearance::AfterScan);
    AnswerScans(pTechnology->sPath, MakeDone());
    connections.AutoConnect();
}

void Technologies::AnswerScans(const std::string& sPath, const Reply& reply)
{
    const std::vector<Answer> vecWaiting = std::exchange(mapScans[sPath], {});
    for (const Answer& fnAnswer : vecWaiting)
        if (fnAnswer)
            fnAnswer(reply);
}

} // namespace Tovra::Simulator
