#pragma once

#include "corvane/Host.h"
#include "corvane/Request.h"
#include "corvane/Status.h"

namespace Tovra::Corvane
{

/**
 * A prompt for all commands, with history and completion on a terminal; on anything else, a command
 * a line. Ends with the input, "quit" or "exit". Returns how the last command ended.
 */
Status RunShell(Host& host, const Request& request);

} // namespace Tovra::Corvane
