#pragma once

#include "Include/D-Bus.h"
#include "tests/support/Waiting.h"

#include <dbus/dbus.h>
#include <functional>

namespace Tovra::TestSupport
{

/** Dispatches on the calling thread until the predicate came true; false if it never did. */
inline bool DispatchUntil(DBus::Connection& connection, const std::function<bool()>& predicate)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!predicate()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        connection.Dispatch(10);
    }
    return true;
}

/** A call to a method of the bus itself. */
inline DBus::Message CallToBus(const char* method)
{
    return DBus::Message("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         method);
}

/** A call that comes back to the connection it is sent on. */
inline DBus::Message CallToOneself(const DBus::Connection& connection, const char* path,
                                   const char* interface, const char* method)
{
    return DBus::Message(dbus_bus_get_unique_name(connection.Get()), path, interface, method);
}

/** Dispatches all that the bus has sent so far; false if it does not answer any more. */
inline bool DispatchAllSoFar(DBus::Connection& connection)
{
    const DBus::PendingCall answer = connection.SendWithReply(CallToBus("GetId"), -1);
    return answer && DispatchUntil(connection, [&] { return answer.IsCompleted(); });
}

/** Whether the bus still answers on the connection. Not while another thread dispatches it. */
inline bool IsAlive(DBus::Connection& connection)
{
    return static_cast<bool>(connection.SendWithReplyBlocking(CallToBus("GetId"), -1));
}

} // namespace Tovra::TestSupport
