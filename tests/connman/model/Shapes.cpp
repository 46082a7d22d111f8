#include "tests/connman/model/Shapes.h"

#include <algorithm>

namespace Tovra::ConnManModel
{

using namespace TestSupport;

namespace
{

template <class Table> const auto& At(const Table& table, unsigned nIndex)
{
    return table[nIndex % table.size()];
}

const WireValue number = WireNumber('u', 7);
const WireValue uncarried = WireNumber('i', 7);
const WireValue none = WireTexts({});
const WireValue twoTexts = WireStruct({WireText("ready"), WireText("online")});

/** An array of such values, each with a type of its own. */
WireValue Mixed(std::vector<WireValue> vecValues)
{
    std::vector<WireValue> vecVariants;
    for (WireValue& value : vecValues)
        vecVariants.push_back(WireVariant(std::move(value)));
    return WireArray("v", std::move(vecVariants));
}

/** An "a{ss}". */
WireValue Plain(const std::vector<std::pair<std::string, std::string>>& vecTexts)
{
    std::vector<WireValue> vecEntries;
    for (const auto& [sKey, sText] : vecTexts)
        vecEntries.push_back({"{ss}", 0, "", {WireText(sKey), WireText(sText)}});
    return WireArray("{ss}", std::move(vecEntries));
}

/** An "a{uv}": a dictionary in which nothing is found. */
WireValue Numbered(const WireValue& value)
{
    return WireArray("{uv}", {{"{uv}", 0, "", {number, WireVariant(value)}}});
}

/** A property that takes the place of the one it should be; without a value it is missing. */
struct Flaw {
    const char* sKey;
    std::vector<WireValue> vecValue;
};

const std::vector<Flaw> vecServiceFlaws = {
    {"Type", {}},
    {"Type", {number}},
    {"Type", {WirePath("/wifi")}},
    {"Type", {none}},
    {"Type", {WireVariant(WireText("wifi"))}},
    {"State", {}},
    {"State", {number}},
    {"State", {WirePath("/ready")}},
    {"State", {twoTexts}},
    {"State", {WireVariant(WireVariant(WireText("ready")))}},
    {"State", {{"g", 0, "s", {}}}},
    {"Name", {number}},
    {"Name", {WirePath("/home")}},
    {"Name", {none}},
    {"Ethernet", {}},
    {"Ethernet", {WireText("eth0")}},
    {"Ethernet", {twoTexts}},
    {"Ethernet", {WireDictionary({{"Interface", WireText("eth0")}})}},
    {"Ethernet", {WireDictionary({{"Address", WireText("02:00:00:00:00:00")}})}},
    {"Ethernet", {WireDictionary({{"Interface", number}, {"Address", WireText("")}})}},
    {"Ethernet", {Plain({{"Interface", "eth0"}, {"Address", "02:00:00:00:00:01"}})}},
    {"Ethernet", {Numbered(WireText("eth0"))}},
    {"IPv4", {}},
    {"IPv4", {WireText("192.0.2.1")}},
    {"IPv4", {twoTexts}},
    {"IPv4", {WireDictionary({{"Address", WireText("192.0.2.1")}})}},
    {"IPv4", {WireDictionary({{"Method", number}})}},
    {"IPv4", {WireDictionary({{"Method", none}, {"Address", WireText("192.0.2.1")}})}},
    {"IPv4", {WireDictionary({{"Method", WireText("manual")}, {"Address", number}})}},
    {"IPv4", {WireDictionary({{"Method", WireText("dhcp")}, {"Address", WirePath("/192")}})}},
    {"IPv4", {WireDictionary({{"Method", WireText("dhcp")}, {"Netmask", uncarried}})}},
    {"IPv4", {Plain({{"Method", "manual"}, {"Address", "192.0.2.2"}})}},
    {"IPv4", {Numbered(WireText("dhcp"))}},
    {"Nameservers", {}},
    {"Nameservers", {WireText("192.0.2.53")}},
    {"Nameservers", {twoTexts}},
    {"Nameservers", {WireArray("u", {number})}},
    {"Nameservers", {WireArray("i", {uncarried})}},
    {"Nameservers", {WireArray("o", {WirePath("/53")})}},
    {"Nameservers", {WireArray("as", {none})}},
    {"Nameservers", {Mixed({WireText("192.0.2.53"), number})}},
    {"Nameservers", {Mixed({WireText("192.0.2.53"), WireText("192.0.2.54")})}},
    {"Security", {number}},
    {"Security", {Mixed({WireText("psk"), none})}},
    {"Security", {Plain({{"psk", "wps"}})}},
    {"Strength", {WireText("50")}},
    {"Strength", {uncarried}},
    {"Strength", {none}},
    {"Strength", {WireBool(true)}},
    {"Strength", {WireNumber('q', 300)}},
    {"Strength", {WireNumber('u', 4294967295)}},
    {"Strength", {WireVariant(WireNumber('y', 60))}},
    // What the smallest key holds tells whether a dictionary has contents.
    {"AAA", {none}},
    {"AAA", {uncarried}},
    {"AAA", {WireVariant(none)}},
    {"AAA", {number}},
    {"zzz", {none}},
    {"zzz", {uncarried}},
};

const std::vector<Flaw> vecTechnologyFlaws = {
    {"Name", {}},
    {"Name", {number}},
    {"Name", {WirePath("/WiFi")}},
    {"Type", {}},
    {"Type", {none}},
    {"Powered", {}},
    {"Powered", {number}},
    {"Powered", {WireText("true")}},
    {"Powered", {WireVariant(WireBool(true))}},
    {"Connected", {}},
    {"Connected", {uncarried}},
    {"Connected", {none}},
    {"AAA", {none}},
    {"AAA", {uncarried}},
    {"TetheringFreq", {uncarried}},
};

WireProperties Spoil(WireProperties properties, const Flaw& flaw)
{
    const auto isIt = [&](const auto& property) { return property.first == flaw.sKey; };
    properties.erase(std::remove_if(properties.begin(), properties.end(), isIt), properties.end());
    for (const WireValue& value : flaw.vecValue)
        properties.emplace_back(flaw.sKey, value);
    return properties;
}

struct Parts {
    WireValue path;
    WireValue dictionary;
    WireValue other; ///< the properties with a second State, in front of the first one
};

using Entry = WireValue (*)(const Parts& parts);

WireValue Second(const Parts& parts, const WireValue& second)
{
    return WireStruct({parts.path, second});
}

const std::vector<Entry> vecEntryShapes = {
    [](const Parts& parts) { return Second(parts, WireDictionary({})); },
    [](const Parts& parts) { return Second(parts, parts.dictionary); },
    [](const Parts& parts) { return Second(parts, parts.other); },
    [](const Parts& parts) { return Second(parts, WireVariant(parts.dictionary)); },
    [](const Parts& parts) { return Second(parts, WireVariant(WireDictionary({}))); },
    [](const Parts& parts) {
        return Mixed({parts.path, parts.dictionary});
    },
    [](const Parts& parts) {
        return Mixed({parts.path, parts.dictionary, number});
    },
    [](const Parts& parts) {
        return WireStruct({WireVariant(parts.path), parts.dictionary});
    },
    [](const Parts& parts) {
        return WireStruct({parts.path, parts.dictionary, uncarried});
    },
    [](const Parts& parts) {
        return Second(parts, Plain({{"Type", "wifi"}, {"State", "ready"}}));
    },
    [](const Parts& parts) {
        return Second(parts, Plain({{"Type", "wifi"}}));
    },
    [](const Parts& parts) { return Second(parts, uncarried); },
    [](const Parts& parts) { return Second(parts, WireArray("i", {uncarried})); },
    [](const Parts& parts) { return Second(parts, WireArray("as", {none})); },
    [](const Parts& parts) {
        return Second(parts, WireArray("as", {WireTexts({"x"}), none}));
    },
    [](const Parts& parts) {
        return Second(parts, WireTexts({"State", "ready"}));
    },
    [](const Parts& parts) {
        return Second(parts, WireStruct({none, parts.dictionary}));
    },
    [](const Parts& parts) { return Second(parts, WireStruct({parts.dictionary})); },
    [](const Parts& parts) { return Second(parts, WireText("ready")); },
    [](const Parts& parts) { return Second(parts, WireText("")); },
    [](const Parts& parts) { return Second(parts, number); },
    [](const Parts& parts) { return Second(parts, WireBool(false)); },
    [](const Parts& parts) { return Second(parts, parts.path); },
    [](const Parts& parts) { return WireStruct({parts.path}); },
    [](const Parts& parts) { return WireArray("o", {parts.path}); },
    [](const Parts& parts) {
        return WireArray("o", {parts.path, parts.path});
    },
    [](const Parts& parts) {
        return WireStruct({WireText(parts.path.sText), parts.dictionary});
    },
    [](const Parts& parts) {
        return WireStruct({WireText(parts.path.sText), none});
    },
    [](const Parts& parts) {
        return WireStruct({number, parts.dictionary});
    },
    [](const Parts& parts) {
        return WireStruct({uncarried, parts.dictionary});
    },
    [](const Parts& parts) {
        return WireStruct({none, parts.dictionary});
    },
    [](const Parts& parts) {
        return WireStruct({parts.dictionary, parts.path});
    },
    [](const Parts& parts) { return parts.dictionary; },
    [](const Parts& parts) { return parts.path; },
    [](const Parts& parts) { return WireText(parts.path.sText); },
    [](const Parts&) { return number; },
    [](const Parts&) { return uncarried; },
    [](const Parts&) { return none; },
};

WireValue Shape(unsigned nShape, const std::string& sPath, const WireProperties& properties,
                const std::vector<Flaw>& vecFlaws)
{
    const auto nOf = static_cast<unsigned>(vecEntryShapes.size() + vecFlaws.size());
    const unsigned nChosen = nShape % nOf;
    if (nChosen >= vecEntryShapes.size())
        return MakeEntry(sPath, Spoil(properties, vecFlaws[nChosen - vecEntryShapes.size()]));
    WireProperties other = properties;
    other.insert(other.begin(), {"State", WireText("online")});
    return vecEntryShapes[nChosen](
        {WirePath(sPath), WireDictionary(properties), WireDictionary(other)});
}

using List = std::vector<WireValue> (*)(const WireValue& list);

const std::vector<List> vecListShapes = {
    [](const WireValue& list) { return std::vector{WireArray(list.sSignature.substr(1))}; },
    [](const WireValue&) { return std::vector<WireValue>(); },
    [](const WireValue&) { return std::vector{WireText("Input/output error")}; },
    [](const WireValue& list) {
        return std::vector{list, WireText("more")};
    },
    [](const WireValue& list) {
        return std::vector{WireText("first"), list};
    },
    [](const WireValue& list) { return std::vector{WireVariant(WireVariant(list))}; },
    [](const WireValue& list) { return std::vector{WireArray(list.sSignature, {list})}; },
    [](const WireValue& list) {
        return std::vector{WireStruct({list, number})};
    },
    [](const WireValue& list) {
        return std::vector{list.vecMembers.empty() ? number : WireStruct(list.vecMembers)};
    },
    [](const WireValue& list) {
        return std::vector{WireDictionary({{"Services", list}})};
    },
    [](const WireValue& list) { return std::vector{Numbered(list)}; },
    [](const WireValue&) {
        return std::vector{WireTexts({"a", "b"})};
    },
    [](const WireValue&) { return std::vector{WireArray("i", {uncarried})}; },
    [](const WireValue&) { return std::vector{WireArray("as", {none})}; },
    [](const WireValue&) { return std::vector{WirePath("/")}; },
    [](const WireValue&) { return std::vector{number}; },
    [](const WireValue&) { return std::vector{WireBool(true)}; },
    [](const WireValue&) { return std::vector{uncarried}; },
};

const std::vector<std::vector<WireValue>> vecPropertyShapes = {
    {},
    {WireText("State")},
    {WireText("Name")},
    {WireText("Strength")},
    {WireText("")},
    {WireText("strength"), WireVariant(WireNumber('y', 3))},
    {WireText("State"), uncarried},
    {WireText("State"), WireVariant(WireText("ready")), number},
    {WireVariant(WireText("State")), WireText("ready")},
    {WireVariant(WireText("Strength")), WireNumber('y', 4)},
    {WireText("Strength"), WireVariant(WireNumber('q', 500))},
    {WireText("Strength"), WireVariant(WireNumber('u', 70000))},
    {WireText("Strength"), WireVariant(WireVariant(WireNumber('y', 5)))},
    {WireText("Strength"), WireVariant(uncarried)},
    {WireText("Strength"), WireVariant(WireText("5"))},
    {WireText("Strength"), WireVariant(WireBool(true))},
    {WireText("Strength"), WireVariant(none)},
    {WireText("Strength"), WireStruct({number})},
    {number, WireVariant(number)},
    {uncarried, WireVariant(number)},
    {WirePath("/State"), WireVariant(WireText("ready"))},
    {WirePath("/Strength"), WireVariant(number)},
    {WireTexts({"State"}), WireVariant(WireText("ready"))},
    {none, WireVariant(number)},
    {WireStruct({WireText("Strength"), number})},
    {WireDictionary({{"Strength", number}})},
};

} // namespace

WireValue ServiceShape(unsigned nShape, const std::string& sPath, const Look& look)
{
    return Shape(nShape, sPath, ServiceProperties(sPath, look), vecServiceFlaws);
}

WireValue TechnologyShape(unsigned nShape, const std::string& sPath, const Look& look)
{
    return Shape(nShape, sPath, TechnologyProperties(sPath, look), vecTechnologyFlaws);
}

std::vector<WireValue> ListShape(unsigned nShape, std::vector<WireValue> vecEntries)
{
    return At(vecListShapes, nShape)(MakeList(std::move(vecEntries)));
}

std::vector<WireValue> PropertyShape(unsigned nShape)
{
    return At(vecPropertyShapes, nShape);
}

WireValue MakeEntry(const std::string& sPath, WireProperties properties)
{
    std::vector<WireValue> vecMembers(2);
    vecMembers[0] = WirePath(sPath);
    vecMembers[1] = WireDictionary(std::move(properties));
    return WireStruct(std::move(vecMembers));
}

WireValue MakeList(std::vector<WireValue> vecEntries)
{
    if (vecEntries.empty())
        return WireArray("(oa{sv})");
    const std::string sSignature = vecEntries.front().sSignature;
    const bool bAlike = std::all_of(vecEntries.begin(), vecEntries.end(), [&](const auto& entry) {
        return entry.sSignature == sSignature;
    });
    return bAlike ? WireArray(sSignature, std::move(vecEntries)) : Mixed(std::move(vecEntries));
}

} // namespace Tovra::ConnManModel
