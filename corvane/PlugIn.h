#pragma once

#include "host/DeviceConfig.h"
#include "host/ITargetSpecific.h"

#include <string>

namespace Tovra::Corvane
{

/**
 * Loads a target-specific plug-in and asks it for its interface; it stays loaded. `config` must
 * live until the process has ended. Throws Failure when there is no such plug-in.
 */
ITargetSpecific& LoadPlugIn(const std::string& sLibrary, DeviceConfig& config);

} // namespace Tovra::Corvane
