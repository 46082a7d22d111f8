#pragma once

#include "simulator/Behaviour.h"
#include "simulator/Value.h"

#include <optional>
#include <string>

namespace Tovra::Simulator
{

struct IpConfiguration {
    std::string sMethod = "dhcp";
    std::string sAddress;
    std::string sNetmask;
    std::string sGateway;
};

/** "Method" and, unless empty, the rest; of "off" the method alone. */
Properties ToProperties(const IpConfiguration& configuration);

/**
 * What "IPv4.Configuration" is to become, or the error that ConnMan answers with. `value` is what
 * came in the variant.
 */
struct ConfigurationResult {
    std::optional<IpConfiguration> configuration;
    Reply error;
};
ConfigurationResult ReadConfiguration(const Value& value);

/** How many bits a netmask has, and the netmask of so many; of what is none, 0 and "0.0.0.0". */
unsigned ToPrefixLength(const std::string& sNetmask);
std::string ToNetmask(unsigned nPrefixLength);

bool IsIpv4Address(const std::string& sText);

/** An address of either family. */
bool IsIpAddress(const std::string& sText);

} // namespace Tovra::Simulator
