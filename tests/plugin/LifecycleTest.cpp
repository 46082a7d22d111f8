#include "tests/connman/PrivateOpt.h"
#include "tests/plugin/ChildProcess.h"
#include "tests/plugin/Stage.h"
#include "tests/support/Counts.h"

#include <algorithm>

/** The library is opened, used, closed and left, in any order, while signals come in all the time.
 */

namespace Tovra
{

using TestSupport::ChildProcess;
using TestSupport::ProcessEnd;

namespace
{

using Steps = std::vector<std::string>;

constexpr const char* pHome = "/net/connman/service/wifi_Home";

std::string Join(const Steps& vecSteps)
{
    std::string sJoined;
    for (const std::string& sStep : vecSteps)
        sJoined += (sJoined.empty() ? "" : " ") + sStep;
    return sJoined;
}

/** What makes sense next: the library must be open to enter it, and entered to be used. */
Steps GetPossible(const Steps& vecSteps)
{
    const auto count = [&](const char* pStep) {
        return std::count(vecSteps.begin(), vecSteps.end(), pStep);
    };
    Steps vecPossible = {"open"};
    if (count("open") > count("close"))
        vecPossible.insert(vecPossible.end(), {"enter", "close"});
    if (count("enter") > 0)
        vecPossible.insert(vecPossible.end(), {"get", "set"});
    return vecPossible;
}

void AddAll(std::vector<Steps>& vecAll, const Steps& vecSteps, std::size_t nLength)
{
    if (vecSteps.size() == nLength) {
        vecAll.push_back(vecSteps);
        return;
    }
    for (const std::string& sStep : GetPossible(vecSteps)) {
        Steps vecLonger = vecSteps;
        vecLonger.push_back(sStep);
        AddAll(vecAll, vecLonger, nLength);
    }
}

} // namespace

class Lifecycle : public Stage
{
protected:
    void SetUp() override
    {
        StartConnMan(Scenes::Quiet({Scenes::Wifi("Home", "online"), Scenes::Wifi("Other")}));
        EmitForEver(pHome, "net.connman.Service", "State", "online");
        EmitForEver(pHome, "net.connman.Service", "Name", "Home");
        EmitForEver("/net/connman/technology/wifi", "net.connman.Technology", "Name", "WiFi");
    }

    void EmitForEver(const char* pPath, const char* pInterface, const char* pProperty,
                     const char* pValue)
    {
        const Simulator::Json values = Simulator::Json::array({pProperty, {"s", pValue}});
        pConnMan->EmitStorm({pPath, pInterface, "PropertyChanged", {"sv", values}, ""}, 1000000,
                            std::chrono::milliseconds(2));
    }

    static ProcessEnd Run(Steps vecSteps)
    {
        vecSteps.insert(vecSteps.begin(), CORVANE_LIFECYCLE_HOST);
        return ChildProcess(vecSteps).Await();
    }

    static void ExpectSuccess(const Steps& vecSteps)
    {
        const ProcessEnd end = Run(vecSteps);
        EXPECT_TRUE(end.IsSuccess()) << Join(vecSteps) << ": " << end;
    }
};

TEST_F(Lifecycle, EndsWellInAnyOrderOfSteps)
{
    std::vector<Steps> vecAll;
    AddAll(vecAll, {"open"}, 5);
    ASSERT_EQ(vecAll.size(), 159U);
    const Steps vecEnds = {"return", "exit", "exit-elsewhere"};
    constexpr std::size_t nEvery = TestSupport::ReduceCount(1, 1, 3);
    std::size_t nRan = 0;
    for (std::size_t n = 0; n < vecAll.size(); n += nEvery) {
        vecAll[n].push_back(vecEnds[nRan++ % vecEnds.size()]);
        ExpectSuccess(vecAll[n]);
    }
    TestSupport::PrintCount("orders of steps", static_cast<int>(nRan),
                            static_cast<int>(vecAll.size()));
}

class LifecycleInTheStorm : public Lifecycle, public testing::WithParamInterface<Steps>
{
};

TEST_P(LifecycleInTheStorm, EndsWell)
{
    ExpectSuccess(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Of, LifecycleInTheStorm,
    testing::Values(Steps{"open", "enter", "hear", "return"},
                    Steps{"open", "enter", "hear", "exit"},
                    Steps{"open", "enter", "hear", "exit-elsewhere"},
                    Steps{"open", "enter", "hear", "close", "return"},
                    Steps{"open", "enter", "close", "hear", "get", "set", "exit"},
                    Steps{"open", "enter", "close", "open", "enter", "hear", "close", "return"},
                    Steps{"open", "close", "open", "enter", "hear", "get", "close", "exit"},
                    Steps{"open", "close", "open", "close", "return"},
                    Steps{"open", "open", "close", "enter", "load", "close", "get", "hear", "exit"},
                    Steps{"open-elsewhere", "enter", "get", "hear", "return"},
                    Steps{"open", "enter", "read-late", "return"},
                    Steps{"open", "enter", "close", "read-late", "exit"},
                    Steps{"open", "enter", "exit-on-change"},
                    Steps{"open-elsewhere", "close", "open", "enter", "hear", "exit-elsewhere"}),
    [](const auto& test) { return "Order" + std::to_string(test.index); });

TEST_F(Lifecycle, OfManyHostsAtOnceEndsWell)
{
    const std::string sHost = CORVANE_LIFECYCLE_HOST;
    std::vector<std::unique_ptr<ChildProcess>> vecHosts;
    for (int n = 0; n < 4; ++n)
        vecHosts.push_back(std::make_unique<ChildProcess>(
            Steps{sHost, "open", "enter", "hear", "get", "close", "set", "return"}));
    for (const auto& pHost : vecHosts) {
        const ProcessEnd end = pHost->Await();
        EXPECT_TRUE(end.IsSuccess()) << end;
    }
}

} // namespace Tovra
