#include "Include/D-Bus.h"
#include "tests/support/DataText.h"
#include "tests/support/DataTrees.h"
#include "tests/support/PeerTest.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

class DataWriting : public TestSupport::PeerTest
{
};

TEST_F(DataWriting, BooleansAreWritten)
{
    EXPECT_EQ(Arrived(NewCall().Add(Data::MakeBool(true)).Add(Data::MakeBool(false))),
              "bb btrue bfalse");
}

TEST_F(DataWriting, ABooleanWithTheMarkGoesOutInAVariant)
{
    EXPECT_EQ(Arrived(Data::MakeBool(true, true)), "v <btrue>");
}

TEST_F(DataWriting, ANumberIsWrittenInFull)
{
    EXPECT_EQ(Arrived(Data::MakeUInt32(0xFFFFFFFE)), "u u4294967294");
}

TEST_F(DataWriting, TextsAreWrittenWhole)
{
    EXPECT_EQ(Arrived(NewCall().Add(Data::MakeString("caf\xC3\xA9")).Add(Data::MakeString(""))),
              R"(ss s"caf\xC3\xA9" s"")");
}

TEST_F(DataWriting, ATextWithTheMarkGoesOutInAVariant)
{
    EXPECT_EQ(Arrived(Data::MakeString("x", true)), R"(v <s"x">)");
}

TEST_F(DataWriting, AnObjectPathIsWrittenAsOne)
{
    EXPECT_EQ(Arrived(NewCall().Add(Data::MakeObjectPath("/")).Add(Data::MakeObjectPath("/a/b_9"))),
              R"(oo o"/" o"/a/b_9")");
}

TEST_F(DataWriting, TheMarkWrapsEveryTypeInAVariantOfItsOwnSignature)
{
    EXPECT_EQ(Arrived(Data::MakeUInt32(1).SetVariant(true)), "v <u1>");
    EXPECT_EQ(Arrived(Data::MakeObjectPath("/a").SetVariant(true)), R"(v <o"/a">)");
    EXPECT_EQ(Arrived(Data::MakeStringArray({"a"}).SetVariant(true)), R"(v <[s"a"]>)");
    EXPECT_EQ(
        Arrived(Data::MakeDictionary(Data::Bool, {{"k", Data::MakeBool(true)}}).SetVariant(true)),
        R"(v <[{s"k": btrue}]>)");
}

TEST_F(DataWriting, AnArrayKeepsTheOrderOfItsElements)
{
    EXPECT_EQ(Arrived(Data::MakeStringArray({"b", "", "a"})), R"(as [s"b", s"", s"a"])");
}

TEST_F(DataWriting, AnArrayOfEachTypeDeclaresIt)
{
    EXPECT_EQ(Arrived(Data::MakeArray(Data::Bool, {Data::MakeBool(true)})), "ab [btrue]");
    EXPECT_EQ(Arrived(Data::MakeArray(Data::UInt32, {Data::MakeUInt32(1)})), "au [u1]");
    EXPECT_EQ(Arrived(Data::MakeArray(Data::ObjectPath, {Data::MakeObjectPath("/a")})),
              R"(ao [o"/a"])");
    EXPECT_EQ(Arrived(Data::MakeArray(Data::Variant,
                                      {Data::MakeBool(true, true), Data::MakeString("x", true)})),
              R"(av [<btrue>, <s"x">])");
}

TEST_F(DataWriting, AnEmptyArrayDeclaresItsElementType)
{
    EXPECT_EQ(Arrived(NewCall()
                          .Add(Data::MakeStringArray({}))
                          .Add(Data::MakeArray(Data::Variant))
                          .Add(Data::MakeDictionary(Data::Variant))
                          .Add(Data::MakeDictionary(Data::String).SetVariant(true))),
              "asava{sv}v [] [] [] <[]>");
}

TEST_F(DataWriting, ADictionaryOfPlainStringsIsADictionaryOfStrings)
{
    EXPECT_EQ(Arrived(Data::MakeDictionary(
                  Data::String, {{"k", Data::MakeString("v")}, {"", Data::MakeString("")}})),
              R"(a{ss} [{s"": s""}, {s"k": s"v"}])");
}

TEST_F(DataWriting, ADictionaryOfMarkedValuesIsADictionaryOfVariants)
{
    EXPECT_EQ(
        Arrived(Data::MakeDictionary(Data::Variant, {{"Method", Data::MakeString("manual", true)},
                                                     {"Enabled", Data::MakeBool(true, true)}})),
        R"(a{sv} [{s"Enabled": <btrue>}, {s"Method": <s"manual">}])");
}

TEST_F(DataWriting, ADictionaryMayBeFilledThroughItsMap)
{
    Data data = Data::MakeDictionary(Data::Variant);
    data.As<std::map<std::string, Data>>()["Method"] = Data::MakeString("dhcp", true);
    EXPECT_EQ(Arrived(data), R"(a{sv} [{s"Method": <s"dhcp">}])");
}

TEST_F(DataWriting, ListsInsideListsTravelInVariants)
{
    const Data list = Data::MakeStringArray({"a"}).SetVariant(true);
    const Data inner = Data::MakeDictionary(Data::Variant, {{"l", list}}).SetVariant(true);
    EXPECT_EQ(Arrived(Data::MakeDictionary(Data::Variant, {{"d", inner}})),
              R"(a{sv} [{s"d": <[{s"l": <[s"a"]>}]>}])");
}

TEST_F(DataWriting, AnEmptyValueLeavesTheMessageUnchanged)
{
    ExpectRefused(Data());
}

TEST_F(DataWriting, AnInvalidValueLeavesTheMessageUnchanged)
{
    ExpectRefused(TestSupport::GetInvalid());
}

TEST_F(DataWriting, ArgumentsAreAppendedInOrder)
{
    EXPECT_EQ(Arrived(NewCall()
                          .Add(Data::MakeString("name"))
                          .Add(Data::MakeBool(true, true))
                          .Add(Data())
                          .Add(Data::MakeUInt32(3))),
              R"(svu s"name" <btrue> u3)");
}

TEST_F(DataWriting, AValueInsideAVariantThatTheCallerOpenedIsNotWrappedAgain)
{
    const Message message = NewCall();
    DBusMessageIter iter;
    DBusMessageIter variant;
    dbus_message_iter_init_append(message.Get(), &iter);
    dbus_message_iter_open_container(&iter, DBUS_TYPE_VARIANT, "s", &variant);
    Data::MakeString("x", true).AddToMessage(&variant, true);
    dbus_message_iter_close_container(&iter, &variant);
    EXPECT_EQ(Arrived(message), R"(v <s"x">)");
}

TEST_F(DataWriting, WritingLeavesTheValueAsItWas)
{
    const Data data =
        Data::MakeDictionary(Data::Variant, {{"\xFF", Data::MakeString("\xFF", true)}});
    const std::string sBefore = TestSupport::Describe(data);
    Arrived(data);
    EXPECT_EQ(TestSupport::Describe(data), sBefore);
}

TEST(DataCodes, EachTypeHasItsCode)
{
    EXPECT_STREQ(Data::TypeCode(Data::Variant), "v");
    EXPECT_STREQ(Data::TypeCode(Data::Bool), "b");
    EXPECT_STREQ(Data::TypeCode(Data::UInt32), "u");
    EXPECT_STREQ(Data::TypeCode(Data::String), "s");
    EXPECT_STREQ(Data::TypeCode(Data::ObjectPath), "o");
    EXPECT_STREQ(Data::TypeCode(Data::Array), "a");
    EXPECT_STREQ(Data::TypeCode(Data::Dictionary), "ae");
}

TEST(DataCodes, TypesThatHoldNothingHaveNone)
{
    EXPECT_EQ(Data::TypeCode(Data::Empty), nullptr);
    EXPECT_EQ(Data::TypeCode(Data::Invalid), nullptr);
    EXPECT_EQ(Data::TypeCode(static_cast<Data::Type>(7)), nullptr);
    EXPECT_EQ(Data::TypeCode(static_cast<Data::Type>(-3)), nullptr);
}

TEST(DataCodes, TypesHaveTheirNumbers)
{
    EXPECT_EQ(Data::Variant, -2);
    EXPECT_EQ(Data::Invalid, -1);
    EXPECT_EQ(Data::Empty, 0);
    EXPECT_EQ(Data::Bool, 1);
    EXPECT_EQ(Data::UInt32, 2);
    EXPECT_EQ(Data::String, 3);
    EXPECT_EQ(Data::ObjectPath, 4);
    EXPECT_EQ(Data::Array, 5);
    EXPECT_EQ(Data::Dictionary, 6);
    static_assert(std::is_same_v<std::underlying_type_t<Data::Type>, std::int32_t>);
}

TEST(DataCodes, TheFullSignatureOfAListBeginsWithAnArray)
{
    EXPECT_EQ(Data::Signature(Data::MakeDictionary(Data::Variant), true), "a{sv}");
    EXPECT_EQ(Data::Signature(Data::MakeDictionary(Data::String), true), "a{ss}");
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::ObjectPath), true), "ao");
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::Variant), true), "av");
}

TEST(DataCodes, TheShortSignatureOfAListIsThatOfItsElements)
{
    EXPECT_EQ(Data::Signature(Data::MakeDictionary(Data::Variant), false), "{sv}");
    EXPECT_EQ(Data::Signature(Data::MakeDictionary(Data::String), false), "{ss}");
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::ObjectPath), false), "o");
}

TEST(DataCodes, TheSignatureOfAnythingElseIsItsCodeWithOrWithoutTheMark)
{
    for (const bool bFull : {true, false}) {
        EXPECT_EQ(Data::Signature(Data::MakeBool(true, true), bFull), "b");
        EXPECT_EQ(Data::Signature(Data::MakeUInt32(1), bFull), "u");
        EXPECT_EQ(Data::Signature(Data::MakeString("x"), bFull), "s");
        EXPECT_EQ(Data::Signature(Data::MakeObjectPath("/"), bFull), "o");
        EXPECT_EQ(Data::Signature(Data(), bFull), "");
    }
}

TEST(DataCodes, ListsOfListsHaveAnIncompleteSignature)
{
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::Array), true), "aa");
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::Array), false), "a");
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::Dictionary), true), "aae");
    EXPECT_EQ(Data::Signature(Data::MakeArray(Data::Dictionary), false), "ae");
    EXPECT_EQ(Data::Signature(Data::MakeDictionary(Data::Dictionary), true), "a{sae}");
}

} // namespace Tovra::DBus
