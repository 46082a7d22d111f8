#pragma once

#include "Common/ConnMan.h"

/** What the client's commands say to ConnMan. Plain functions: no bus, any thread. */
namespace Tovra::Commands
{

/** One method call to ConnMan. */
struct Command {
    std::string sPath;
    std::string sInterface;
    std::string sMember;
    std::vector<DBus::Data> vecArguments;
};

/** "Scan" of net.connman.Technology. */
Command Scan(const ConnMan::NetworkTechnology& technology);

/** "SetProperty" of net.connman.Technology, "Powered". */
Command SetPower(const ConnMan::NetworkTechnology& technology, bool on);

/** "SetProperty" of net.connman.Service; the value goes out in one variant, marked or not. */
Command SetConProp(const ConnMan::NetworkService& service, const char* name,
                   const DBus::Data& value);

/** What `ConnMan::SetNetworkProperties` sends for `flags`, in the order of sending. */
std::vector<Command> SetNetworkProperties(const ConnMan::NetworkService& service,
                                          unsigned int flags);

/**
 * The message that carries a command; it asks for no reply. Empty when the path is none that D-Bus
 * allows, or when the values are more than a bus takes.
 */
DBus::Message MakeMessage(const Command& command);

} // namespace Tovra::Commands
