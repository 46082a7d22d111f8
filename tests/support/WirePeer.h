#pragma once

#include "tests/support/WireMessage.h"

#include <deque>
#include <memory>
#include <string>

namespace Tovra::TestSupport
{

/**
 * A connection to a bus that plays a daemon by hand: it sends what it is told, of any shape, and
 * keeps the method calls that reach it until they are answered. One thread at a time.
 */
class WirePeer
{
public:
    /** Takes the name; throws std::runtime_error if the bus does not give it. */
    WirePeer(const std::string& sAddress, const char* pName);

    /** Returns once the bus has passed it on. */
    void Send(const DBus::Message& message);

    /** The calls of the method that have arrived and are not yet taken. */
    std::size_t CountCalls(const std::string& sMethod);

    /** The oldest of them; empty if none comes before the deadline. */
    DBus::Message TakeCall(const std::string& sMethod);

private:
    struct Close {
        void operator()(DBusConnection* pConnection) const;
    };

    void Collect();

    std::unique_ptr<DBusConnection, Close> pConnection;
    std::deque<DBus::Message> calls;
};

/** Makes a connection that was opened by its address one of the bus's; false if that fails. */
bool JoinBus(const DBus::Connection& connection);

} // namespace Tovra::TestSupport
