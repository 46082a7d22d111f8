#pragma once

#include "corvane/Request.h"
#include "corvane/Status.h"
#include "corvane/Waiting.h"

#include <nlohmann/json.hpp>

namespace Tovra::Corvane
{

/** Prints how a change ended: as JSON, or as one line; on standard error unless it is Done. */
Status Report(const Request& request, Status status, const std::string& sText,
              nlohmann::json details);

/** Prints why a command was given up: on standard error, and where wanted as JSON too. */
Status ReportFailure(bool bJson, Status status, const std::string& sText);

/** The status of a wait that ended without what was waited for. */
Status ToStatus(Outcome outcome);

} // namespace Tovra::Corvane
