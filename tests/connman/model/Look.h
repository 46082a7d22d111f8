#pragma once

#include "tests/support/WireValue.h"

namespace Tovra::ConnManModel
{

/**
 * How a service or technology looks: for each property the number of one of the few values that it
 * takes here, 0 for the plainest. Any number stands for some value.
 */
struct Look {
    unsigned nState = 0; ///< of a technology: Powered
    unsigned nMethod = 0;
    unsigned nAddress = 0;
    unsigned nLink = 0; ///< Ethernet; of a technology: Connected
    unsigned nName = 0;
    unsigned nServers = 0;
    unsigned nSecurity = 0;
    unsigned nStrength = 0;
};

constexpr unsigned Look::*lookFields[] = {&Look::nState,    &Look::nMethod,  &Look::nAddress,
                                          &Look::nLink,     &Look::nName,    &Look::nServers,
                                          &Look::nSecurity, &Look::nStrength};

std::string ServicePath(unsigned nPath);
std::string TechnologyPath(unsigned nPath);

TestSupport::WireProperties ServiceProperties(const std::string& sPath, const Look& look);
TestSupport::WireProperties TechnologyProperties(const std::string& sPath, const Look& look);

/** The value of the property that the n-th field stands for, and its key. */
std::pair<std::string, TestSupport::WireValue> ServiceProperty(const Look& look, unsigned nField);

} // namespace Tovra::ConnManModel
