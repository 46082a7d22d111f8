#pragma once

#include "tests/connman/model/History.h"
#include "tests/connman/model/Subject.h"

#include <optional>

namespace Tovra::ConnManModel
{

/**
 * Lets the client and the model live through the history and compares them after each event:
 * both lists, and all that they did, in its order. Nothing if they never differ, else how they do.
 */
std::optional<std::string> Compare(Subject& subject, const History& history);

} // namespace Tovra::ConnManModel
