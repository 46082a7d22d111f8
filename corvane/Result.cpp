#include "corvane/Result.h"

#include "corvane/Output.h"

#include <cstdio>
#include <fmt/format.h>

namespace Tovra::Corvane
{

namespace
{

const char* GetWord(Status status)
{
    switch (status) {
    case Status::Done:
        return "done";
    case Status::Failed:
        return "failed";
    case Status::TimedOut:
        return "timed-out";
    case Status::Interrupted:
        return "interrupted";
    default:
        return "error";
    }
}

} // namespace

Status Report(const Request& request, Status status, const std::string& sText,
              nlohmann::json details)
{
    if (request.bJson) {
        details["result"] = GetWord(status);
        details["text"] = sText;
        fmt::print("{}\n", Output::ToLine(details));
    } else {
        fmt::print(status == Status::Done ? stdout : stderr, "{}\n", sText);
    }
    return status;
}

Status ReportFailure(bool bJson, Status status, const std::string& sText)
{
    if (bJson)
        fmt::print("{}\n", Output::ToLine({{"result", GetWord(status)}, {"text", sText}}));
    std::fflush(stdout);
    fmt::print(stderr, "corvane: {}\n", Output::MakePrintable(sText));
    return status;
}

Status ToStatus(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Reached:
        return Status::Done;
    case Outcome::Deadline:
        return Status::TimedOut;
    case Outcome::Interrupt:
        break;
    }
    return Status::Interrupted;
}

} // namespace Tovra::Corvane
