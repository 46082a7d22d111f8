#pragma once

#include "corvane/Host.h"
#include "corvane/Request.h"
#include "corvane/Status.h"

/** The commands. Each runs on the main thread, prints its result and returns how it ended. */
namespace Tovra::Corvane::Commands
{

/** Runs any command but Shell, SendEvent and Help. Throws Failure. */
Status Run(Host& host, const Request& request);

Status ShowTechnologies(Host& host, const Request& request);
Status ShowNetworks(Host& host, const Request& request);
Status ShowNetwork(Host& host, const Request& request);
Status Scan(Host& host, const Request& request);
Status Connect(Host& host, const Request& request);
Status Disconnect(Host& host, const Request& request);
Status SetAddress(Host& host, const Request& request);
Status SetPower(Host& host, const Request& request);
Status Watch(Host& host, const Request& request);

} // namespace Tovra::Corvane::Commands
