#include "Include/D-Bus.h"
#include "tests/support/DataText.h"
#include "tests/support/DataTrees.h"

#include <gtest/gtest.h>

namespace Tovra::DBus
{

using TestSupport::Describe;
using Vector = std::vector<Data>;
using Map = std::map<std::string, Data>;

namespace
{

static_assert(std::is_nothrow_default_constructible_v<Data>);
static_assert(std::is_nothrow_move_constructible_v<Data>);
static_assert(std::is_nothrow_move_assignable_v<Data>);
static_assert(std::is_nothrow_destructible_v<Data>);
static_assert(std::is_copy_constructible_v<Data> && std::is_copy_assignable_v<Data>);
static_assert(!std::is_nothrow_copy_constructible_v<Data>, "a copy allocates");

// A text or a flag becomes a value only by the name of what it becomes.
static_assert(!std::is_convertible_v<bool, Data> && !std::is_constructible_v<Data, bool>);
static_assert(!std::is_convertible_v<const char*, Data>);
static_assert(!std::is_convertible_v<std::string, Data>);
static_assert(!std::is_convertible_v<const DBusMessageIter*, Data>);

const std::string sLong(100, 'x');

/** One value of every type, the texts both short and too long to be stored in place. */
Vector MakeSamples()
{
    const Data list = Data::MakeStringArray({"a", sLong});
    const Data marked = Data(list).SetVariant(true);
    return {
        Data(),
        Data().SetVariant(true),
        TestSupport::GetInvalid(),
        Data::MakeBool(true),
        Data::MakeBool(false, true),
        Data::MakeUInt32(1),
        Data::MakeUInt32(2).SetVariant(true),
        Data::MakeString("short"),
        Data::MakeString(sLong, true),
        Data::MakeObjectPath("/a"),
        Data::MakeObjectPath("/" + sLong).SetVariant(true),
        list,
        Data::MakeArray(Data::Variant, {marked, Data::MakeBool(true, true)}),
        Data::MakeArray(Data::Variant).SetVariant(true),
        Data::MakeDictionary(Data::Variant, {{"k", marked}, {sLong, Data::MakeBool(true, true)}}),
        Data::MakeDictionary(Data::String, {{"k", Data::MakeString(sLong)}}).SetVariant(true),
    };
}

/** Which alternatives a value hands out, as text. */
std::string Alternatives(Data data)
{
    const Data& constant = data;
    std::string sTypes;
    const auto fnTry = [&](const char* pName, auto type) {
        using T = decltype(type);
        int nGiven = 0;
        try {
            data.As<T>();
            ++nGiven;
        } catch (const std::bad_cast&) {
        }
        try {
            constant.As<T>();
            ++nGiven;
        } catch (const std::bad_cast&) {
        }
        sTypes += nGiven == 2 ? pName : nGiven == 1 ? "one of two" : "";
    };
    fnTry("bool", bool());
    fnTry("uint32", std::uint32_t());
    fnTry("string", std::string());
    fnTry("vector", Vector());
    fnTry("map", Map());
    return sTypes;
}

} // namespace

TEST(DataValue, IsEmptyByDefault)
{
    EXPECT_EQ(Describe(Data()), "Empty");
    EXPECT_EQ(Data().GetElementType(), Data::Empty);
    EXPECT_FALSE(Data().IsVariant());
}

TEST(DataValue, IsMadeWithItsTypeElementTypeAndMark)
{
    EXPECT_EQ(Describe(Data::MakeBool(true)), "Bool true");
    EXPECT_EQ(Describe(Data::MakeBool(false, true)), "<Bool false>");
    EXPECT_EQ(Describe(Data::MakeUInt32(7)), "UInt32 7");
    EXPECT_EQ(Describe(Data::MakeString("a")), "String \"a\"");
    EXPECT_EQ(Describe(Data::MakeString("a", true)), "<String \"a\">");
    EXPECT_EQ(Describe(Data::MakeObjectPath("/a")), "ObjectPath \"/a\"");
    EXPECT_EQ(Describe(Data::MakeStringArray({"a"})), "Array of String [String \"a\"]");
    EXPECT_EQ(Describe(Data::MakeArray(Data::Variant)), "Array of Variant []");
    EXPECT_EQ(Describe(Data::MakeDictionary(Data::Variant)), "Dictionary of Variant {}");
    for (const Data& data : {Data::MakeBool(true), Data::MakeUInt32(1), Data::MakeString("a"),
                             Data::MakeObjectPath("/")})
        EXPECT_EQ(data.GetElementType(), Data::Empty);
}

TEST(DataValue, TheMarkCanBeSetAndTaken)
{
    Data data = Data::MakeUInt32(1);
    EXPECT_EQ(Describe(data.SetVariant(true)), "<UInt32 1>");
    EXPECT_EQ(Describe(data.SetVariant(false)), "UInt32 1");
}

TEST(DataValue, HandsOutItsOwnAlternativeAlone)
{
    EXPECT_EQ(Alternatives(Data::MakeBool(true)), "bool");
    EXPECT_EQ(Alternatives(Data::MakeUInt32(1)), "uint32");
    EXPECT_EQ(Alternatives(Data::MakeString("a")), "string");
    EXPECT_EQ(Alternatives(Data::MakeStringArray({"a"})), "vector");
    EXPECT_EQ(Alternatives(Data::MakeDictionary(Data::Variant)), "map");
    EXPECT_EQ(Alternatives(Data()), "");
    EXPECT_EQ(Alternatives(TestSupport::GetInvalid()), "");
}

TEST(DataValue, AnObjectPathIsRefusedAsAString)
{
    Data data = Data::MakeObjectPath("/a");
    EXPECT_THROW(data.As<std::string>(), std::bad_cast);
    EXPECT_THROW(std::as_const(data).As<std::string>(), std::bad_cast);
    EXPECT_EQ(Alternatives(data), "");
    EXPECT_EQ(data.ObjectPathText(), "/a");
}

TEST(DataValue, OnlyAnObjectPathHasTheTextOfOne)
{
    for (const Data& data : MakeSamples()) {
        if (data.GetType() != Data::ObjectPath) {
            EXPECT_THROW(data.ObjectPathText(), std::bad_cast) << Describe(data);
        }
    }
}

TEST(DataValue, TheMarkDoesNotMatterToWhatIsHandedOut)
{
    EXPECT_EQ(Data::MakeString("a", true).As<std::string>(), "a");
    EXPECT_THROW(Data::MakeObjectPath("/a").SetVariant(true).As<std::string>(), std::bad_cast);
}

TEST(DataValue, IsUnchangedByARefusal)
{
    for (Data& data : MakeSamples()) {
        const std::string sBefore = Describe(data);
        Alternatives(data);
        EXPECT_EQ(Describe(data), sBefore);
    }
}

TEST(DataValue, CanBeChangedThroughItsAlternative)
{
    Data data = Data::MakeStringArray({"a"});
    data.As<Vector>()[0].As<std::string>() = "b";
    data.As<Vector>().push_back(Data::MakeString("c"));
    EXPECT_EQ(Describe(data), "Array of String [String \"b\", String \"c\"]");
}

TEST(DataCopy, IsAlikeAndIndependent)
{
    Data data = Data::MakeDictionary(Data::Variant, {{"k", Data::MakeString(sLong, true)}});
    const Data copy = data;
    data.As<Map>()["k"].As<std::string>() = "changed";
    data.As<Map>()["l"] = Data();
    EXPECT_EQ(Describe(copy), "Dictionary of Variant {\"k\": <String \"" + sLong + "\">}");
}

TEST(DataCopy, OfEachTypeIsAlike)
{
    for (const Data& data : MakeSamples()) {
        const Data copy(data);
        EXPECT_EQ(Describe(copy), Describe(data));
        EXPECT_EQ(copy.GetElementType(), data.GetElementType());
    }
}

TEST(DataAssignment, FromEachTypeToEachIsAlikeAndLeavesTheSource)
{
    for (const Data& source : MakeSamples()) {
        const std::string sSource = Describe(source);
        for (Data& target : MakeSamples()) {
            const std::string sTarget = Describe(target);
            target = source;
            EXPECT_EQ(Describe(target), sSource) << "was " << sTarget;
            EXPECT_EQ(target.GetElementType(), source.GetElementType());
            EXPECT_EQ(Describe(source), sSource);
        }
    }
}

TEST(DataAssignment, ByMovingFromEachTypeToEachLeavesTheSourceEmpty)
{
    const Vector vecSources = MakeSamples();
    for (const Data& original : vecSources) {
        for (Data& target : MakeSamples()) {
            Data source = original;
            target = std::move(source);
            EXPECT_EQ(Describe(target), Describe(original));
            EXPECT_EQ(Describe(source), "Empty");
            EXPECT_EQ(source.GetElementType(), Data::Empty);
        }
    }
}

TEST(DataAssignment, TakesTheMarkOfTheSource)
{
    Data data = Data::MakeString("a", true);
    data = Data::MakeString("b");
    EXPECT_EQ(Describe(data), "String \"b\"");
    const Data marked = Data::MakeString("c", true);
    data = marked;
    EXPECT_EQ(Describe(data), "<String \"c\">");
}

TEST(DataAssignment, OfAnArrayWithAnotherElementTypeTakesThatType)
{
    Data data = Data::MakeStringArray({"a"});
    const Data numbers = Data::MakeArray(Data::UInt32, {Data::MakeUInt32(1)});
    data = numbers;
    EXPECT_EQ(Describe(data), "Array of UInt32 [UInt32 1]");
}

TEST(DataAssignment, OfAShorterAndALongerArrayAdjustsTheLength)
{
    Data data = Data::MakeStringArray({"a", "b"});
    const Data longer = Data::MakeStringArray({"c", "d", "e"});
    data = longer;
    EXPECT_EQ(Describe(data), Describe(longer));
    const Data shorter = Data::MakeStringArray({"f"});
    data = shorter;
    EXPECT_EQ(Describe(data), Describe(shorter));
}

TEST(DataAssignment, OfADictionaryDropsTheOldEntries)
{
    Data data = Data::MakeDictionary(Data::String, {{"old", Data::MakeString("a")}});
    const Data other = Data::MakeDictionary(Data::String, {{"new", Data::MakeString("b")}});
    data = other;
    EXPECT_EQ(Describe(data), "Dictionary of String {\"new\": String \"b\"}");
}

TEST(DataAssignment, FromItselfChangesNothing)
{
    for (Data& data : MakeSamples()) {
        const std::string sBefore = Describe(data);
        const Data& self = data;
        data = self;
        EXPECT_EQ(Describe(data), sBefore);
    }
}

TEST(DataAssignment, ByMovingFromItselfChangesNothing)
{
    for (Data& data : MakeSamples()) {
        const std::string sBefore = Describe(data);
        Data& self = data;
        data = std::move(self);
        EXPECT_EQ(Describe(data), sBefore);
    }
}

TEST(DataAssignment, FromItsOwnElementTakesTheElement)
{
    for (const Data& sample : MakeSamples()) {
        Data array = Data::MakeArray(Data::Variant, {sample, Data::MakeUInt32(1)});
        array = array.As<Vector>()[0];
        EXPECT_EQ(Describe(array), Describe(sample));
    }
}

TEST(DataAssignment, ByMovingFromItsOwnElementTakesTheElement)
{
    for (const Data& sample : MakeSamples()) {
        Data array = Data::MakeArray(Data::Variant, {sample, Data::MakeUInt32(1)});
        array = std::move(array.As<Vector>()[0]);
        EXPECT_EQ(Describe(array), Describe(sample));
    }
}

TEST(DataAssignment, FromAValueUnderItsOwnKeyTakesTheValue)
{
    for (const Data& sample : MakeSamples()) {
        Data dictionary = Data::MakeDictionary(Data::Variant, {{"k", sample}, {"l", Data()}});
        dictionary = dictionary.As<Map>()["k"];
        EXPECT_EQ(Describe(dictionary), Describe(sample));
    }
}

TEST(DataAssignment, ByMovingFromAValueUnderItsOwnKeyTakesTheValue)
{
    for (const Data& sample : MakeSamples()) {
        Data dictionary = Data::MakeDictionary(Data::Variant, {{"k", sample}, {"l", Data()}});
        dictionary = std::move(dictionary.As<Map>()["k"]);
        EXPECT_EQ(Describe(dictionary), Describe(sample));
    }
}

TEST(DataAssignment, FromAnElementOfTheSameShapeTakesTheElement)
{
    Data array = Data::MakeArray(Data::Variant, {Data::MakeArray(Data::Variant, {Data()})});
    array = array.As<Vector>()[0];
    EXPECT_EQ(Describe(array), "Array of Variant [Empty]");
    const Data inner = Data::MakeDictionary(Data::Variant, {{"k", Data()}}).SetVariant(true);
    Data dictionary = Data::MakeDictionary(Data::Variant, {{"k", inner}});
    dictionary = dictionary.As<Map>()["k"];
    EXPECT_EQ(Describe(dictionary), "<Dictionary of Variant {\"k\": Empty}>");
}

TEST(DataAssignment, OfAListToItsOwnElementNestsIt)
{
    Data array = Data::MakeArray(Data::Variant, {Data::MakeUInt32(1)});
    array.As<Vector>()[0] = array;
    EXPECT_EQ(Describe(array), "Array of Variant [Array of Variant [UInt32 1]]");
}

TEST(DataMove, LeavesTheSourceEmptyAndUsable)
{
    for (Data& source : MakeSamples()) {
        const std::string sBefore = Describe(source);
        const Data target = std::move(source);
        EXPECT_EQ(Describe(target), sBefore);
        EXPECT_EQ(Describe(source), "Empty");
        EXPECT_EQ(source.GetElementType(), Data::Empty);
        source = target;
        EXPECT_EQ(Describe(source), sBefore);
    }
}

TEST(DataMove, CopiesNoElement)
{
    Data source = Data::MakeStringArray({sLong});
    const char* const pText = source.As<Vector>()[0].As<std::string>().data();
    Data target = std::move(source);
    EXPECT_EQ(target.As<Vector>()[0].As<std::string>().data(), pText);
}

TEST(DataAssign, TakesTheContentsAndKeepsTheMark)
{
    Data data = Data::MakeString("a", true);
    data.Assign(Data::MakeString("b"));
    EXPECT_EQ(Describe(data), "<String \"b\">");
    Data flag = Data::MakeBool(false);
    flag.Assign(Data::MakeBool(true, true));
    EXPECT_EQ(Describe(flag), "Bool true");
}

TEST(DataAssign, OfItselfOrItsOwnElementIsSafe)
{
    Data array = Data::MakeArray(Data::Variant, {Data::MakeArray(Data::Variant, {Data()})});
    array.Assign(array);
    EXPECT_EQ(Describe(array), "Array of Variant [Array of Variant [Empty]]");
    array.Assign(array.As<Vector>()[0]);
    EXPECT_EQ(Describe(array), "Array of Variant [Empty]");
}

} // namespace Tovra::DBus
