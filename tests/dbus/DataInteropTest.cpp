#include "Include/D-Bus.h"
#include "tests/support/DataExpectation.h"
#include "tests/support/DataText.h"
#include "tests/support/PeerTest.h"

#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

using TestSupport::SdBusPeer;

/** One argument, as the layer has it and as sd-bus makes it. */
struct ArgumentCase {
    const char* pWhat; ///< the name of the test
    Data data;
    std::string sArrived; ///< as sd-bus sees it: its signature and its values
    SdBusPeer::Fill fnFill;
};

void PrintTo(const ArgumentCase& argument, std::ostream* pStream)
{
    *pStream << argument.sArrived;
}

template <class... Args> SdBusPeer::Fill Append(const char* pTypes, Args... args)
{
    return
        [=](sd_bus_message* pMessage) { return sd_bus_message_append(pMessage, pTypes, args...); };
}

Data Marked(Data data)
{
    return data.SetVariant(true);
}

const std::string sLong(5000, 'x');

std::vector<ArgumentCase> MakeBasicCases()
{
    return {
        {"False", Data::MakeBool(false), "b bfalse", Append("b", 0)},
        {"True", Data::MakeBool(true), "b btrue", Append("b", 1)},
        {"Zero", Data::MakeUInt32(0), "u u0", Append("u", 0)},
        {"LargestNumber", Data::MakeUInt32(0xFFFFFFFF), "u u4294967295", Append("u", 0xFFFFFFFFu)},
        {"EmptyText", Data::MakeString(""), "s s\"\"", Append("s", "")},
        {"Text", Data::MakeString("wlan0"), "s s\"wlan0\"", Append("s", "wlan0")},
        {"TextInUtf8", Data::MakeString("\xE2\x82\xAC"), R"(s s"\xE2\x82\xAC")",
         Append("s", "\xE2\x82\xAC")},
        {"LongText", Data::MakeString(sLong), "s s\"" + sLong + "\"", Append("s", sLong.c_str())},
        {"RootPath", Data::MakeObjectPath("/"), "o o\"/\"", Append("o", "/")},
        {"Path", Data::MakeObjectPath("/net/a_1"), "o o\"/net/a_1\"", Append("o", "/net/a_1")},
        {"BoolInVariant", Data::MakeBool(true, true), "v <btrue>", Append("v", "b", 1)},
        {"NumberInVariant", Marked(Data::MakeUInt32(7)), "v <u7>", Append("v", "u", 7)},
        {"TextInVariant", Data::MakeString("a", true), "v <s\"a\">", Append("v", "s", "a")},
        {"PathInVariant", Marked(Data::MakeObjectPath("/a")), "v <o\"/a\">",
         Append("v", "o", "/a")},
    };
}

std::vector<ArgumentCase> MakeListCases()
{
    const Data texts = Data::MakeStringArray({"a", "", "ccc"});
    const Data flags = Data::MakeArray(Data::Bool, {Data::MakeBool(true), Data::MakeBool(false)});
    const Data numbers = Data::MakeArray(Data::UInt32, {Data::MakeUInt32(1), Data::MakeUInt32(2)});
    const Data paths = Data::MakeArray(Data::ObjectPath, {Data::MakeObjectPath("/a")});
    const Data mixed = Data::MakeArray(
        Data::Variant, {Data::MakeBool(true, true), Data::MakeString("x", true), Marked(texts)});
    const Data names = Data::MakeDictionary(Data::String, {{"a", Data::MakeString("1")}});
    const Data settings = Data::MakeDictionary(
        Data::Variant, {{"Address", Data::MakeString("10.0.0.2", true)},
                        {"Enabled", Data::MakeBool(true, true)},
                        {"Nameservers", Marked(Data::MakeStringArray({"10.0.0.1"}))}});
    const std::string sSettings = R"([{s"Address": <s"10.0.0.2">}, {s"Enabled": <btrue>}, )"
                                  R"({s"Nameservers": <[s"10.0.0.1"]>}])";
    return {
        {"Texts", texts, R"(as [s"a", s"", s"ccc"])", Append("as", 3, "a", "", "ccc")},
        {"NoTexts", Data::MakeStringArray({}), "as []", Append("as", 0)},
        {"Flags", flags, "ab [btrue, bfalse]", Append("ab", 2, 1, 0)},
        {"Numbers", numbers, "au [u1, u2]", Append("au", 2, 1, 2)},
        {"Paths", paths, R"(ao [o"/a"])", Append("ao", 1, "/a")},
        {"Variants", mixed, R"(av [<btrue>, <s"x">, <[s"a", s"", s"ccc"]>])",
         Append("av", 3, "b", 1, "s", "x", "as", 3, "a", "", "ccc")},
        {"TextsInVariant", Marked(texts), R"(v <[s"a", s"", s"ccc"]>)",
         Append("v", "as", 3, "a", "", "ccc")},
        {"TextsByKey", names, R"(a{ss} [{s"a": s"1"}])", Append("a{ss}", 1, "a", "1")},
        {"NothingByKey", Data::MakeDictionary(Data::Variant), "a{sv} []", Append("a{sv}", 0)},
        {"VariantsByKey", settings, "a{sv} " + sSettings,
         Append("a{sv}", 3, "Address", "s", "10.0.0.2", "Enabled", "b", 1, "Nameservers", "as", 1,
                "10.0.0.1")},
        {"VariantsByKeyInVariant", Marked(settings), "v <" + sSettings + ">",
         Append("v", "a{sv}", 3, "Address", "s", "10.0.0.2", "Enabled", "b", 1, "Nameservers", "as",
                1, "10.0.0.1")},
    };
}

} // namespace

class DataInterop : public TestSupport::PeerTest, public testing::WithParamInterface<ArgumentCase>
{
};

TEST_P(DataInterop, WhatTheLayerSendsArrivesAtSdBus)
{
    EXPECT_EQ(Arrived(GetParam().data), GetParam().sArrived);
}

TEST_P(DataInterop, WhatSdBusSendsIsRead)
{
    EXPECT_EQ(TestSupport::Describe(Read(GetParam().fnFill)),
              TestSupport::Describe(TestSupport::Expectation(GetParam().data).value()));
}

// Preceded by every alignment that a message can have at this place.
TEST_P(DataInterop, ItsPlaceInTheMessageDoesNotMatter)
{
    for (const char* pBefore : {"", "a", "ab", "abc", "abcd", "abcde", "abcdef", "abcdefg"}) {
        const Data before = Data::MakeString(pBefore);
        const Message reply =
            connection.SendWithReplyBlocking(NewCall().Add(before).Add(GetParam().data), -1);
        EXPECT_EQ("s" + GetParam().sArrived.substr(0, GetParam().sArrived.find(' ')),
                  peer.Take()->sSignature);
        EXPECT_EQ(
            TestSupport::Describe(reply.Contents(0)),
            TestSupport::Describe({before, TestSupport::Expectation(GetParam().data).value()}));
    }
}

std::string CaseName(const testing::TestParamInfo<ArgumentCase>& info)
{
    return info.param.pWhat;
}

INSTANTIATE_TEST_SUITE_P(Basic, DataInterop, testing::ValuesIn(MakeBasicCases()), CaseName);
INSTANTIATE_TEST_SUITE_P(List, DataInterop, testing::ValuesIn(MakeListCases()), CaseName);

} // namespace Tovra::DBus
