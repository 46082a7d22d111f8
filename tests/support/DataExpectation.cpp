#include "tests/support/DataExpectation.h"

#include <algorithm>
#include <cstddef>

namespace Tovra::TestSupport
{

using DBus::Data;

namespace
{

struct ByteRange {
    unsigned char nFirst;
    unsigned char nLast;
};

// Table 3-7 of the Unicode Standard, without U+0000.
const std::vector<std::vector<ByteRange>> vecWellFormed = {
    {{0x01, 0x7F}},
    {{0xC2, 0xDF}, {0x80, 0xBF}},
    {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}},
    {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}},
    {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
    {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}},
};

bool Begins(const std::string& sText, std::size_t nPosition, const std::vector<ByteRange>& vecForm)
{
    if (sText.size() - nPosition < vecForm.size())
        return false;
    return std::all_of(vecForm.begin(), vecForm.end(), [&](const ByteRange& range) {
        const auto nByte = static_cast<unsigned char>(sText[nPosition++]);
        return range.nFirst <= nByte && nByte <= range.nLast;
    });
}

std::string Code(Data::Type type)
{
    switch (type) {
    case Data::Variant:
        return "v";
    case Data::Bool:
        return "b";
    case Data::UInt32:
        return "u";
    case Data::String:
        return "s";
    case Data::ObjectPath:
        return "o";
    default:
        return ""; // nothing that an array can be declared with
    }
}

// What the value occupies in a message; empty if it has no place in one.
std::string OuterSignature(const Data& data)
{
    if (data.IsVariant())
        return "v";
    return Code(data.GetType());
}

bool IsPath(const std::string& sText)
{
    if (sText.empty() || sText[0] != '/')
        return false;
    if (sText == "/")
        return true;
    char nPrevious = 'x';
    for (const char nCharacter : sText) {
        const bool bLetter = (nCharacter >= 'a' && nCharacter <= 'z') ||
                             (nCharacter >= 'A' && nCharacter <= 'Z') ||
                             (nCharacter >= '0' && nCharacter <= '9') || nCharacter == '_';
        if (!bLetter && (nCharacter != '/' || nPrevious == '/'))
            return false;
        nPrevious = nCharacter;
    }
    return nPrevious != '/';
}

// nLeft: how many containers may still be opened around a value inside this one.
std::optional<Data> Expect(const Data& data, int nLeft);

std::optional<Data> ExpectElement(const Data& element, Data::Type elementType, int nLeft)
{
    const std::string sCode = Code(elementType);
    if (sCode.empty() || OuterSignature(element) != sCode)
        return std::nullopt;
    return Expect(element, nLeft);
}

std::optional<Data> ExpectArray(const Data& data, int nLeft)
{
    if (Code(data.GetElementType()).empty())
        return std::nullopt;
    std::vector<Data> vecElements;
    for (const Data& element : data.As<std::vector<Data>>()) {
        auto expected = ExpectElement(element, data.GetElementType(), nLeft - 1);
        if (!expected)
            return std::nullopt;
        vecElements.push_back(std::move(*expected));
    }
    if (vecElements.empty())
        return Data();
    const Data::Type elementType = vecElements[0].GetType();
    return Data::MakeArray(elementType, std::move(vecElements));
}

std::optional<Data> ExpectDictionary(const Data& data, int nLeft)
{
    if (Code(data.GetElementType()).empty())
        return std::nullopt;
    std::map<std::string, Data> mapEntries;
    for (const auto& [sKey, value] : data.As<std::map<std::string, Data>>()) {
        auto expected = ExpectElement(value, data.GetElementType(), nLeft - 2);
        if (!expected)
            return std::nullopt;
        mapEntries.insert_or_assign(ExpectedText(sKey), std::move(*expected));
    }
    if (mapEntries.empty())
        return Data();
    const Data::Type elementType = mapEntries.begin()->second.GetType();
    return Data::MakeDictionary(elementType, std::move(mapEntries));
}

std::optional<Data> ExpectContents(const Data& data, int nLeft)
{
    switch (data.GetType()) {
    case Data::Bool:
        return Data::MakeBool(data.As<bool>());
    case Data::UInt32:
        return Data::MakeUInt32(data.As<std::uint32_t>());
    case Data::String:
        return Data::MakeString(ExpectedText(data.As<std::string>()));
    case Data::ObjectPath:
        if (!IsPath(data.ObjectPathText()))
            return std::nullopt;
        return Data::MakeObjectPath(data.ObjectPathText());
    case Data::Array:
        return ExpectArray(data, nLeft);
    case Data::Dictionary:
        return ExpectDictionary(data, nLeft);
    default:
        return std::nullopt;
    }
}

std::optional<Data> Expect(const Data& data, int nLeft)
{
    nLeft -= data.IsVariant() ? 1 : 0;
    if (nLeft < 0)
        return std::nullopt;
    std::optional<Data> expected = ExpectContents(data, nLeft);
    if (expected)
        expected->SetVariant(data.IsVariant());
    return expected;
}

} // namespace

std::string ExpectedText(const std::string& sText)
{
    std::string sExpected;
    for (std::size_t nPosition = 0; nPosition < sText.size();) {
        const auto form = std::find_if(vecWellFormed.begin(), vecWellFormed.end(),
                                       [&](const std::vector<ByteRange>& vecForm) {
                                           return Begins(sText, nPosition, vecForm);
                                       });
        const std::size_t nLength = form == vecWellFormed.end() ? 1 : form->size();
        sExpected +=
            form == vecWellFormed.end() ? "\xEF\xBF\xBD" : sText.substr(nPosition, nLength);
        nPosition += nLength;
    }
    return sExpected;
}

std::optional<Data> Expectation(const Data& data)
{
    return Expect(data, 64);
}

} // namespace Tovra::TestSupport
