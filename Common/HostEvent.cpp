#include "Common/HostEvent.h"

namespace Tovra::HostEvent
{

namespace
{

const char* EventName(const std::string& sIPv4Method)
{
    if (sIPv4Method == "dhcp")
        return "netcfg-dhcp-address-acquired";
    if (sIPv4Method == "manual")
        return "netcfg-static-address-configured";
    return "netcfg-autoip-address-acquired";
}

} // namespace

std::string MakeCommand(const std::string& sIPv4Method)
{
    return std::string("/opt/tovra/bin/corvane --ipc-send=") + EventName(sIPv4Method);
}

} // namespace Tovra::HostEvent
