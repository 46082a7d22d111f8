#include "simulator/Value.h"
#include "simulator/Signature.h"

#include <limits>

namespace Tovra::Simulator
{

namespace
{

[[noreturn]] void Fail(const std::string& sWhere, const std::string& sNeeded, const Json& found)
{
    throw Problem(sWhere + ": " + sNeeded + " is needed, not " + found.type_name());
}

template <class Number> void CheckNumber(const Json& value, const std::string& sWhere)
{
    constexpr auto least = std::numeric_limits<Number>::min();
    constexpr auto most = std::numeric_limits<Number>::max();
    // nlohmann compares a large unsigned number with a signed one as if it were negative.
    const bool bNegative =
        value.is_number_integer() && !value.is_number_unsigned() && value.get<std::int64_t>() < 0;
    bool bFits = false;
    if (bNegative)
        bFits = least != 0 && value.get<std::int64_t>() >= static_cast<std::int64_t>(least);
    else if (value.is_number_integer())
        bFits = value.get<std::uint64_t>() <= static_cast<std::uint64_t>(most);
    if (!bFits)
        throw Problem(sWhere + ": a whole number from " + std::to_string(least) + " to " +
                      std::to_string(most) + " is needed");
}

void CheckText(char nType, const Json& value, const std::string& sWhere)
{
    if (!value.is_string())
        Fail(sWhere, "a string", value);
    const auto& sText = value.get_ref<const std::string&>();
    if (sText.find('\0') != std::string::npos)
        throw Problem(sWhere + ": a D-Bus string cannot hold a zero character");
    if (nType == 'o' && !IsObjectPath(sText))
        throw Problem(sWhere + ": \"" + sText + "\" is no object path");
    if (nType == 'g')
        SplitSignature(sText);
}

void CheckBasic(char nType, const Json& value, const std::string& sWhere)
{
    switch (nType) {
    case 'y':
        return CheckNumber<std::uint8_t>(value, sWhere);
    case 'n':
        return CheckNumber<std::int16_t>(value, sWhere);
    case 'q':
        return CheckNumber<std::uint16_t>(value, sWhere);
    case 'i':
        return CheckNumber<std::int32_t>(value, sWhere);
    case 'u':
        return CheckNumber<std::uint32_t>(value, sWhere);
    case 'x':
        return CheckNumber<std::int64_t>(value, sWhere);
    case 't':
        return CheckNumber<std::uint64_t>(value, sWhere);
    case 'b':
        return value.is_boolean() ? void() : Fail(sWhere, "true or false", value);
    case 'd':
        return value.is_number() ? void() : Fail(sWhere, "a number", value);
    case 'h':
        return value.is_null() ? void() : Fail(sWhere, "null", value);
    default:
        return CheckText(nType, value, sWhere);
    }
}

void CheckDictionary(const std::string& sType, const Json& value, const std::string& sWhere)
{
    const auto [sKey, sValue] = SplitDictionaryEntry(sType);
    if (value.is_object()) {
        for (const auto& [sName, entry] : value.items()) {
            CheckBasic(sKey[0], sName, std::string(sWhere).append(", key ").append(sName));
            CheckValue(sValue, entry, std::string(sWhere).append(".").append(sName));
        }
        return;
    }
    if (!value.is_array())
        Fail(sWhere, "an object", value);
    for (std::size_t n = 0; n < value.size(); ++n) {
        const std::string sEntry = sWhere + "[" + std::to_string(n) + "]";
        if (!value[n].is_array() || value[n].size() != 2)
            throw Problem(sEntry + ": a list of a key and a value is needed");
        CheckBasic(sKey[0], value[n][0], sEntry + "[0]");
        CheckValue(sValue, value[n][1], sEntry + "[1]");
    }
}

void CheckList(const std::vector<std::string>& vecTypes, const Json& value,
               const std::string& sWhere)
{
    if (!value.is_array() || value.size() != vecTypes.size())
        throw Problem(sWhere + ": a list of " + std::to_string(vecTypes.size()) + " is needed");
    for (std::size_t n = 0; n < vecTypes.size(); ++n)
        CheckValue(vecTypes[n], value[n], sWhere + "[" + std::to_string(n) + "]");
}

void CheckArray(const std::string& sType, const Json& value, const std::string& sWhere)
{
    if (!value.is_array())
        Fail(sWhere, "a list", value);
    for (std::size_t n = 0; n < value.size(); ++n)
        CheckValue(sType.substr(1), value[n], sWhere + "[" + std::to_string(n) + "]");
}

} // namespace

Value MakeBool(bool bValue)
{
    return {"b", bValue};
}

Value MakeByte(unsigned nValue)
{
    return {"y", nValue};
}

Value MakeUInt16(unsigned nValue)
{
    return {"q", nValue};
}

Value MakeInt32(int nValue)
{
    return {"i", nValue};
}

Value MakeString(const std::string& sText)
{
    return {"s", sText};
}

Value MakeObjectPath(const std::string& sPath)
{
    return {"o", sPath};
}

Value MakeStrings(const std::vector<std::string>& vecTexts)
{
    Json list = Json::array();
    for (const std::string& sText : vecTexts)
        list.push_back(sText);
    return {"as", std::move(list)};
}

Json MakeVariant(Value value)
{
    return Json::array({std::move(value.sSignature), std::move(value.contents)});
}

Json MakeDictionary(Properties properties)
{
    Json dictionary = Json::object();
    for (auto& property : properties)
        dictionary[property.first] = MakeVariant(std::move(property.second));
    return dictionary;
}

Value MakeDictionaryValue(Properties properties)
{
    return {"a{sv}", MakeDictionary(std::move(properties))};
}

Value MakeEmpty(const std::string& sSignature)
{
    switch (sSignature.at(0)) {
    case 'b':
        return {sSignature, false};
    case 's':
    case 'g':
        return {sSignature, ""};
    case 'o':
        return {sSignature, "/"};
    case 'a':
        return {sSignature, sSignature[1] == '{' ? Json::object() : Json::array()};
    default:
        return {sSignature, 0};
    }
}

void CheckValue(const std::string& sType, const Json& value, const std::string& sWhere)
{
    if (sType[0] == 'v')
        ReadValue(value, sWhere);
    else if (sType[0] == '(')
        CheckList(SplitStruct(sType), value, sWhere);
    else if (sType[0] == 'a' && sType[1] == '{')
        CheckDictionary(sType, value, sWhere);
    else if (sType[0] == 'a')
        CheckArray(sType, value, sWhere);
    else
        CheckBasic(sType[0], value, sWhere);
}

void CheckArguments(const Arguments& arguments, const std::string& sWhere)
{
    CheckList(SplitSignature(arguments.sSignature), arguments.values, sWhere);
}

Value ReadValue(const Json& pair, const std::string& sWhere)
{
    if (!pair.is_array() || pair.size() != 2 || !pair[0].is_string())
        throw Problem(sWhere +
                      R"(: a list of a signature and a value is needed, as ["s", "text"])");
    Value value{pair[0].get<std::string>(), pair[1]};
    CheckSingleType(value.sSignature);
    CheckValue(value.sSignature, value.contents, sWhere);
    return value;
}

} // namespace Tovra::Simulator
