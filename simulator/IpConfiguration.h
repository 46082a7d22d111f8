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

bool IsIpv4Address(const std::string& sText);

/** An address of either family. */
bool IsIpAddress(const std::string& sText);

} // namespace Tovra::Simulator
