#pragma once

#include <string>

/** What D-Bus allows in which place. libdbus aborts the process when it is handed anything else. */
namespace Tovra::DBus::Text
{

/** Each false for a null pointer. */
bool IsObjectPath(const char* pText);
bool IsInterface(const char* pText);
bool IsMember(const char* pText);
bool IsBusName(const char* pText);

bool IsObjectPath(const std::string& sText);

/** Whether a D-Bus string can carry the text: UTF-8 without a zero byte. */
bool IsString(const std::string& sText);

/** The text with each byte that a D-Bus string cannot carry replaced by U+FFFD (three bytes). */
std::string ToString(const std::string& sText);

} // namespace Tovra::DBus::Text
