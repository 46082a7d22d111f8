#include "simulator/Value.h"
#include "simulator/MessageIo.h"
#include "simulator/Signature.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>
#include <memory>
#include <rapidcheck/gtest.h>

namespace Tovra::Simulator
{

namespace
{

std::string GetComplaint(const std::string& sType, const Json& value)
{
    try {
        CheckValue(sType, value, "it");
        return "";
    } catch (const Problem& problem) {
        return problem.what();
    }
}

struct BusDeleter {
    void operator()(sd_bus* pBus) const { sd_bus_flush_close_unref(pBus); }
    void operator()(sd_bus_message* pMessage) const { sd_bus_message_unref(pMessage); }
};

// Writes the arguments into a message, and reads them from it.
Arguments Travel(const Arguments& arguments)
{
    sd_bus* pOpened = nullptr;
    Check(sd_bus_open_system(&pOpened), "open a bus");
    const std::unique_ptr<sd_bus, BusDeleter> pBus(pOpened);
    sd_bus_message* pMade = nullptr;
    Check(sd_bus_message_new_signal(pOpened, &pMade, "/a", "net.example.A", "B"), "make");
    const std::unique_ptr<sd_bus_message, BusDeleter> pMessage(pMade);
    Append(pMade, arguments);
    Check(sd_bus_message_seal(pMade, 1, 0), "seal");
    return Read(pMade);
}

rc::Gen<Value> MakeBasicGenerator()
{
    const auto text = rc::gen::container<std::string>(rc::gen::inRange('a', 'z'));
    return rc::gen::oneOf(
        rc::gen::map(rc::gen::arbitrary<std::uint8_t>(), [](auto n) { return MakeByte(n); }),
        rc::gen::map(rc::gen::arbitrary<std::int64_t>(),
                     [](auto n) {
                         return Value{"x", n};
                     }),
        rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                     [](auto n) {
                         return Value{"t", n};
                     }),
        rc::gen::map(rc::gen::arbitrary<bool>(), [](bool b) { return MakeBool(b); }),
        rc::gen::map(text, [](const std::string& s) { return MakeString(s); }));
}

rc::Gen<Value> MakeGenerator(int nDepth)
{
    if (nDepth == 0)
        return MakeBasicGenerator();
    const auto inner = MakeGenerator(nDepth - 1);
    const auto array = rc::gen::map(rc::gen::container<std::vector<Value>>(inner),
                                    [](const std::vector<Value>& vecValues) {
                                        Json list = Json::array();
                                        for (const Value& value : vecValues)
                                            list.push_back(MakeVariant(value));
                                        return Value{"av", list};
                                    });
    const auto pair = rc::gen::map(rc::gen::pair(inner, inner), [](const auto& values) {
        return Value{"(" + values.first.sSignature + values.second.sSignature + ")",
                     Json::array({values.first.contents, values.second.contents})};
    });
    const auto dictionary =
        rc::gen::map(rc::gen::pair(MakeBasicGenerator(), inner), [](const auto& entry) {
            Json pairs = Json::array();
            pairs.push_back(Json::array({entry.first.contents, entry.second.contents}));
            const std::string sSignature =
                "a{" + entry.first.sSignature + entry.second.sSignature + "}";
            if (entry.first.sSignature != "s")
                return Value{sSignature, pairs};
            return Value{
                sSignature,
                {{entry.first.contents.template get<std::string>(), entry.second.contents}}};
        });
    return rc::gen::oneOf(inner, array, pair, dictionary);
}

} // namespace

TEST(SimulatorSignature, IsSplitIntoItsCompleteTypes)
{
    EXPECT_EQ(SplitSignature("sa{sv}(ib)aay"),
              (std::vector<std::string>{"s", "a{sv}", "(ib)", "aay"}));
    EXPECT_TRUE(SplitSignature("").empty());
}

TEST(SimulatorSignature, ThatIsNoneIsRefused)
{
    for (const char* pWrong :
         {"a", "(", "(i", "()", "a{vs}", "a{s}", "a{sss}", "{ss}", "z", ")", "a{s", "a{(i)s}"})
        EXPECT_THROW(SplitSignature(pWrong), Problem) << pWrong;
    EXPECT_THROW(SplitSignature(std::string(256, 'i')), Problem);
    EXPECT_NO_THROW(SplitSignature(std::string(32, 'a') + "i"));
    EXPECT_THROW(SplitSignature(std::string(33, 'a') + "i"), Problem);
    EXPECT_THROW(CheckSingleType("ii"), Problem);
    EXPECT_THROW(CheckSingleType(""), Problem);
}

TEST(SimulatorSignature, ObjectPathsAreToldFromWhatIsNone)
{
    for (const char* pPath : {"/", "/a", "/net/connman/service/wifi_0_1"})
        EXPECT_TRUE(IsObjectPath(pPath)) << pPath;
    for (const char* pPath : {"", "a", "/a/", "//a", "/a//b", "/ä", "/a-b"})
        EXPECT_FALSE(IsObjectPath(pPath)) << pPath;
}

TEST(SimulatorValue, OfTheRightTypeIsAccepted)
{
    const std::vector<std::pair<std::string, const char*>> vecGood = {
        {"y", "255"},
        {"n", "-32768"},
        {"q", "65535"},
        {"i", "-2147483648"},
        {"u", "4294967295"},
        {"x", "-9223372036854775808"},
        {"t", "18446744073709551615"},
        {"b", "true"},
        {"d", "1.5"},
        {"d", "1"},
        {"s", "\"\""},
        {"o", "\"/a\""},
        {"g", "\"a{sv}\""},
        {"h", "null"},
        {"v", "[\"s\", \"x\"]"},
        {"as", "[]"},
        {"(sb)", "[\"x\", true]"},
        {"a{sv}", "{\"k\": [\"b\", true]}"},
        {"a{uy}", "[[1, 2], [1, 2]]"}};
    for (const auto& [sType, pValue] : vecGood)
        EXPECT_EQ(GetComplaint(sType, Json::parse(pValue)), "") << sType;
}

TEST(SimulatorValue, OfAnotherTypeIsRefusedWithThePlaceAndWhatIsNeeded)
{
    const std::vector<std::tuple<std::string, const char*, std::string>> vecBad = {
        {"y", "256", "it: a whole number from 0 to 255 is needed"},
        {"y", "-1", "it: a whole number from 0 to 255 is needed"},
        {"n", "-32769", "it: a whole number from -32768 to 32767 is needed"},
        {"u", "1.5", "it: a whole number from 0 to 4294967295 is needed"},
        {"s", "1", "it: a string is needed, not number"},
        {"s", R"("a\u0000b")", "it: a D-Bus string cannot hold a zero character"},
        {"o", "\"a\"", "it: \"a\" is no object path"},
        {"b", "1", "it: true or false is needed, not number"},
        {"h", "1", "it: null is needed, not number"},
        {"v", "\"x\"", "it: a list of a signature and a value is needed, as [\"s\", \"text\"]"},
        {"v", "[\"ss\", \"x\"]", "\"ss\" is not one complete type"},
        {"as", "[\"x\", 5]", "it[1]: a string is needed, not number"},
        {"as", "\"x\"", "it: a list is needed, not string"},
        {"(sb)", "[\"x\"]", "it: a list of 2 is needed"},
        {"a{sv}", "{\"k\": 1}",
         "it.k: a list of a signature and a value is needed, as [\"s\", \"text\"]"},
        {"a{us}", "{\"k\": \"x\"}", "it, key k: a whole number from 0 to 4294967295 is needed"}};
    for (const auto& [sType, pValue, sComplaint] : vecBad)
        EXPECT_EQ(GetComplaint(sType, Json::parse(pValue)), sComplaint) << sType;
}

RC_GTEST_PROP(SimulatorValue, TravelsInAMessageUnchanged, ())
{
    const Value value = *MakeGenerator(2);
    CheckValue(value.sSignature, value.contents, "it");
    const Arguments arguments = Travel({value.sSignature, Json::array({value.contents})});
    RC_ASSERT(arguments.sSignature == value.sSignature);
    RC_ASSERT(arguments.values == Json::array({value.contents}));
}

TEST(SimulatorValue, EveryTypeTravels)
{
    const std::string sSignature = "ynqiuxtbdsogvhasa{sv}(sb)";
    const Json values = Json::parse(R"([1, -2, 3, -4, 5, -6, 7, true, 1.5, "text", "/path", "as",
        ["ay", [1, 2]], null, ["a"], {"k": ["v", ["b", false]]}, ["x", true]])");
    CheckArguments({sSignature, values}, "all");
    const Arguments arguments = Travel({sSignature, values});
    EXPECT_EQ(arguments.sSignature, sSignature);
    EXPECT_EQ(arguments.values, values);
}

TEST(SimulatorValue, AKeyThatComesTwiceIsNotLost)
{
    const Json pairs = Json::parse(R"([["k", 1], ["k", 2]])");
    EXPECT_EQ(Travel({"a{si}", Json::array({pairs})}).values[0], pairs);
}

TEST(SimulatorValue, EachTypeHasAnEmptyOne)
{
    for (const char* pType :
         {"y", "n", "q", "i", "u", "x", "t", "b", "d", "s", "o", "g", "as", "a{sv}"})
        EXPECT_EQ(GetComplaint(pType, MakeEmpty(pType).contents), "") << pType;
}

} // namespace Tovra::Simulator
