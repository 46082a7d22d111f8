#pragma once

#include "simulator/Outlet.h"
#include "simulator/World.h"

#include <functional>
#include <set>
#include <string>

namespace Tovra::Simulator
{

/**
 * Changes the world and tells the bus: "PropertyChanged" at once, "ServicesChanged" late and
 * gathered. A service that has not been announced yet sends no "PropertyChanged", as in ConnMan.
 */
class Announcer
{
public:
    Announcer(World& described, Outlet& used);

    /** Runs `fnChange` and announces by signals what it changed in the service. */
    void Change(Service& service, const std::function<void()>& fnChange);
    void Change(Technology& technology, const std::function<void()>& fnChange);
    void ChangeManager(const std::function<void()>& fnChange);

    void AddService(const ServicePointer& pService);

    /** Takes it off the list; `bForget`: for good, else it becomes unlisted. */
    void RemoveService(const ServicePointer& pService, bool bForget);

    void AddTechnology(const TechnologyPointer& pTechnology);
    void RemoveTechnology(const TechnologyPointer& pTechnology);

    /** Sends "ServicesChanged" in a while, if it is not on its way already. */
    void ScheduleServicesChanged();

    /** All that "GetServices" and "GetTechnologies" answer. */
    Arguments ListServices() const;
    Arguments ListTechnologies() const;

    /** Tells of all there is, as of something new. */
    void AnnounceAll();

    /** Forgets what was about to be announced: there is nobody who was told anything before. */
    void Reset();

private:
    void SortServices(bool bStateChanged);
    void UpdateConnected();
    void SendTechnologyAdded(const Technology& technology);
    void SendServicesChanged();
    void SendPropertyChanges(const std::string& sPath, const char* pInterface,
                             const Properties& changes);

    World& world;
    Outlet& outlet;
    std::set<std::string> setAdded; ///< paths that the next "ServicesChanged" tells in full
    std::set<std::string> setRemoved;
    Properties managerProperties; ///< as last announced
    Outlet::TimerId nTimer = 0;
};

} // namespace Tovra::Simulator
