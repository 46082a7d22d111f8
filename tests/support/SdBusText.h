#pragma once

#include <string>
#include <systemd/sd-bus.h>

namespace Tovra::TestSupport
{

/**
 * The arguments of a message as sd-bus reads them, each basic value after its type code, with
 * [array], (struct), {key: value} and <variant>: s"name" a[s"one", s"two"] <btrue>. The message is
 * read from its start and left there.
 */
std::string DescribeArguments(sd_bus_message* pMessage);

} // namespace Tovra::TestSupport
