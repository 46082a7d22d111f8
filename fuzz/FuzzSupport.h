#pragma once

#include "Include/D-Bus.h"

#include <optional>
#include <string>

namespace Tovra::Fuzz
{

/** Ends the process, so that the fuzzer keeps the input, unless the condition holds. */
void Require(bool bCondition, const char* pWhat);

/** The layer warns of types that it does not carry; of those there are many here. */
void SilenceWarnings();

/** The message as it goes over the wire. */
std::string Marshal(const DBus::Message& message);

/** What a receiver makes of it; empty if it is no message. */
DBus::Message Demarshal(const std::string& sBytes);

/**
 * Adds the value between two others to a new message and requires that a receiver reads what the
 * rules promise, or the two others alone if the value cannot be sent.
 */
void RequireTravels(const DBus::Data& data);

} // namespace Tovra::Fuzz
