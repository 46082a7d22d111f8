#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Tovra::Simulator
{

/**
 * The complete types that a D-Bus signature consists of: "sa{sv}(ib)" is "s", "a{sv}", "(ib)".
 * Throws Problem if it is no signature.
 */
std::vector<std::string> SplitSignature(std::string_view signature);

/** Throws Problem unless the signature is exactly one complete type. */
void CheckSingleType(std::string_view signature);

bool IsBasicType(char nType);

/** Of "a{kv}" the complete types k and v. */
std::pair<std::string, std::string> SplitDictionaryEntry(const std::string& sDictionary);

/** The members' types of "(...)". */
std::vector<std::string> SplitStruct(const std::string& sStruct);

bool IsObjectPath(std::string_view path);

} // namespace Tovra::Simulator
