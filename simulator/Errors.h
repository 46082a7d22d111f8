#pragma once

#include "simulator/Behaviour.h"

namespace Tovra::Simulator
{

/** ConnMan's error "net.connman.Error." + `sName`, with ConnMan's text. */
inline Reply MakeError(const std::string& sName, const std::string& sMessage)
{
    return {{}, "net.connman.Error." + sName, sMessage};
}

/** An empty answer: it is done. */
inline Reply MakeDone()
{
    return {};
}

namespace Errors
{

inline Reply InvalidArguments()
{
    return MakeError("InvalidArguments", "Invalid arguments");
}
inline Reply InvalidProperty()
{
    return MakeError("InvalidProperty", "Invalid property");
}
inline Reply InvalidService()
{
    return MakeError("InvalidService", "Invalid service");
}
inline Reply NotRegistered()
{
    return MakeError("NotRegistered", "Not registered");
}
inline Reply NotSupported()
{
    return MakeError("NotSupported", "Not supported");
}
inline Reply NotConnected()
{
    return MakeError("NotConnected", "Not connected");
}
inline Reply NoCarrier()
{
    return MakeError("NoCarrier", "No carrier");
}
inline Reply InProgress()
{
    return MakeError("InProgress", "In progress");
}
inline Reply AlreadyExists()
{
    return MakeError("AlreadyExists", "Already exists");
}
inline Reply AlreadyEnabled()
{
    return MakeError("AlreadyEnabled", "Already enabled");
}
inline Reply AlreadyDisabled()
{
    return MakeError("AlreadyDisabled", "Already disabled");
}
inline Reply AlreadyConnected()
{
    return MakeError("AlreadyConnected", "Already connected");
}
inline Reply OperationAborted()
{
    return MakeError("OperationAborted", "Operation aborted");
}
inline Reply OperationTimeout()
{
    return MakeError("OperationTimeout", "Operation timeout");
}
inline Reply PassphraseRequired()
{
    return MakeError("PassphraseRequired", "Passphrase required");
}

/** What ConnMan says when a connection attempt has failed, whatever the reason. */
inline Reply InputOutput()
{
    return MakeError("Failed", "Input/output error");
}
inline Reply Busy()
{
    return MakeError("Failed", "Device or resource busy");
}
inline Reply Interrupted()
{
    return MakeError("Failed", "Interrupted system call");
}

} // namespace Errors

} // namespace Tovra::Simulator
