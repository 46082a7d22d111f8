#include "tests/plugin/ChildProcess.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace Tovra
{

namespace
{

const std::string sLibrary = CORVANE_PLUGIN;

/** The lines that a look at the library prints; without the indentation. */
std::vector<std::string> Look(const std::string& sTool)
{
    std::istringstream output(TestSupport::ReadOutput("LC_ALL=C " + sTool + " '" + sLibrary + "'"));
    std::vector<std::string> vecLines;
    for (std::string sLine; std::getline(output, sLine);) {
        sLine.erase(0, sLine.find_first_not_of(' '));
        vecLines.push_back(sLine);
    }
    return vecLines;
}

bool Contains(const std::string& sLine, const std::string& sPart)
{
    return sLine.find(sPart) != std::string::npos;
}

/** The first line that begins with a text; empty if there is none. */
std::string FindLine(const std::vector<std::string>& vecLines, const std::string& sStart)
{
    for (const std::string& sLine : vecLines) {
        if (sLine.rfind(sStart, 0) == 0)
            return sLine;
    }
    return "";
}

std::set<std::string> FindNeeded()
{
    std::set<std::string> setNeeded;
    for (const std::string& sLine : Look("readelf -dW")) {
        if (!Contains(sLine, "(NEEDED)"))
            continue;
        const auto nStart = sLine.find('[') + 1;
        setNeeded.insert(sLine.substr(nStart, sLine.find(']') - nStart));
    }
    return setNeeded;
}

bool IsBoost(const std::string& sNeeded)
{
    return sNeeded.rfind("libboost_", 0) == 0;
}

/** The names of the functions that the library takes from others. */
std::set<std::string> FindTaken()
{
    std::set<std::string> setTaken;
    for (const std::string& sLine : Look("nm -D --undefined-only")) {
        const std::string sName = sLine.substr(sLine.rfind(' ') + 1);
        setTaken.insert(sName.substr(0, sName.find('@')));
    }
    return setTaken;
}

std::string FindDynamicEntry(const std::string& sTag)
{
    for (const std::string& sLine : Look("readelf -dW")) {
        if (Contains(sLine, "(" + sTag + ")"))
            return sLine;
    }
    return "";
}

} // namespace

TEST(LibraryFile, ExportsTheEntryAlone)
{
    const std::vector<std::string> vecSymbols = Look("nm -D --defined-only");
    ASSERT_EQ(vecSymbols.size(), 1U) << testing::PrintToString(vecSymbols);
    EXPECT_TRUE(Contains(vecSymbols[0], " T GetTargetSpecificInterface")) << vecSymbols[0];
}

TEST(LibraryFile, NeedsTheHostsLibraries)
{
    const auto setNeeded = FindNeeded();
    EXPECT_EQ(setNeeded.count("libcorvane.so"), 1U);
    EXPECT_EQ(setNeeded.count("libfundra.so.5.0"), 1U);
}

TEST(LibraryFile, NeedsNothingButTheHostDBusBoostAndTheRuntime)
{
    const std::set<std::string> setAllowed = {
        "libcorvane.so", "libfundra.so.5.0", "libdbus-1.so.3", "libstdc++.so.6",
        "libgcc_s.so.1", "libc.so.6",        "libm.so.6",      "ld-linux-x86-64.so.2",
    };
    const auto setNeeded = FindNeeded();
    EXPECT_EQ(setNeeded.count("libdbus-1.so.3"), 1U);
    for (const std::string& sNeeded : setNeeded)
        EXPECT_TRUE(setAllowed.count(sNeeded) == 1 || IsBoost(sNeeded)) << sNeeded;
}

TEST(LibraryFile, AsksToStayLoaded)
{
    EXPECT_TRUE(Contains(FindDynamicEntry("FLAGS_1"), "NODELETE")) << FindDynamicEntry("FLAGS_1");
}

TEST(LibraryFile, HasItsTablesBoundAtLoadAndThenReadOnly)
{
    EXPECT_TRUE(Contains(FindDynamicEntry("FLAGS"), "BIND_NOW")) << FindDynamicEntry("FLAGS");
    EXPECT_TRUE(Contains(FindDynamicEntry("FLAGS_1"), "NOW")) << FindDynamicEntry("FLAGS_1");
    EXPECT_NE(FindLine(Look("readelf -lW"), "GNU_RELRO"), "");
}

TEST(LibraryFile, HasNoWritableCodeAndNoExecutableStack)
{
    const std::vector<std::string> vecSegments = Look("readelf -lW");
    const std::string sStack = FindLine(vecSegments, "GNU_STACK");
    EXPECT_TRUE(Contains(sStack, " RW ")) << sStack;
    EXPECT_FALSE(Contains(sStack, "E")) << sStack;
    for (const std::string& sSegment : vecSegments)
        EXPECT_FALSE(sSegment.rfind("LOAD", 0) == 0 && Contains(sSegment, "RWE")) << sSegment;
    EXPECT_EQ(FindDynamicEntry("TEXTREL"), "");
}

TEST(LibraryFile, HasGuardsOnItsStack)
{
    EXPECT_EQ(FindTaken().count("__stack_chk_fail"), 1U);
}

TEST(LibraryFile, TakesTheHostsFunctionsFromTheHost)
{
    const auto setTaken = FindTaken();
    EXPECT_EQ(setTaken.count("_ZN5Tovra12DeviceConfig17RefreshIpSettingsEv"), 1U);
    EXPECT_EQ(setTaken.count("_Z6QelLog11QelLogLevelPKcS1_S1_i"), 1U);
    EXPECT_EQ(setTaken.count("_Z23QelLoggingStateIsActive11QelLogLevel"), 1U);
}

#ifdef CORVANE_SHIPPED // what only an optimising compiler does
TEST(LibraryFile, HasItsCallsFortified)
{
    const auto setTaken = FindTaken();
    const bool bFortified = std::any_of(setTaken.begin(), setTaken.end(), [](const auto& sName) {
        return sName.size() > 6 && sName.compare(sName.size() - 4, 4, "_chk") == 0;
    });
    EXPECT_TRUE(bFortified);
}
#endif

} // namespace Tovra
