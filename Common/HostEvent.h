#pragma once

#include <string>

namespace Tovra::HostEvent
{

/** The host's command that tells it of a service with this IPv4 Method. Plain: any thread. */
std::string MakeCommand(const std::string& sIPv4Method);

} // namespace Tovra::HostEvent
