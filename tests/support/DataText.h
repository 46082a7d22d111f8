#pragma once

#include "Include/D-Bus.h"

#include <string>

namespace Tovra::TestSupport
{

/**
 * A whole tree as text, for comparing values and for reading failures: type, element type, marks
 * and contents all show. <...> stands for the variant mark, and a byte that is no printable ASCII
 * shows as \xNN: Array of Variant [<Bool true>, <String "a\x00">].
 */
std::string Describe(const DBus::Data& data);

/** Several of them, one a line. */
std::string Describe(const std::vector<DBus::Data>& vecData);

/** A text in double quotes, its unprintable bytes, quotes and backslashes as \xNN. */
std::string Quote(const std::string& sText);

} // namespace Tovra::TestSupport
