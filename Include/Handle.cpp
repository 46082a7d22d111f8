#include "D-Bus.h"

#include <dbus/dbus.h>

namespace Tovra::DBus
{

void AddReference(DBusConnection* pConnection) noexcept
{
    dbus_connection_ref(pConnection);
}

void AddReference(DBusMessage* pMessage) noexcept
{
    dbus_message_ref(pMessage);
}

void AddReference(DBusPendingCall* pPending) noexcept
{
    dbus_pending_call_ref(pPending);
}

void ReleaseReference(DBusConnection* pConnection) noexcept
{
    dbus_connection_unref(pConnection);
}

void ReleaseReference(DBusMessage* pMessage) noexcept
{
    dbus_message_unref(pMessage);
}

void ReleaseReference(DBusPendingCall* pPending) noexcept
{
    dbus_pending_call_unref(pPending);
}

} // namespace Tovra::DBus
