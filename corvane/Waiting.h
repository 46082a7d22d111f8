#pragma once

#include "corvane/Host.h"
#include "corvane/Request.h"
#include "corvane/Terminal.h"

namespace Tovra::Corvane
{

/** The end of a command's time to wait: --wait, or what the command takes by default. */
Clock::time_point GetDeadline(const Request& request, double nDefaultSeconds);

/**
 * Waits until the network daemon has told of its technologies, and so of its networks: its lists
 * arrive after the plug-in is loaded. Throws Failure when it tells nothing in time.
 */
Picture ReadFirst(Host& host, const Request& request);

/**
 * Reads until `fnIsReached` holds for what was read; Deadline or Interrupt if that does not happen.
 */
enum class Outcome { Reached, Deadline, Interrupt };
Outcome ReadUntil(Host& host, Clock::time_point until,
                  const std::function<bool(const Picture&)>& fnIsReached);

/** A network by its name or key. Throws Failure that lists what there is. */
Services::const_iterator FindNetwork(const Picture& picture, const std::string& sNetwork);

/** A technology by its type or name. Throws Failure that lists what there is. */
Technologies::const_iterator FindTechnology(const Picture& picture, const std::string& sTechnology);

} // namespace Tovra::Corvane
