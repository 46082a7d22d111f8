#include "tests/connman/RecordChange.h"

#include "tests/support/DataText.h"
#include "tests/support/DataTrees.h"

#include <algorithm>

namespace Tovra::RecordChange
{

using DBus::Data;

namespace
{

const char* KindName(Kind kind)
{
    constexpr const char* names[] = {
        "Missing",
        "Empty",
        "Invalid",
        "Number",
        "Flag",
        "Path",
        "Text",
        "EmptyTexts",
        "Texts",
        "TextsAndNumber",
        "TextsAfterInvalid",
        "Paths",
        "ListOfTexts",
        "EmptySection",
        "Section",
    };
    return names[static_cast<int>(kind)];
}

/** The dictionary that holds the key, and the key in it. */
std::pair<Properties&, std::string> Find(Properties& properties, const std::string& sKey)
{
    const std::size_t nSlash = sKey.find('/');
    if (nSlash == std::string::npos)
        return {properties, sKey};
    return {properties[sKey.substr(0, nSlash)].As<Properties>(), sKey.substr(nSlash + 1)};
}

std::string WithoutSlash(std::string sKey)
{
    sKey.erase(std::remove(sKey.begin(), sKey.end(), '/'), sKey.end());
    return sKey;
}

} // namespace

Data MakeValue(Kind kind)
{
    switch (kind) {
    case Kind::Missing:
    case Kind::Empty:
        break;
    case Kind::Invalid:
        return TestSupport::GetInvalid();
    case Kind::Number:
        return Data::MakeUInt32(1).SetVariant(true);
    case Kind::Flag:
        return Data::MakeBool(true, true);
    case Kind::Path:
        return Data::MakeObjectPath("/path").SetVariant(true);
    case Kind::Text:
        return ListData::Text("text");
    case Kind::EmptyTexts:
        return MakeTexts({});
    case Kind::Texts:
        return MakeTexts({"one", "two"});
    case Kind::TextsAndNumber:
        return Data::MakeArray(Data::String, {Data::MakeString("one"), Data::MakeUInt32(2)});
    case Kind::TextsAfterInvalid:
        return Data::MakeArray(Data::Invalid, {TestSupport::GetInvalid(), Data::MakeString("two")});
    case Kind::Paths:
        return Data::MakeArray(Data::ObjectPath, {Data::MakeObjectPath("/path")});
    case Kind::ListOfTexts:
        return Data::MakeArray(Data::Array, {Data::MakeStringArray({"one"})});
    case Kind::EmptySection:
        return MakeSection({});
    case Kind::Section:
        return MakeSection({{"Other", ListData::Text("text")}});
    }
    return Data();
}

Data& At(Properties& properties, const std::string& sKey)
{
    const auto [section, sName] = Find(properties, sKey);
    return section[sName];
}

Properties Changed(Properties properties, const Change& change)
{
    const auto [section, sName] = Find(properties, change.pKey);
    if (change.kind == Kind::Missing)
        section.erase(sName);
    else
        section[sName] = MakeValue(change.kind);
    return properties;
}

std::string GetName(const Change& change)
{
    return WithoutSlash(change.pKey) + KindName(change.kind);
}

std::string GetTestName(const testing::TestParamInfo<Change>& info)
{
    return GetName(info.param);
}

std::string GetKeyTestName(const testing::TestParamInfo<const char*>& info)
{
    return WithoutSlash(info.param);
}

std::string GetKindTestName(const testing::TestParamInfo<Kind>& info)
{
    return KindName(info.param);
}

Data MakeTexts(const std::vector<std::string>& vecTexts)
{
    return Data::MakeStringArray(vecTexts).SetVariant(true);
}

Data MakeSection(Properties properties)
{
    return Data::MakeDictionary(Data::String, std::move(properties)).SetVariant(true);
}

std::string Describe(const Properties& properties)
{
    return TestSupport::Describe(Data::MakeDictionary(Data::Variant, properties));
}

} // namespace Tovra::RecordChange
