#pragma once

#include "simulator/Scenario.h"

namespace Tovra::Simulator
{

/** A technology as the simulated ConnMan knows it. */
struct Technology {
    explicit Technology(TechnologySettings technology);

    TechnologySettings settings;
    std::string sPath;
    bool bPowered;
    bool bConnected = false;
    bool bPowerChanging = false;
    std::string sTetheringIdentifier;
    std::string sTetheringPassphrase;
    int nTetheringFrequency = 0;
};

Properties GetProperties(const Technology& technology, Version version);

} // namespace Tovra::Simulator
