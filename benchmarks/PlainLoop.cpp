#include "benchmarks/PlainLoop.h"

#include "tests/support/ProcessThreads.h"

#include <dbus/dbus.h>
#include <stdexcept>

namespace Tovra::Benchmarks
{

namespace
{

constexpr int nDispatchTimeout = 500; // ms

DBusConnection* Connect()
{
    DBusConnection* const pConnection = dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr);
    if (!pConnection)
        throw std::runtime_error("there is no system bus");
    dbus_connection_set_exit_on_disconnect(pConnection, FALSE);
    return pConnection;
}

} // namespace

PlainLoop::PlainLoop() : pConnection(Connect()), thread(&PlainLoop::Run, this) {}

PlainLoop::~PlainLoop()
{
    bStop = true;
    thread.join();
    dbus_connection_close(pConnection);
    dbus_connection_unref(pConnection);
}

void PlainLoop::Send(const std::string& sPath, const char* pInterface, const char* pMember)
{
    DBusMessage* const pMessage =
        dbus_message_new_method_call("net.connman", sPath.c_str(), pInterface, pMember);
    dbus_message_set_no_reply(pMessage, TRUE);
    dbus_connection_send(pConnection, pMessage, nullptr);
    dbus_message_unref(pMessage);
}

void PlainLoop::Run()
{
    nThread = TestSupport::GetThread();
    while (!bStop && dbus_connection_read_write_dispatch(pConnection, nDispatchTimeout)) {
    }
}

} // namespace Tovra::Benchmarks
