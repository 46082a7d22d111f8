#include "Callbacks.h"
#include "D-Bus.h"
#include "Text.h"
#include "Wakeup.h"

#include <algorithm>
#include <dbus/dbus.h>

namespace Tovra::DBus
{

namespace
{

// libdbus aborts the process on other negative numbers than this one: of a call its own time-out,
// of dispatching no limit.
int ToTimeout(int timeout)
{
    return std::max(timeout, DBUS_TIMEOUT_USE_DEFAULT);
}

DBusConnection* Open(const char* address)
{
    return address ? dbus_connection_open(address, nullptr) : nullptr;
}

} // namespace

Connection::Connection(DBusConnection* pAdopted) : Handle(pAdopted)
{
    if (!pAdopted)
        return;
    // Without this libdbus ends the process when the bus goes away.
    dbus_connection_set_exit_on_disconnect(pAdopted, FALSE);
    InstallWakeup(pAdopted);
}

Connection::Connection(const char* address) : Connection(Open(address)) {}

Connection::Connection(const std::string& address) : Connection(address.c_str()) {}

Connection Connection::SystemBus()
{
    return Connection(dbus_bus_get(DBUS_BUS_SYSTEM, nullptr));
}

Connection Connection::SessionBus()
{
    return Connection(dbus_bus_get(DBUS_BUS_SESSION, nullptr));
}

int Connection::Name(const char* name)
{
    if (!*this || !Text::IsBusName(name))
        return 0;
    return dbus_bus_request_name(Get(), name, DBUS_NAME_FLAG_REPLACE_EXISTING, nullptr);
}

void Connection::Listen(const char* interface)
{
    if (!*this || !Text::IsInterface(interface))
        return;
    const std::string sRule = std::string("type='signal',interface='") + interface + "'";
    dbus_bus_add_match(Get(), sRule.c_str(), nullptr);
}

void Connection::Signal(const char* interface, const char* member,
                        const std::function<void(const std::string&, const Message&)>& callback)
{
    if (!*this || !Text::IsInterface(interface) || !Text::IsMember(member))
        return;
    auto pFilter = std::make_unique<SignalFilter>(SignalFilter{interface, member, callback});
    if (dbus_connection_add_filter(Get(), SignalFilter::Call, pFilter.get(), SignalFilter::Free))
        pFilter.release(); // libdbus's from here on
}

void Connection::RegisterObject(
    const char* path,
    const std::function<bool(const std::string&, const std::string&, const Message&)>& callback)
{
    if (!*this || !Text::IsObjectPath(path))
        return;
    auto pHandler = std::make_unique<ObjectHandler>(ObjectHandler{callback});
    if (dbus_connection_register_object_path(Get(), path, &DBusObjectPathVTable, pHandler.get()))
        pHandler.release(); // libdbus's from here on
}

std::uint32_t Connection::Send(const Message& message)
{
    dbus_uint32_t nSerial = 0;
    return dbus_connection_send(Get(), message.Get(), &nSerial) ? nSerial : 0;
}

PendingCall Connection::SendWithReply(const Message& message, int timeout)
{
    if (!*this || !message)
        return PendingCall();
    DBusPendingCall* pPending = nullptr;
    dbus_connection_send_with_reply(Get(), message.Get(), &pPending, ToTimeout(timeout));
    return PendingCall::Adopt(pPending);
}

Message Connection::SendWithReplyBlocking(const Message& message, int timeout)
{
    if (!*this || !message)
        return Message();
    return Message::Adopt(dbus_connection_send_with_reply_and_block(Get(), message.Get(),
                                                                    ToTimeout(timeout), nullptr));
}

bool Connection::Dispatch(int timeout)
{
    if (!*this)
        return false;
    const int nLeft = WaitForWork(Get(), ToTimeout(timeout));
    const bool bOpen = dbus_connection_read_write_dispatch(Get(), nLeft);
    RethrowCallbackException();
    return !bOpen;
}

} // namespace Tovra::DBus
