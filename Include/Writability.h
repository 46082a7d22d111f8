#pragma once

#include "D-Bus.h"

namespace Tovra::DBus
{

/**
 * Whether a value can go into a message without libdbus aborting the process over it, or the bus
 * closing the connection. `inVariant` as in `Data::AddToMessage`. False also for a value that
 * writes nothing. Plain: any thread.
 */
bool IsWritable(const Data& data, bool inVariant);

} // namespace Tovra::DBus
