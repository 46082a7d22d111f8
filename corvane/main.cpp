#include "corvane/Commands.h"
#include "corvane/Ipc.h"
#include "corvane/Request.h"
#include "corvane/Result.h"
#include "corvane/Shell.h"
#include "corvane/Status.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>

namespace Tovra::Corvane
{

namespace
{

Status SendEvent(const std::string& sEvent)
{
    if (Ipc::Send(sEvent) > 0)
        return Status::Done;
    throw Failure(Status::NoReceiver, "no corvane of this user runs that could be told");
}

Status RunWithPlugIn(const Request& request)
{
    if (request.nLogLevel)
        setenv("FUNDRA_LOG_LEVEL", std::to_string(*request.nLogLevel).c_str(), 1);
    Host& host =
        Host::Start(request.sLibrary.empty() ? "libcorvane_KX22.so" : request.sLibrary.c_str());
    return request.command == Request::Command::Shell ? RunShell(host, request)
                                                      : Commands::Run(host, request);
}

Status Run(const Request& request)
{
    switch (request.command) {
    case Request::Command::Help:
        fmt::print("{}", request.sText);
        return Status::Done;
    case Request::Command::SendEvent:
        return SendEvent(request.sText);
    default:
        return RunWithPlugIn(request);
    }
}

Status RunReporting(const std::vector<std::string>& vecWords)
{
    // Also where the command line cannot be read.
    const bool bJson = std::find(vecWords.begin(), vecWords.end(), "--json") != vecWords.end();
    Status status = Status::Error;
    try {
        status = Run(ReadCommandLine(vecWords, false));
    } catch (const Failure& failure) {
        status = ReportFailure(bJson, failure.GetStatus(), failure.what());
    } catch (const std::exception& exception) {
        status = ReportFailure(bJson, Status::Error, exception.what());
    }
    const bool bWritten = std::fflush(stdout) == 0 && !std::ferror(stdout);
    if (bWritten || status != Status::Done)
        return status;
    return ReportFailure(false, Status::Error, "cannot write the output");
}

} // namespace

} // namespace Tovra::Corvane

int main(int argc, char** argv)
{
    using namespace Tovra::Corvane;
    const int nStatus = static_cast<int>(RunReporting({argv + 1, argv + argc}));
    EndSoon(nStatus, Host::TidyUp);
    return nStatus;
}
