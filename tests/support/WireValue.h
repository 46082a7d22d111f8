#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Tovra::TestSupport
{

/**
 * One value of any D-Bus type but 'd' and 'h', also of those that our layer does not carry: for
 * messages as a daemon may send them.
 */
struct WireValue {
    std::string sSignature;            ///< one complete type
    std::uint64_t nNumber = 0;         ///< of y b n q i u x t
    std::string sText;                 ///< of s o g
    std::vector<WireValue> vecMembers; ///< elements, members, key and value, a variant's contents
};

/** Named values in the order in which they are sent. */
using WireProperties = std::vector<std::pair<std::string, WireValue>>;

WireValue WireNumber(char nType, std::uint64_t nNumber);
WireValue WireBool(bool bValue);
WireValue WireText(const std::string& sText);
WireValue WirePath(const std::string& sPath);
WireValue WireVariant(WireValue contents);
WireValue WireStruct(std::vector<WireValue> vecMembers);
WireValue WireArray(const std::string& sElementSignature, std::vector<WireValue> vecElements = {});
WireValue WireTexts(const std::vector<std::string>& vecTexts);

/** An "a{sv}"; each value is put into a variant. */
WireValue WireDictionary(WireProperties properties);

/** As text, each basic value after its type: (o"/a", {s"State": <s"idle">}). */
std::string Describe(const WireValue& value);
std::string Describe(const std::vector<WireValue>& vecValues);

} // namespace Tovra::TestSupport
