#include "tests/support/DataTrees.h"

#include <array>
#include <dbus/dbus.h>

namespace Tovra::TestSupport
{

using DBus::Data;

namespace
{

constexpr std::array<Data::Type, 5> elementTypes = {Data::Bool, Data::UInt32, Data::String,
                                                    Data::ObjectPath, Data::Variant};
// As often as they are to be chosen; `Empty` stands for a tower, and the first is what ends a tree.
constexpr std::array<Data::Type, 11> valueTypes = {
    Data::Bool,  Data::UInt32,     Data::String,     Data::ObjectPath, Data::Array, Data::Array,
    Data::Array, Data::Dictionary, Data::Dictionary, Data::Dictionary, Data::Empty};
constexpr std::array<Data::Type, 9> allTypes = {Data::Variant,    Data::Invalid, Data::Empty,
                                                Data::Bool,       Data::UInt32,  Data::String,
                                                Data::ObjectPath, Data::Array,   Data::Dictionary};

// Whole characters of every length, the edges of what UTF-8 allows, and pieces of characters.
const std::array<std::string, 16> pieces = {"\xC3\xA9",
                                            "\xE2\x82\xAC",
                                            "\xF0\x9F\x98\x80",
                                            "\xEF\xBF\xBF",
                                            "\xF4\x8F\xBF\xBF",
                                            "\xF4\x90\x80",
                                            "\xED\xA0\x80",
                                            "\xC0\x80",
                                            "\xE0\x9F\xBF",
                                            "\xE2\x82",
                                            "\x80",
                                            "\xF0\x9F",
                                            "\xFF",
                                            std::string(1, 0),
                                            "a",
                                            "\xEF\xBF\xBD"};

class TreeMaker
{
public:
    TreeMaker(Choices& choicesToUse, bool bFlawsToo) : choices(choicesToUse), bFlaws(bFlawsToo) {}

    // nLeft: how many containers may be opened around a value inside this one.
    Data MakeValue(int nLeft)
    {
        const Data::Type type = valueTypes[choices.Below(valueTypes.size())];
        return type == Data::Empty ? MakeTower(nLeft) : MakeOfType(type, nLeft);
    }

private:
    // Deep trees are rare otherwise: arrays of one variant, as many as the choices say.
    Data MakeTower(int nLeft)
    {
        const int nMost = bFlaws ? 40 : nLeft / 2;
        const int nStoreys = nMost > 0 ? static_cast<int>(choices.Below(40)) % (nMost + 1) : 0;
        Data data = MakeLeaf(elementTypes[choices.Below(4)]);
        for (int nStorey = 0; nStorey < nStoreys; ++nStorey)
            data = Data::MakeArray(Data::Variant, {data.SetVariant(true)});
        return data;
    }

    Data MakeOfType(Data::Type type, int nLeft)
    {
        if (IsFlaw())
            return MakeOdd();
        if (type == Data::Array && nLeft >= 2)
            return MakeArray(nLeft);
        if (type == Data::Dictionary && nLeft >= 3)
            return MakeDictionary(nLeft);
        return MakeLeaf(type);
    }

    Data MakeLeaf(Data::Type type)
    {
        switch (type) {
        case Data::UInt32:
            return Data::MakeUInt32(choices.Next() * 0x01010101u);
        case Data::String:
            return Data::MakeString(MakeText());
        case Data::ObjectPath:
            return Data::MakeObjectPath(MakePath());
        default:
            return Data::MakeBool(choices.Below(2) != 0);
        }
    }

    Data MakeOdd()
    {
        switch (choices.Below(4)) {
        case 0:
            return GetInvalid();
        case 1:
            return Data();
        case 2:
            return Data().SetVariant(true);
        default:
            return Data::MakeObjectPath(MakeText());
        }
    }

    Data MakeArray(int nLeft)
    {
        const Data::Type elementType = MakeElementType();
        std::vector<Data> vecElements;
        for (std::uint32_t nCount = choices.Below(5); nCount > 0; --nCount)
            vecElements.push_back(MakeElement(elementType, nLeft - 1));
        return Data::MakeArray(elementType, std::move(vecElements));
    }

    Data MakeDictionary(int nLeft)
    {
        const Data::Type elementType = MakeElementType();
        std::map<std::string, Data> mapEntries;
        for (std::uint32_t nCount = choices.Below(5); nCount > 0; --nCount)
            mapEntries[MakeText()] = MakeElement(elementType, nLeft - 2);
        return Data::MakeDictionary(elementType, std::move(mapEntries));
    }

    Data::Type MakeElementType()
    {
        return IsFlaw() ? allTypes[choices.Below(allTypes.size())]
                        : elementTypes[choices.Below(elementTypes.size())];
    }

    Data MakeElement(Data::Type elementType, int nLeft)
    {
        const bool bVariant = (elementType == Data::Variant) != IsFlaw();
        Data element = bVariant ? MakeValue(nLeft - 1) : MakeOfType(elementType, nLeft);
        element.SetVariant(bVariant || element.IsVariant());
        return element;
    }

    std::string MakeText()
    {
        std::string sText;
        const bool bPieces = choices.Below(2) != 0;
        for (std::uint32_t nCount = choices.Below(8); nCount > 0; --nCount) {
            if (bPieces)
                sText += pieces[choices.Below(pieces.size())];
            else
                sText += static_cast<char>(choices.Next());
        }
        return sText;
    }

    std::string MakePath()
    {
        std::string sPath;
        for (std::uint32_t nCount = choices.Below(4); nCount > 0; --nCount)
            sPath += std::string("/") + "aZ_09kKxX"[choices.Below(9)];
        return sPath.empty() ? "/" : sPath;
    }

    bool IsFlaw() { return bFlaws && choices.Below(16) == 15; }

    Choices& choices;
    const bool bFlaws;
};

Data MakeTree(Choices& choices, bool bFlaws)
{
    const bool bVariant = choices.Below(4) == 3;
    return TreeMaker(choices, bFlaws).MakeValue(bVariant ? 63 : 64).SetVariant(bVariant);
}

} // namespace

Data MakeSendableTree(Choices& choices)
{
    return MakeTree(choices, false);
}

Data MakeAnyTree(Choices& choices)
{
    return MakeTree(choices, true);
}

const Data& GetInvalid()
{
    static const Data invalid = [] {
        DBusMessage* const pMessage = dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_CALL);
        const dbus_int32_t nNumber = 0;
        dbus_message_append_args(pMessage, DBUS_TYPE_INT32, &nNumber, DBUS_TYPE_INVALID);
        return DBus::Message::Adopt(pMessage).Contents();
    }();
    return invalid;
}

} // namespace Tovra::TestSupport
