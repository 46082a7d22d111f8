#pragma once

#include "simulator/Service.h"
#include "simulator/Technology.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tovra::Simulator
{

using ServicePointer = std::shared_ptr<Service>;
using TechnologyPointer = std::shared_ptr<Technology>;

/** What there is. No behaviour: that is in the classes which work on it. */
struct World {
    /** Throws Problem if two services or technologies would have one path. */
    explicit World(const Scenario& scenario);

    ServicePointer FindService(const std::string& sPath) const;
    TechnologyPointer FindTechnology(const std::string& sPath) const;
    TechnologyPointer FindTechnologyOfType(const std::string& sType) const;

    /** A listed or unlisted one. */
    bool IsKnown(const std::string& sServicePath) const;

    /** A new one, or one that is known, goes onto the list, or off it. */
    void List(const ServicePointer& pService);
    void Unlist(const ServicePointer& pService);
    void Forget(const ServicePointer& pService);

    /** Without a technology of its type, a service is always there. */
    bool HasPower(const Service& service) const;

    bool HasConnection(const Technology& technology) const;

    Properties GetManagerProperties() const;

    Version version;
    Timing timing;
    bool bOfflineMode;
    bool bSessionMode = false;
    bool bAnnounceEverySort;
    bool bFailurePasses;
    bool bFreshStarts;
    bool bSorted;
    bool bAutoConnects;
    std::vector<TechnologyPointer> vecTechnologies;
    std::vector<ServicePointer> vecServices; ///< listed, in order

    /** Not listed: not found yet, or their technology has no power. */
    std::vector<ServicePointer> vecUnlisted;

private:
    struct Known {
        ServicePointer pService;
        bool bListed;
    };
    std::unordered_map<std::string, Known> mapKnown; ///< by path
};

} // namespace Tovra::Simulator
