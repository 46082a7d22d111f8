#include "simulator/Announcer.h"
#include "simulator/Order.h"
#include "simulator/Override.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pManager = "net.connman.Manager";

} // namespace

Announcer::Announcer(World& described, Outlet& used) : world(described), outlet(used)
{
    managerProperties = world.GetManagerProperties();
}

void Announcer::Change(Service& service, const std::function<void()>& fnChange)
{
    const Properties before = GetProperties(service, world.version);
    const std::string sState = service.sState;
    fnChange();
    const bool bListed = world.FindService(service.sPath).get() == &service;
    if (!bListed)
        return;
    if (setAdded.count(service.sPath) == 0)
        SendPropertyChanges(service.sPath, "net.connman.Service",
                            Compare(before, GetProperties(service, world.version)));
    SortServices(sState != service.sState);
    UpdateConnected();
}

void Announcer::Change(Technology& technology, const std::function<void()>& fnChange)
{
    const Properties before = GetProperties(technology, world.version);
    fnChange();
    SendPropertyChanges(technology.sPath, "net.connman.Technology",
                        Compare(before, GetProperties(technology, world.version)));
    ChangeManager([] {});
}

void Announcer::ChangeManager(const std::function<void()>& fnChange)
{
    fnChange();
    const Properties before = std::exchange(managerProperties, world.GetManagerProperties());
    SendPropertyChanges("/", pManager, Compare(before, managerProperties));
}

void Announcer::AddService(const ServicePointer& pService)
{
    world.List(pService);
    if (world.bSorted)
        Sort(world.vecServices);
    setAdded.insert(pService->sPath);
    setRemoved.erase(pService->sPath);
    ScheduleServicesChanged();
    UpdateConnected();
}

void Announcer::RemoveService(const ServicePointer& pService, bool bForget)
{
    if (bForget)
        world.Forget(pService);
    else
        world.Unlist(pService);
    setAdded.erase(pService->sPath);
    setRemoved.insert(pService->sPath);
    ScheduleServicesChanged();
    UpdateConnected();
}

void Announcer::AddTechnology(const TechnologyPointer& pTechnology)
{
    world.vecTechnologies.push_back(pTechnology);
    SendTechnologyAdded(*pTechnology);
    UpdateConnected();
}

void Announcer::RemoveTechnology(const TechnologyPointer& pTechnology)
{
    auto& vecAll = world.vecTechnologies;
    vecAll.erase(std::remove(vecAll.begin(), vecAll.end(), pTechnology), vecAll.end());
    outlet.Emit({"/", pManager, "TechnologyRemoved", {"o", Json::array({pTechnology->sPath})}, ""});
    ChangeManager([] {});
}

void Announcer::ScheduleServicesChanged()
{
    if (nTimer == 0)
        nTimer = outlet.After(world.timing.servicesChanged, [this] { SendServicesChanged(); });
}

Arguments Announcer::ListServices() const
{
    Json list = Json::array();
    for (const ServicePointer& pService : world.vecServices)
        list.push_back(Json::array(
            {pService->sPath, MakeDictionary(GetProperties(*pService, world.version))}));
    return {"a(oa{sv})", Json::array({std::move(list)})};
}

Arguments Announcer::ListTechnologies() const
{
    Json list = Json::array();
    for (const TechnologyPointer& pTechnology : world.vecTechnologies)
        list.push_back(Json::array(
            {pTechnology->sPath, MakeDictionary(GetProperties(*pTechnology, world.version))}));
    return {"a(oa{sv})", Json::array({std::move(list)})};
}

void Announcer::AnnounceAll()
{
    for (const TechnologyPointer& pTechnology : world.vecTechnologies)
        SendTechnologyAdded(*pTechnology);
    for (const ServicePointer& pService : world.vecServices)
        setAdded.insert(pService->sPath);
    if (!setAdded.empty())
        ScheduleServicesChanged();
}

void Announcer::Reset()
{
    outlet.Cancel(std::exchange(nTimer, 0));
    setAdded.clear();
    setRemoved.clear();
}

void Announcer::SortServices(bool bStateChanged)
{
    const bool bMoved = world.bSorted && Sort(world.vecServices);
    const bool bAnnounced = bStateChanged && world.bAnnounceEverySort;
    if (bMoved || (bAnnounced && world.vecServices.size() > 1))
        ScheduleServicesChanged();
}

void Announcer::UpdateConnected()
{
    for (const TechnologyPointer& pTechnology : world.vecTechnologies) {
        const bool bConnected = world.HasConnection(*pTechnology);
        if (bConnected != pTechnology->bConnected)
            Change(*pTechnology, [&] { pTechnology->bConnected = bConnected; });
    }
    ChangeManager([] {});
}

void Announcer::SendTechnologyAdded(const Technology& technology)
{
    const Json properties = MakeDictionary(GetProperties(technology, world.version));
    outlet.Emit({"/",
                 pManager,
                 "TechnologyAdded",
                 {"oa{sv}", Json::array({technology.sPath, properties})},
                 ""});
}

void Announcer::SendServicesChanged()
{
    nTimer = 0;
    Json services = Json::array();
    for (const ServicePointer& pService : world.vecServices) {
        const bool bNew = setAdded.count(pService->sPath) > 0;
        services.push_back(Json::array(
            {pService->sPath,
             bNew ? MakeDictionary(GetProperties(*pService, world.version)) : Json::object()}));
    }
    Json removed = Json::array();
    for (const std::string& sPath : setRemoved)
        removed.push_back(sPath);
    setAdded.clear();
    setRemoved.clear();
    outlet.Emit({"/",
                 pManager,
                 "ServicesChanged",
                 {"a(oa{sv})ao", Json::array({std::move(services), std::move(removed)})},
                 ""});
}

void Announcer::SendPropertyChanges(const std::string& sPath, const char* pInterface,
                                    const Properties& changes)
{
    for (const auto& [sName, value] : changes)
        outlet.Emit({sPath,
                     pInterface,
                     "PropertyChanged",
                     {"sv", Json::array({sName, MakeVariant(value)})},
                     ""});
}

} // namespace Tovra::Simulator
