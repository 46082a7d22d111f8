#include "Text.h"

#include <cstddef>
#include <cstring>
#include <dbus/dbus.h>

namespace Tovra::DBus::Text
{

namespace
{

std::size_t SequenceLength(unsigned char nLead)
{
    if (nLead < 0x80)
        return 1;
    if (nLead < 0xE0)
        return 2;
    return nLead < 0xF0 ? 3 : 4;
}

// The length of the character at nPosition, 0 if none begins there.
std::size_t CharacterLength(const std::string& sText, std::size_t nPosition)
{
    const std::string sCharacter =
        sText.substr(nPosition, SequenceLength(static_cast<unsigned char>(sText[nPosition])));
    return IsString(sCharacter) ? sCharacter.size() : 0;
}

} // namespace

bool IsObjectPath(const char* pText)
{
    return pText && dbus_validate_path(pText, nullptr);
}

bool IsInterface(const char* pText)
{
    return pText && dbus_validate_interface(pText, nullptr);
}

bool IsMember(const char* pText)
{
    return pText && dbus_validate_member(pText, nullptr);
}

bool IsBusName(const char* pText)
{
    return pText && dbus_validate_bus_name(pText, nullptr);
}

bool IsObjectPath(const std::string& sText)
{
    return std::strlen(sText.c_str()) == sText.size() && IsObjectPath(sText.c_str());
}

bool IsString(const std::string& sText)
{
    return std::strlen(sText.c_str()) == sText.size() && dbus_validate_utf8(sText.c_str(), nullptr);
}

std::string ToString(const std::string& sText)
{
    if (IsString(sText))
        return sText;

    std::string sMended;
    sMended.reserve(3 * sText.size()); // growing would leave parts of a credential in freed memory
    for (std::size_t nPosition = 0; nPosition < sText.size();) {
        const std::size_t nLength = CharacterLength(sText, nPosition);
        if (nLength == 0) {
            sMended += "\xEF\xBF\xBD";
            ++nPosition;
        } else {
            sMended.append(sText, nPosition, nLength);
            nPosition += nLength;
        }
    }
    return sMended;
}

} // namespace Tovra::DBus::Text
