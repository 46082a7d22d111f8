#pragma once

#include "D-Bus.h"

#include <dbus/dbus.h>

namespace Tovra::DBus
{

/**
 * The records behind libdbus's three kinds of callback. The operation that installs one allocates
 * it; from then on libdbus owns it and calls its free function when it lets go. The free functions
 * accept null.
 *
 * An exception must not cross libdbus's frames: caught on the other side, it would leave libdbus
 * believing that a dispatch is under way, and the next one would wait for ever. So each entry point
 * keeps what its callback throws, and `RethrowCallbackException` lets it go once libdbus is back.
 */
struct SignalFilter {
    std::string sInterface;
    std::string sMember;
    std::function<void(const std::string&, const Message&)> fnCallback;

    static DBusHandlerResult Call(DBusConnection* pConnection, DBusMessage* pMessage,
                                  void* pFilter);
    static void Free(void* pFilter);
};

struct ObjectHandler {
    std::function<bool(const std::string&, const std::string&, const Message&)> fnCallback;

    static DBusHandlerResult MessageFunction(DBusConnection* pConnection, DBusMessage* pMessage,
                                             void* pHandler);
    static void UnregisterFunction(DBusConnection* pConnection, void* pHandler);
};

struct ReturnWrapper {
    std::function<void(PendingCall&)> fnCallback;

    static void Call(DBusPendingCall* pPending, void* pWrapper);
    static void Free(void* pWrapper);
};

extern const ::DBusObjectPathVTable DBusObjectPathVTable;

/** Throws what a callback threw on this thread since the last call, if one did. */
void RethrowCallbackException();

} // namespace Tovra::DBus
