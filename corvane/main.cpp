#include "corvane/Commands.h"
#include "corvane/Ipc.h"
#include "corvane/Request.h"
#include "corvane/Shell.h"
#include "corvane/Status.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

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
    Request request;
    try {
        request = ReadCommandLine(vecWords, false);
        return Run(request);
    } catch (const Failure& failure) {
        if (request.bJson)
            fmt::print("{}\n",
                       nlohmann::json{{"result", "error"}, {"text", failure.what()}}.dump());
        fmt::print(stderr, "corvane: {}\n", failure.what());
        return failure.GetStatus();
    } catch (const std::exception& exception) {
        fmt::print(stderr, "corvane: {}\n", exception.what());
        return Status::Error;
    }
}

} // namespace

} // namespace Tovra::Corvane

int main(int argc, char** argv)
{
    using namespace Tovra::Corvane;
    const int nStatus = static_cast<int>(RunReporting({argv + 1, argv + argc}));
    EndSoon(nStatus);
    return nStatus;
}
