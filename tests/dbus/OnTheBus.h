#pragma once

#include "Include/D-Bus.h"
#include "tests/support/Dispatching.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Watchdog.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

/**
 * A test with a connection to the system bus that speaks to itself: what it sends to "/probe" and
 * "net.example.Probe" comes back to it through the bus, and the test's thread dispatches it.
 */
class OnTheBus : public testing::Test
{
protected:
    static constexpr const char* pPath = "/probe";
    static constexpr const char* pInterface = "net.example.Probe";

    Message MakeCall(const char* member) const
    {
        return TestSupport::CallToOneself(connection, pPath, pInterface, member);
    }

    static Message MakeSignal(const char* member)
    {
        return Message::Adopt(dbus_message_new_signal(pPath, pInterface, member));
    }

    bool DispatchUntil(const std::function<bool()>& predicate)
    {
        return TestSupport::DispatchUntil(connection, predicate);
    }

    /** Nothing is on its way any more, neither to this connection nor to the bus. */
    bool DispatchAllSoFar() { return TestSupport::DispatchAllSoFar(connection); }

    /** The name of the error that answers a call, "" if it was answered without one. */
    std::string GetErrorName(PendingCall pending)
    {
        if (!pending || !DispatchUntil([&] { return pending.IsCompleted(); }))
            return "no reply";
        const Message reply = pending.ReceiveReply();
        const char* const pName = dbus_message_get_error_name(reply.Get());
        return pName ? pName : "";
    }

    /** Has the bus go away, until the connection knows of it. */
    bool KillBus()
    {
        TestSupport::GetSystemBus().Stop();
        return TestSupport::Eventually([&] { return connection.Dispatch(10); });
    }

    TestSupport::Watchdog watchdog;
    Connection connection = Connection::SystemBus();
};

} // namespace Tovra::DBus
