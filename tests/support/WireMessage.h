#pragma once

#include "Include/D-Bus.h"
#include "tests/support/WireValue.h"

namespace Tovra::TestSupport
{

/** Where a signal comes from. */
struct WireOrigin {
    std::string sPath;
    std::string sInterface;
    std::string sMember;
};

/**
 * Messages as they come off a wire, without one: marshalled and read anew. They throw
 * std::runtime_error on what libdbus does not take.
 */
DBus::Message WireSignal(const WireOrigin& origin, const std::vector<WireValue>& vecArguments);
DBus::Message WireReply(const std::vector<WireValue>& vecArguments);
DBus::Message WireError(const std::vector<WireValue>& vecArguments);

/** Messages to send; the last two answer `call`. */
DBus::Message NewWireSignal(const WireOrigin& origin, const std::vector<WireValue>& vecArguments);
DBus::Message NewWireReply(const DBus::Message& call, const std::vector<WireValue>& vecArguments);
DBus::Message NewWireError(const DBus::Message& call, const std::vector<WireValue>& vecArguments);

} // namespace Tovra::TestSupport
