#pragma once

#include <string>

namespace Tovra
{

/**
 * The key of a network in the host's map: the ASCII letters and digits of its name, then the 32-bit
 * FNV-1a hash of the name up to its first zero byte, as eight upper-case hexadecimal digits. Plain:
 * any thread.
 */
std::string MakeNetworkKey(const std::string& sName);

} // namespace Tovra
