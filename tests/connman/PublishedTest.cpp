#include "Common/Published.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace Tovra
{

static_assert(!std::is_copy_constructible_v<Published<int>>);
static_assert(!std::is_copy_assignable_v<Published<int>>);
static_assert(!std::is_move_constructible_v<Published<int>>);

TEST(Published, HoldsADefaultValueAtFirst)
{
    EXPECT_EQ(Published<int>().Get(), 0);
    EXPECT_TRUE(Published<std::vector<int>>().Get().empty());
}

TEST(Published, ShowsWhatAnUpdateMadeOfTheNewestVersion)
{
    Published<std::vector<int>> values;
    for (const int nValue : {3, 1, 2})
        values.Update([&](std::vector<int>& vecNext) { vecNext.push_back(nValue); });
    EXPECT_THAT(values.Get(), testing::ElementsAre(3, 1, 2));
}

TEST(Published, AVersionInHandStaysAsItIs)
{
    Published<std::string> text;
    const std::string& sFirst = text.Get();
    text.Update([](std::string& sNext) { sNext = "second"; });
    const std::string& sSecond = text.Get();
    text.Update([](std::string& sNext) { sNext += " and third"; });
    EXPECT_EQ(sFirst, "");
    EXPECT_EQ(sSecond, "second");
    EXPECT_EQ(text.Get(), "second and third");
}

TEST(Published, AnUpdateThatThrowsPublishesNothing)
{
    Published<std::vector<int>> values;
    values.Update([](std::vector<int>& vecNext) { vecNext.push_back(1); });
    const auto fnThrow = [](std::vector<int>& vecNext) {
        vecNext.push_back(2);
        throw std::runtime_error("no");
    };
    EXPECT_THROW(values.Update(fnThrow), std::runtime_error);
    EXPECT_THAT(values.Get(), testing::ElementsAre(1));
}

TEST(Published, AnUpdateThatIsOvertakenIsMadeAgainOnTheNewerVersion)
{
    Published<std::vector<int>> values;
    int nCalls = 0;
    values.Update([&](std::vector<int>& vecNext) {
        if (nCalls++ == 0)
            values.Update([](std::vector<int>& vecOther) { vecOther.push_back(1); });
        vecNext.push_back(2);
    });
    EXPECT_EQ(nCalls, 2);
    EXPECT_THAT(values.Get(), testing::ElementsAre(1, 2));
}

TEST(Published, EndsEveryVersionWithItself)
{
    const auto pCounted = std::make_shared<int>(0);
    {
        Published<std::vector<std::shared_ptr<int>>> values;
        for (int nUpdate = 0; nUpdate < 3; ++nUpdate)
            values.Update([&](auto& vecNext) { vecNext.push_back(pCounted); });
        EXPECT_EQ(pCounted.use_count(), 1 + 1 + 2 + 3);
    }
    EXPECT_EQ(pCounted.use_count(), 1);
}

TEST(Published, NoUpdateOfSeveralThreadsIsLost)
{
    constexpr int nThreads = 4;
    constexpr int nUpdates = 100;
    Published<std::vector<int>> values;
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < nThreads; ++nThread)
        vecThreads.emplace_back([&values, nThread] {
            for (int nUpdate = 0; nUpdate < nUpdates; ++nUpdate)
                values.Update([&](std::vector<int>& vecNext) {
                    vecNext.push_back(nThread * nUpdates + nUpdate);
                });
        });
    for (std::thread& thread : vecThreads)
        thread.join();

    std::vector<int> vecExpected(nThreads * nUpdates);
    for (std::size_t nValue = 0; nValue < vecExpected.size(); ++nValue)
        vecExpected[nValue] = static_cast<int>(nValue);
    EXPECT_THAT(values.Get(), testing::UnorderedElementsAreArray(vecExpected));
}

TEST(Published, AReaderSeesOnlyWholeVersionsAndNeverAnOlderOneAgain)
{
    constexpr std::size_t nVersions = 500;
    Published<std::vector<std::size_t>> values; // n times n
    std::thread writer([&] {
        for (std::size_t nVersion = 1; nVersion <= nVersions; ++nVersion)
            values.Update([&](auto& vecNext) { vecNext.assign(nVersion, nVersion); });
    });
    std::size_t nSeen = 0;
    bool bWhole = true;
    while (bWhole && nSeen < nVersions) {
        const std::vector<std::size_t>& vecSeen = values.Get();
        bWhole = vecSeen.size() >= nSeen;
        nSeen = vecSeen.size();
        for (const std::size_t nValue : vecSeen)
            bWhole = bWhole && nValue == nSeen;
    }
    writer.join();
    EXPECT_TRUE(bWhole) << "at version " << nSeen;
}

} // namespace Tovra
