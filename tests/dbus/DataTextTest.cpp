#include "tests/support/DataText.h"
#include "Include/D-Bus.h"
#include "tests/support/Dispatching.h"
#include "tests/support/PeerTest.h"

#include <dbus/dbus.h>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

struct TextCase {
    const char* pWhat; ///< the name of the test
    std::string sText;
    std::string sWritten;
};

const std::string sBad = "\xEF\xBF\xBD"; // U+FFFD
const std::string sZero(1, '\0');

void PrintTo(const TextCase& text, std::ostream* pStream)
{
    *pStream << TestSupport::Quote(text.sText);
}

std::string CaseName(const testing::TestParamInfo<TextCase>& info)
{
    return info.param.pWhat;
}

const TextCase unchanged[] = {
    {"Nothing", "", ""},
    {"Ascii", "plain \x01\x7F~", "plain \x01\x7F~"},
    {"FirstOfTwoBytes", "\xC2\x80", "\xC2\x80"},
    {"LastOfTwoBytes", "\xDF\xBF", "\xDF\xBF"},
    {"FirstOfThreeBytes", "\xE0\xA0\x80", "\xE0\xA0\x80"},
    {"LastBeforeTheSurrogates", "\xED\x9F\xBF", "\xED\x9F\xBF"},
    {"FirstAfterTheSurrogates", "\xEE\x80\x80", "\xEE\x80\x80"},
    {"ReplacementCharacter", sBad, sBad},
    {"FirstOfFourBytes", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
    {"LastCharacter", "\xF4\x8F\xBF\xBD", "\xF4\x8F\xBF\xBD"},
};

const TextCase mended[] = {
    {"LoneContinuation", "a\x80z", "a" + sBad + "z"},
    {"LastContinuation", "\xBF", sBad},
    {"TwoContinuations", "\x80\xBF", sBad + sBad},
    {"ContinuationAfterACharacter", "\xC3\xA9\xA9", "\xC3\xA9" + sBad},
    {"OverlongSlashOfTwo", "\xC0\xAF", sBad + sBad},
    {"OverlongLastOfTwo", "\xC1\xBF", sBad + sBad},
    {"OverlongZero", "\xC0\x80", sBad + sBad},
    {"OverlongFirstOfThree", "\xE0\x80\x80", sBad + sBad + sBad},
    {"OverlongLastOfThree", "\xE0\x9F\xBF", sBad + sBad + sBad},
    {"OverlongLastOfFour", "\xF0\x8F\xBF\xBF", sBad + sBad + sBad + sBad},
    {"FirstSurrogate", "\xED\xA0\x80", sBad + sBad + sBad},
    {"LastSurrogate", "\xED\xBF\xBF", sBad + sBad + sBad},
    {"SurrogatePair", "\xED\xA0\xBD\xED\xB8\x80", sBad + sBad + sBad + sBad + sBad + sBad},
    {"AboveTheLast", "\xF4\x90\x80\x80", sBad + sBad + sBad + sBad},
    {"LeadF5", "\xF5\x80\x80\x80", sBad + sBad + sBad + sBad},
    {"FiveBytes", "\xF8\x88\x80\x80\x80", sBad + sBad + sBad + sBad + sBad},
    {"SixBytes", "\xFC\x84\x80\x80\x80\x80", sBad + sBad + sBad + sBad + sBad + sBad},
    {"NeverBytes", "\xFE\xFF", sBad + sBad},
    {"TruncatedTwoAtTheEnd", "a\xC3", "a" + sBad},
    {"TruncatedTwoBeforeAscii", "\xC3z", sBad + "z"},
    {"TruncatedTwoBeforeACharacter", "\xC3\xC3\xA9", sBad + "\xC3\xA9"},
    {"TruncatedThreeAfterOne", "\xE2", sBad},
    {"TruncatedThreeAfterTwo", "\xE2\x82z", sBad + sBad + "z"},
    {"TruncatedFourAfterThree", "\xF0\x9F\x98", sBad + sBad + sBad},
    {"TruncatedFourBeforeACharacter", "\xF0\x9F\xE2\x82\xAC", sBad + sBad + "\xE2\x82\xAC"},
    {"ZeroAlone", sZero, sBad},
    {"ZeroInside", "a" + sZero + "b", "a" + sBad + "b"},
    {"ZeroAtTheEnd", "a" + sZero, "a" + sBad},
    {"ZeroInsideACharacter", "\xE2" + sZero + "\x82\xAC", sBad + sBad + sBad + sBad},
    {"LatinOne", "Caf\xE9 M\xFCller", "Caf" + sBad + " M" + sBad + "ller"},
    {"Mixed", "\xC3\xA9\xFF" + sZero + "\xE2\x82\xAC\xED\xA0\x80" + "a\xF0\x9F\x98\x80\xC0",
     "\xC3\xA9" + sBad + sBad + "\xE2\x82\xAC" + sBad + sBad + sBad + "a\xF0\x9F\x98\x80" + sBad},
};

} // namespace

class DataText : public TestSupport::PeerTest, public testing::WithParamInterface<TextCase>
{
};

TEST_P(DataText, GoesOutAsAString)
{
    EXPECT_EQ(Arrived(Data::MakeString(GetParam().sText)),
              "s s" + TestSupport::Quote(GetParam().sWritten));
}

TEST_P(DataText, GoesOutAsAStringInAVariant)
{
    EXPECT_EQ(Arrived(Data::MakeString(GetParam().sText, true)),
              "v <s" + TestSupport::Quote(GetParam().sWritten) + ">");
}

TEST_P(DataText, GoesOutAsAKey)
{
    const Data data = Data::MakeDictionary(Data::Bool, {{GetParam().sText, Data::MakeBool(true)}});
    EXPECT_EQ(Arrived(data), "a{sb} [{s" + TestSupport::Quote(GetParam().sWritten) + ": btrue}]");
}

TEST_P(DataText, StaysAsItIsInTheValue)
{
    const Data data = Data::MakeString(GetParam().sText);
    Arrived(data);
    EXPECT_EQ(data.As<std::string>(), GetParam().sText);
}

INSTANTIATE_TEST_SUITE_P(Unchanged, DataText, testing::ValuesIn(unchanged), CaseName);
INSTANTIATE_TEST_SUITE_P(Mended, DataText, testing::ValuesIn(mended), CaseName);

using DataNoncharacters = TestSupport::PeerTest;

// D-Bus allows them, but sd-bus does not: the message goes to this connection itself.
TEST_F(DataNoncharacters, GoOutUnchanged)
{
    const Data data =
        Data::MakeStringArray({"\xEF\xB7\x90", "\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xF4\x8F\xBF\xBF"});
    std::optional<Message> arrived;
    connection.RegisterObject("/self", [&](const auto&, const auto&, const Message& message) {
        arrived = message;
        return true;
    });
    Message message(dbus_bus_get_unique_name(connection.Get()), "/self", nullptr, "Take");
    connection.Send(message.Add(data));
    EXPECT_TRUE(TestSupport::DispatchUntil(connection, [&] { return arrived.has_value(); }));
    dbus_connection_unregister_object_path(connection.Get(), "/self");
    ASSERT_TRUE(arrived);
    EXPECT_EQ(TestSupport::Describe(arrived->Contents()), TestSupport::Describe(data));
}

using DataKeys = TestSupport::PeerTest;

TEST_F(DataKeys, ThatAreMendedToTheSameTextBothGoOutAndTheLastIsRead)
{
    const Data data = Data::MakeDictionary(
        Data::String, {{"\xFE", Data::MakeString("first")}, {"\xFF", Data::MakeString("last")}});
    const Message message = NewCall().Add(data);
    const Message reply = connection.SendWithReplyBlocking(message, -1);
    EXPECT_EQ(peer.Take()->sBody, R"([{s"\xEF\xBF\xBD": s"first"}, {s"\xEF\xBF\xBD": s"last"}])");
    EXPECT_EQ(TestSupport::Describe(reply.Contents()),
              R"(Dictionary of String {"\xEF\xBF\xBD": String "last"})");
}

} // namespace Tovra::DBus
