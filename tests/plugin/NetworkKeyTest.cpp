#include "Libraries/TargetSpecificKX22/NetworkKey.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace Tovra
{

namespace
{

using namespace std::string_literals;

struct KeyOfName {
    const char* sWhat;
    std::string sName;
    const char* sKey;
};

void PrintTo(const KeyOfName& example, std::ostream* pStream)
{
    *pStream << example.sWhat;
}

constexpr std::size_t nHashDigits = 8;

std::string Readable(const std::string& sKey)
{
    return sKey.substr(0, sKey.size() - nHashDigits);
}

} // namespace

class NetworkKey : public testing::TestWithParam<KeyOfName>
{
};

TEST_P(NetworkKey, IsAsInTheTable)
{
    EXPECT_EQ(MakeNetworkKey(GetParam().sName), GetParam().sKey);
}

INSTANTIATE_TEST_SUITE_P(
    Of, NetworkKey,
    testing::Values(KeyOfName{"AnUsualName", "My Net-1", "MyNet1726E16D6"},
                    KeyOfName{"TheEmptyName", "", "811C9DC5"}, //
                    KeyOfName{"ALetter", "a", "aE40C292C"},
                    KeyOfName{"TheEndsOfTheRangesThatAreKept", "azAZ09", "azAZ09ED532096"},
                    KeyOfName{"TheNeighboursOfThoseRanges", "@[`{/:", "A00F0514"},
                    KeyOfName{"PunctuationAlone", "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~", "8232C177"},
                    KeyOfName{"ABlank", " ", "250C8F7F"}, //
                    KeyOfName{"TwoBlanks", "  ", "B1C5B28D"},
                    KeyOfName{"Byte80", "\x80", "850B939F"}, //
                    KeyOfName{"ByteFF", "\xFF", "7A0B824E"},
                    KeyOfName{"AnAccent", "Caf\xC3\xA9", "CafCFC290A9"},
                    KeyOfName{"ALetterOutsideAscii", "\xC3\xA4", "199DE0E2"},
                    KeyOfName{"APicture", "\xF0\x9F\x93\xB6", "4B95EFDD"},
                    KeyOfName{"AZeroByteAlone", "\0"s, "811C9DC5"},
                    KeyOfName{"AZeroByteAtTheEnd", "a\0"s, "aE40C292C"},
                    KeyOfName{"AZeroByteInside", "a\0b"s, "abE40C292C"},
                    KeyOfName{"AZeroByteAtTheStart", "\0a"s, "a811C9DC5"},
                    KeyOfName{"AHashThatBeginsWithZeros", "12720", "127200000016D"},
                    KeyOfName{"TheLongestSsid", std::string(32, 'z'),
                              "zzzzzzzzzzzzzzzzzzzzzzzzzzzzzzzz7E0ADCC5"},
                    KeyOfName{"ACable", "Wired", "WiredBAB49A54"}),
    testing::PrintToStringParamName());

TEST(NetworkKeys, OfNamesThatDifferOnlyInDroppedCharactersDiffer)
{
    EXPECT_EQ(MakeNetworkKey("MyNet1"), "MyNet1742C9345");
    EXPECT_EQ(MakeNetworkKey("My Net 1"), "MyNet1F6892A1F");
    EXPECT_EQ(MakeNetworkKey("My Net-1"), "MyNet1726E16D6");
}

RC_GTEST_PROP(NetworkKeys, EndInEightUpperCaseHexadecimalDigits, (const std::string& sName))
{
    const std::string sKey = MakeNetworkKey(sName);
    RC_ASSERT(sKey.size() >= nHashDigits);
    RC_ASSERT(sKey.find_first_not_of("0123456789ABCDEF", sKey.size() - nHashDigits) ==
              std::string::npos);
}

RC_GTEST_PROP(NetworkKeys, BeginWithTheNamesAsciiLettersAndDigitsInOrder,
              (const std::string& sName))
{
    const std::string sKept = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    std::string sExpected = sName;
    sExpected.erase(
        std::remove_if(sExpected.begin(), sExpected.end(),
                       [&](char character) { return sKept.find(character) == std::string::npos; }),
        sExpected.end());
    RC_ASSERT(Readable(MakeNetworkKey(sName)) == sExpected);
}

} // namespace Tovra
