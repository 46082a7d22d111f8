#include "tests/connman/model/Model.h"
#include "tests/connman/model/BusSubject.h"
#include "tests/connman/model/Comparison.h"
#include "tests/connman/model/Daemon.h"
#include "tests/support/Counts.h"

#include <gtest/gtest.h>
#include <set>

namespace Tovra::ConnManModel
{

namespace
{

constexpr std::size_t nEvents = 50;
constexpr int nInFull = 10000;
constexpr int nDirect = TestSupport::ReduceCount(nInFull, 1000, 300);
constexpr int nOnTheBus = 50;

/** Runs so many histories and returns how many passed; a difference fails the test. */
template <class Client> int RunHistories(int nHistories)
{
    auto parameters = rc::detail::configuration().testParams;
    parameters.maxSuccess = nHistories;
    const auto property = [] {
        const History history = *Histories(nEvents);
        Client client;
        if (const auto difference = Compare(client, history))
            RC_FAIL(*difference);
    };
    const auto* pTest = testing::UnitTest::GetInstance()->current_test_info();
    const rc::detail::TestMetadata metadata{pTest->name(), pTest->name()};
    const auto result = rc::detail::checkTestable(property, metadata, parameters);
    if (result.template is<rc::detail::SuccessResult>())
        return result.template get<rc::detail::SuccessResult>().numSuccess;
    std::ostringstream report;
    rc::detail::printResultMessage(result, report);
    ADD_FAILURE() << report.str();
    return 0;
}

TEST(ConnManModel, TheClientsListsAndDeedsAreTheModelsThroughAnyHistory)
{
    TestSupport::PrintCount("histories", RunHistories<DirectSubject>(nDirect), nInFull);
}

TEST(ConnManModel, OnABusTheClientFollowsTheModelToo)
{
    TestSupport::PrintCount("histories on a bus", RunHistories<BusSubject>(nOnTheBus), nOnTheBus);
}

/** All the different things that the model does in so many histories, a line for each. */
std::string TellAll(std::uint64_t nHistories)
{
    std::set<std::string> setLines;
    for (std::uint64_t nSeed = 0; nSeed < nHistories; ++nSeed) {
        const History history = MakeHistory(nSeed, nEvents);
        Model model(history.vecMasks, history.GetThreshold());
        Daemon daemon;
        for (const Event& event : history.vecEvents)
            model.Receive(daemon.Play(event));
        for (const std::string& sLine : model.TakeJournal())
            setLines.insert(sLine);
    }
    std::string sAll;
    for (const std::string& sLine : setLines)
        sAll += sLine + "\n";
    return sAll;
}

TEST(ConnManModel, TheHistoriesReachAllThatTheClientDoes)
{
    const std::vector<std::string> vecParts = {
        // words, then log messages by their lines and by what sets them apart
        "with 2;",
        "with 4;",
        "with 5;",
        "with 8\n",
        ", 42)",
        ", 338)",
        ", 361)",
        ", 367)",
        ", 386)",
        ", 390)",
        ", 395)",
        ", 407)",
        ", 416)",
        ", 435)",
        "UpdateNetworks: Message",
        "UpdateTechnologies: Message",
        "PropertyChanged: Message",
        "command /",
        "dhcp-address",
        "static-address",
        "autoip-address",
        "removal of all but wifi_",
        "removal of all but ethernet_"};
    const std::string sAll = TellAll(200);
    for (const std::string& sPart : vecParts)
        EXPECT_NE(sAll.find(sPart), std::string::npos) << sPart;
}

} // namespace

} // namespace Tovra::ConnManModel
