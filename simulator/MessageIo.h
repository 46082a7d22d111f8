#pragma once

#include "simulator/Value.h"

#include <systemd/sd-bus.h>

namespace Tovra::Simulator
{

/** Appends values that `CheckArguments` accepts; throws std::runtime_error if sd-bus refuses. */
void Append(sd_bus_message* pMessage, const Arguments& arguments);

/** Everything that the message carries, from its first argument on. */
Arguments Read(sd_bus_message* pMessage);

/** Throws std::runtime_error that names what failed, if `nResult` is negative. */
int Check(int nResult, const char* pWhat);

} // namespace Tovra::Simulator
