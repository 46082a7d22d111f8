#include "host/DeviceConfig.h"
#include "host/Qel.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Tovra
{

using testing::MatchesRegex;

namespace
{

constexpr const char* pVariable = "FUNDRA_LOG_LEVEL";
constexpr const char* pTime = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} ";

template <class Function> std::string CaptureErrors(const Function& fn)
{
    testing::internal::CaptureStderr();
    fn();
    return testing::internal::GetCapturedStderr();
}

/** The levels that are active, as a text of their numbers. */
std::string GetActiveLevels()
{
    std::string sLevels;
    for (const QelLogLevel level : {QelLogDebug, QelLogInfo, QelLogWarning, QelLogError}) {
        if (QelLoggingStateIsActive(level))
            sLevels += std::to_string(level);
    }
    return sLevels;
}

} // namespace

TEST(StandInLog, WritesOneLineWithTimeLevelTextFunctionFileAndLine)
{
    const std::string sWritten =
        CaptureErrors([] { QelLog(QelLogError, "Too bad: 100 %s", "Work", "Libraries/Work", 42); });
    EXPECT_THAT(sWritten, MatchesRegex(std::string(pTime) +
                                       "\\[3\\] Too bad: 100 %s \\(Work, Libraries/Work:42\\)\n"));
}

TEST(StandInLog, IsActiveFromWarningsUpwardsIfNothingElseIsSaid)
{
    unsetenv(pVariable);
    EXPECT_EQ(GetActiveLevels(), "23");
}

TEST(StandInLog, IsActiveFromTheLevelOfTheVariableUpwards)
{
    setenv(pVariable, "3", 1);
    EXPECT_EQ(GetActiveLevels(), "3");
}

TEST(StandInLog, IsSilentFromALevelThatDoesNotExist)
{
    setenv(pVariable, "4", 1);
    EXPECT_EQ(GetActiveLevels(), "");
}

TEST(StandInLog, WritesEverythingForAVariableThatIsNoNumber)
{
    setenv(pVariable, "all", 1);
    EXPECT_EQ(GetActiveLevels(), "0123");
}

TEST(StandInConfiguration, TellsOfARefreshWhereThatIsActive)
{
    setenv(pVariable, "1", 1);
    DeviceConfig config;
    EXPECT_THAT(CaptureErrors([&] { config.RefreshIpSettings(); }),
                MatchesRegex(std::string(pTime) +
                             "\\[1\\] The device's addresses may have changed\\. "
                             "\\(RefreshIpSettings, standin/DeviceConfig:[0-9]+\\)\n"));
}

TEST(StandInConfiguration, RefreshesInSilenceElsewhere)
{
    unsetenv(pVariable);
    DeviceConfig config;
    EXPECT_EQ(CaptureErrors([&] { config.RefreshIpSettings(); }), "");
}

} // namespace Tovra
