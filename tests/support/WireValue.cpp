#include "tests/support/WireValue.h"

namespace Tovra::TestSupport
{

namespace
{

WireValue MakeEntry(const std::string& sKey, WireValue value)
{
    WireValue entry{"{sv}", 0, "", {}};
    entry.vecMembers.reserve(2);
    entry.vecMembers.push_back(WireText(sKey));
    entry.vecMembers.push_back(WireVariant(std::move(value)));
    return entry;
}

std::string Join(const std::vector<WireValue>& vecValues, const char* pBetween)
{
    std::string sText;
    for (const WireValue& value : vecValues)
        sText += (sText.empty() ? "" : pBetween) + Describe(value);
    return sText;
}

} // namespace

WireValue WireNumber(char nType, std::uint64_t nNumber)
{
    return {std::string(1, nType), nNumber, "", {}};
}

WireValue WireBool(bool bValue)
{
    return WireNumber('b', bValue ? 1 : 0);
}

WireValue WireText(const std::string& sText)
{
    return {"s", 0, sText, {}};
}

WireValue WirePath(const std::string& sPath)
{
    return {"o", 0, sPath, {}};
}

WireValue WireVariant(WireValue contents)
{
    WireValue variant{"v", 0, "", {}};
    variant.vecMembers.push_back(std::move(contents));
    return variant;
}

WireValue WireStruct(std::vector<WireValue> vecMembers)
{
    std::string sSignature = "(";
    for (const WireValue& member : vecMembers)
        sSignature += member.sSignature;
    return {sSignature + ")", 0, "", std::move(vecMembers)};
}

WireValue WireArray(const std::string& sElementSignature, std::vector<WireValue> vecElements)
{
    return {"a" + sElementSignature, 0, "", std::move(vecElements)};
}

WireValue WireTexts(const std::vector<std::string>& vecTexts)
{
    std::vector<WireValue> vecElements;
    for (const std::string& sText : vecTexts)
        vecElements.push_back(WireText(sText));
    return WireArray("s", std::move(vecElements));
}

WireValue WireDictionary(WireProperties properties)
{
    std::vector<WireValue> vecEntries;
    vecEntries.reserve(properties.size());
    for (auto& [sKey, value] : properties)
        vecEntries.push_back(MakeEntry(sKey, std::move(value)));
    return WireArray("{sv}", std::move(vecEntries));
}

std::string Describe(const WireValue& value)
{
    switch (value.sSignature.front()) {
    case 's':
    case 'o':
    case 'g':
        return value.sSignature + '"' + value.sText + '"';
    case 'v':
        return "<" + Describe(value.vecMembers.front()) + ">";
    case '(':
        return "(" + Join(value.vecMembers, ", ") + ")";
    case '{':
        return Join(value.vecMembers, ": ");
    case 'a':
        return value.sSignature[1] == '{' ? "{" + Join(value.vecMembers, ", ") + "}"
                                          : "[" + Join(value.vecMembers, ", ") + "]";
    default:
        return value.sSignature + std::to_string(value.nNumber);
    }
}

std::string Describe(const std::vector<WireValue>& vecValues)
{
    return Join(vecValues, " ");
}

} // namespace Tovra::TestSupport
