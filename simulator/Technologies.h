#pragma once

#include "simulator/Connections.h"

#include <map>
#include <vector>

namespace Tovra::Simulator
{

/** Power and scans. */
class Technologies
{
public:
    Technologies(World& described, Announcer& told, Outlet& used, Connections& affected);

    /** `fnAnswer` is called when the power has changed. */
    void SetPowered(const TechnologyPointer& pTechnology, bool bPowered, const Answer& fnAnswer);

    /** `fnAnswer` is called when the scan is over and what it found is listed. */
    void Scan(const TechnologyPointer& pTechnology, const Answer& fnAnswer);

    void Remove(const TechnologyPointer& pTechnology);
    void SetOfflineMode(bool bOffline);

    /** Nobody waits for an answer any more. */
    void ForgetCallers();

private:
    void ApplyPower(const TechnologyPointer& pTechnology, bool bPowered);
    void ListServices(const std::string& sType, Appearance appearance);
    void UnlistServices(const std::string& sType);
    void ScanEnded(const TechnologyPointer& pTechnology);
    void AnswerScans(const std::string& sPath, const Reply& reply);

    World& world;
    Announcer& announcer;
    Outlet& outlet;
    Connections& connections;
    std::map<std::string, std::vector<Answer>> mapScans; ///< by the technology's path
};

} // namespace Tovra::Simulator
