#pragma once

#include "Include/D-Bus.h"

#include <optional>

namespace Tovra::TestSupport
{

/**
 * What a value reads as after it has travelled; nothing if it cannot be sent. It shares no code
 * with the layer, and knows no limit of size.
 */
std::optional<DBus::Data> Expectation(const DBus::Data& data);

/** The text with every byte that belongs to no well-formed UTF-8 character, and zero, mended. */
std::string ExpectedText(const std::string& sText);

} // namespace Tovra::TestSupport
