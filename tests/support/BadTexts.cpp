#include "tests/support/BadTexts.h"

namespace Tovra::TestSupport
{

std::string MakeLongestName()
{
    return "net." + std::string(251, 'a');
}

const std::vector<BadText>& GetBadPaths()
{
    static const std::vector<BadText> vecPaths = {
        {"Null", nullptr},        {"Empty", ""},           {"Relative", "a/b"},
        {"TrailingSlash", "/a/"}, {"TwoSlashes", "/a//b"}, {"Hyphen", "/a-b"},
        {"Space", "/a b"},        {"Umlaut", "/\xC3\xA4"}, {"NotUtf8", "/a\xFF"},
    };
    return vecPaths;
}

const std::vector<BadText>& GetBadInterfaces()
{
    static const std::string sTooLong = MakeLongestName() + "a";
    static const std::vector<BadText> vecInterfaces = {
        {"Null", nullptr},          {"Empty", ""},
        {"OneElement", "net"},      {"LeadingDot", ".net.a"},
        {"TrailingDot", "net.a."},  {"TwoDots", "net..a"},
        {"LeadingDigit", "net.1a"}, {"Hyphen", "net.a-b"},
        {"Quote", "net.a'"},        {"Umlaut", "net.\xC3\xA4"},
        {"NotUtf8", "net.a\xFF"},   {"TooLong", sTooLong.c_str()},
    };
    return vecInterfaces;
}

const std::vector<BadText>& GetBadMembers()
{
    static const std::string sTooLong(256, 'a');
    static const std::vector<BadText> vecMembers = {
        {"Null", nullptr},        {"Empty", ""},          {"Dot", "Get.Services"},
        {"LeadingDigit", "1Get"}, {"Hyphen", "Get-It"},   {"Space", "Get It"},
        {"Umlaut", "\xC3\xA4"},   {"NotUtf8", "Get\xFF"}, {"TooLong", sTooLong.c_str()},
    };
    return vecMembers;
}

const std::vector<BadText>& GetBadBusNames()
{
    static const std::string sTooLong = MakeLongestName() + "a";
    static const std::vector<BadText> vecNames = {
        {"Null", nullptr},
        {"Empty", ""},
        {"OneElement", "net"},
        {"LeadingDot", ".net.a"},
        {"TrailingDot", "net.a."},
        {"TwoDots", "net..a"},
        {"LeadingDigit", "net.1a"},
        {"Space", "net.a b"},
        {"Umlaut", "net.\xC3\xA4"},
        {"NotUtf8", "net.a\xFF"},
        {"TooLong", sTooLong.c_str()},
    };
    return vecNames;
}

} // namespace Tovra::TestSupport
