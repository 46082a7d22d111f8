#pragma once

#include <stdexcept>
#include <string>

namespace Tovra::Corvane
{

/** How a command ended; the program's exit status. */
enum class Status : int {
    Done = 0,
    Error = 1,      ///< something that is not meant to happen
    BadInput = 2,   ///< what was asked makes no sense; nothing was sent
    Unknown = 3,    ///< there is no such network or technology
    Failed = 4,     ///< the network could not be connected
    TimedOut = 5,   ///< no result within the time to wait
    NoNetworks = 6, ///< the network daemon told nothing within the time to wait
    NoReceiver = 7, ///< nobody runs who could be told of the event
    Interrupted = 130,
};

/** Ends a command with one clear line. */
class Failure : public std::runtime_error
{
public:
    Failure(Status failureStatus, const std::string& sText)
        : std::runtime_error(sText),
          status(failureStatus)
    {
    }

    Status GetStatus() const { return status; }

private:
    Status status;
};

} // namespace Tovra::Corvane
