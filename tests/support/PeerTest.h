#pragma once

#include "Include/D-Bus.h"
#include "tests/support/SdBusPeer.h"

#include <gtest/gtest.h>

namespace Tovra::TestSupport
{

/** The layer on one connection to the private bus, sd-bus on another. */
class PeerTest : public testing::Test
{
protected:
    /** An empty call to the peer. */
    DBus::Message NewCall() const;

    /** What the layer reads from a message that sd-bus filled and the bus brought. */
    DBus::Message Receive(const SdBusPeer::Fill& fnFill);
    DBus::Data Read(const SdBusPeer::Fill& fnFill) { return Receive(fnFill).Contents(); }

    /** Signature and arguments of a message as sd-bus received them: "sb s"x" btrue". */
    std::string Arrived(const DBus::Message& message);

    /** The same of a message with this one argument. */
    std::string Arrived(const DBus::Data& data) { return Arrived(NewCall().Add(data)); }

    /**
     * Expects that the value leaves a message as it was to the byte, that the message takes
     * further arguments, and that the bus then delivers it and keeps the connection.
     */
    void ExpectRefused(const DBus::Data& data);

    SdBusPeer peer{GetAddress()};
    DBus::Connection connection = DBus::Connection::SystemBus();

private:
    static const std::string& GetAddress();
};

/** The message as it goes over the wire. */
std::string Marshal(const DBus::Message& message);

} // namespace Tovra::TestSupport
