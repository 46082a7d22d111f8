#include "tests/support/DataText.h"

namespace Tovra::TestSupport
{

using DBus::Data;

namespace
{

const char* TypeName(Data::Type type)
{
    switch (type) {
    case Data::Variant:
        return "Variant";
    case Data::Invalid:
        return "Invalid";
    case Data::Empty:
        return "Empty";
    case Data::Bool:
        return "Bool";
    case Data::UInt32:
        return "UInt32";
    case Data::String:
        return "String";
    case Data::ObjectPath:
        return "ObjectPath";
    case Data::Array:
        return "Array";
    case Data::Dictionary:
        return "Dictionary";
    }
    return "?";
}

std::string DescribeArray(const Data& data)
{
    std::string sText;
    for (const Data& element : data.As<std::vector<Data>>())
        sText += (sText.empty() ? "" : ", ") + Describe(element);
    return std::string(" of ") + TypeName(data.GetElementType()) + " [" + sText + "]";
}

std::string DescribeDictionary(const Data& data)
{
    std::string sText;
    for (const auto& [sKey, value] : data.As<std::map<std::string, Data>>())
        sText += (sText.empty() ? "" : ", ") + Quote(sKey) + ": " + Describe(value);
    return std::string(" of ") + TypeName(data.GetElementType()) + " {" + sText + "}";
}

std::string DescribeContents(const Data& data)
{
    switch (data.GetType()) {
    case Data::Bool:
        return data.As<bool>() ? " true" : " false";
    case Data::UInt32:
        return " " + std::to_string(data.As<std::uint32_t>());
    case Data::String:
        return " " + Quote(data.As<std::string>());
    case Data::ObjectPath:
        return " " + Quote(data.ObjectPathText());
    case Data::Array:
        return DescribeArray(data);
    case Data::Dictionary:
        return DescribeDictionary(data);
    default:
        return "";
    }
}

} // namespace

std::string Describe(const Data& data)
{
    const std::string sText = TypeName(data.GetType()) + DescribeContents(data);
    return data.IsVariant() ? "<" + sText + ">" : sText;
}

std::string Describe(const std::vector<Data>& vecData)
{
    std::string sText;
    for (const Data& data : vecData)
        sText += Describe(data) + "\n";
    return sText;
}

std::string Quote(const std::string& sText)
{
    constexpr const char* pDigits = "0123456789ABCDEF";
    std::string sQuoted = "\"";
    for (const char nCharacter : sText) {
        const auto nByte = static_cast<unsigned char>(nCharacter);
        if (nByte < 0x20 || nByte > 0x7E || nByte == '"' || nByte == '\\')
            sQuoted += {'\\', 'x', pDigits[nByte >> 4], pDigits[nByte & 15]};
        else
            sQuoted += nCharacter;
    }
    return sQuoted + "\"";
}

} // namespace Tovra::TestSupport
