#include "corvane/Commands.h"
#include "corvane/Output.h"
#include "corvane/Waiting.h"

#include <fmt/format.h>

namespace Tovra::Corvane::Commands
{

Status ShowTechnologies(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    if (request.bJson)
        fmt::print("{}\n",
                   Output::ToLine({{"technologies", Output::ToJson(picture.mapTechnologies)}}));
    else
        fmt::print("{}", Output::MakeTable(picture.mapTechnologies, HasColour()));
    return Status::Done;
}

Status ShowNetworks(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    if (request.bJson)
        fmt::print("{}\n", Output::ToLine({{"networks", Output::ToJson(picture.mapServices)}}));
    else if (picture.mapServices.empty())
        fmt::print("There are no networks; 'corvane scan' looks for some.\n");
    else
        fmt::print("{}", Output::MakeTable(picture.mapServices, HasColour()));
    return Status::Done;
}

Status ShowNetwork(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    const auto& [sKey, service] = *FindNetwork(picture, request.sNetwork);
    if (request.bJson)
        fmt::print("{}\n", Output::ToLine({{"network", Output::ToJson(service, sKey)}}));
    else
        fmt::print("{}", Output::MakeDetails(service, sKey));
    return Status::Done;
}

Status Run(Host& host, const Request& request)
{
    switch (request.command) {
    case Request::Command::ListTechnologies:
        return ShowTechnologies(host, request);
    case Request::Command::ListNetworks:
        return ShowNetworks(host, request);
    case Request::Command::Show:
        return ShowNetwork(host, request);
    case Request::Command::Scan:
        return Scan(host, request);
    case Request::Command::Connect:
        return Connect(host, request);
    case Request::Command::Disconnect:
        return Disconnect(host, request);
    case Request::Command::Set:
        return SetAddress(host, request);
    case Request::Command::Power:
        return SetPower(host, request);
    case Request::Command::Watch:
        return Watch(host, request);
    case Request::Command::Shell:
    case Request::Command::SendEvent:
    case Request::Command::Help:
        break;
    }
    throw Failure(Status::Error, "this is no command for the network");
}

} // namespace Tovra::Corvane::Commands
