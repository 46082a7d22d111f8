#include "tests/plugin/Stage.h"

#include <algorithm>
#include <gmock/gmock.h>

/** What the host hears of ConnMan's changes. */

namespace Tovra
{

using testing::IsEmpty;
using TestSupport::HostEvent;

namespace
{

constexpr const char* pHome = "/net/connman/service/wifi_Home";

} // namespace

class Changes : public Stage
{
protected:
    void SetUp() override { Start(Scenes::Quiet({Scenes::Wifi("Home")})); }

    /** Each word, as often as it was heard; a refresh must have followed each. */
    std::map<unsigned, int> CountWords()
    {
        Settle();
        const std::vector<HostEvent> vecEvents = host.GetEvents();
        std::map<unsigned, int> mapCounts;
        for (std::size_t n = 0; n < vecEvents.size(); n += 2) {
            EXPECT_EQ(vecEvents.at(n).kind, HostEvent::NetworksChanged);
            EXPECT_EQ(vecEvents.at(n + 1).kind, HostEvent::RefreshIpSettings);
            ++mapCounts[vecEvents[n].nWord];
        }
        return mapCounts;
    }
};

using Counts = std::map<unsigned, int>;

TEST_F(Changes, OfAStateIsHeardAsFive)
{
    pConnMan->SetState(pHome, "association");
    EXPECT_EQ(CountWords(), (Counts{{5, 1}}));
}

TEST_F(Changes, OfAnotherPropertyIsHeardAsFour)
{
    pConnMan->SetServiceProperty(pHome, "Domains", Simulator::MakeStrings({"example.net"}));
    EXPECT_EQ(CountWords(), (Counts{{4, 1}}));
}

TEST_F(Changes, OfAStrengthIsNotHeard)
{
    pConnMan->ChangeNetwork(pHome, [](Simulator::Network& network) { network.nStrength = 20; });
    EXPECT_EQ(CountWords(), Counts());
    Read();
    EXPECT_EQ(host.FindNetwork("Home52F50EAE")->nStrength, 20);
}

TEST_F(Changes, OfATechnologyIsHeardAsTwo)
{
    pConnMan->SetTechnologyProperty("/net/connman/technology/wifi", "Name",
                                    Simulator::MakeString("Radio"));
    EXPECT_EQ(CountWords(), (Counts{{2, 1}}));
}

TEST_F(Changes, OfTheListIsHeardAsFive)
{
    pConnMan->AddService(Scenes::Wifi("Other"));
    EXPECT_TRUE(host.AwaitWord(5));
    EXPECT_EQ(CountWords(), (Counts{{5, 1}}));
}

TEST_F(Changes, AreToldOnThePlugInsThread)
{
    pConnMan->SetState(pHome, "association");
    EXPECT_EQ(CountWords(), (Counts{{5, 1}}));
    for (const HostEvent& event : host.GetEvents())
        EXPECT_EQ(event.sThread, "DBusThread");
}

TEST_F(Changes, AreInPlaceWhenTheyAreTold)
{
    TestSupport::Mailbox<bool> mailbox;
    host.SetOnChange([&](unsigned) {
        Read();
        mailbox.Put(host.FindNetwork("Home52F50EAE")->bConnected);
    });
    pConnMan->SetServiceProperty(pHome, "State", Simulator::MakeString("ready"));
    EXPECT_EQ(mailbox.Take(), true);
    host.SetOnChange(nullptr);
    Settle();
}

TEST_F(Changes, AreNotToldWithoutAnObserverButTheListsFollow)
{
    host.config.pNetworkObserver = nullptr;
    pConnMan->SetState(pHome, "ready");
    EXPECT_THAT(CountWords(), IsEmpty());
    Read();
    EXPECT_TRUE(host.FindNetwork("Home52F50EAE")->bConnected);
}

// What an observer throws stays in the client, whose thread goes on.
TEST_F(Changes, AreToldAfterAnObserverThrew)
{
    host.SetOnChange([](unsigned) { throw std::runtime_error("not now"); });
    pConnMan->SetState(pHome, "association");
    Settle();
    EXPECT_EQ(host.CountWord(5), 1U);
    EXPECT_EQ(host.CountRefreshes(), 0U);

    host.SetOnChange(nullptr);
    pConnMan->SetState(pHome, "ready");
    EXPECT_TRUE(host.AwaitWord(5, 2));
    Settle();
}

} // namespace Tovra
