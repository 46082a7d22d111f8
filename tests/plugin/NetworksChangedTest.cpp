#include "tests/plugin/Host.h"
#include "tests/plugin/Insides.h"

#include <gtest/gtest.h>

/** The words that a callback of the client may bring, without the client: it sends few of them. */

namespace Tovra
{

using TestSupport::Host;
using TestSupport::HostEvent;

class NetworksChanged : public testing::Test
{
protected:
    void Tell(unsigned nWord) { insides.OnNetworksChanged(*pPlugIn, nWord); }

    TestSupport::IInsides& insides = TestSupport::LoadInsidesWithoutBus();
    Host& host = Host::Get();
    ITargetSpecific* const pPlugIn = insides.Make(host.config);
};

class RelevantWord : public NetworksChanged, public testing::WithParamInterface<unsigned>
{
};

class IrrelevantWord : public RelevantWord
{
};

TEST_P(RelevantWord, IsToldAsItCameAndThenTheAddressesAreRefreshed)
{
    Tell(GetParam());
    const std::vector<HostEvent> vecEvents = host.GetEvents();
    ASSERT_EQ(vecEvents.size(), 2U);
    EXPECT_EQ(vecEvents[0].kind, HostEvent::NetworksChanged);
    EXPECT_EQ(vecEvents[0].nWord, GetParam());
    EXPECT_EQ(vecEvents[1].kind, HostEvent::RefreshIpSettings);
    EXPECT_EQ(vecEvents[1].pConfig, &host.config);
}

TEST_P(RelevantWord, IsToldToNobodyWithoutAnObserverAndNothingIsRefreshed)
{
    host.config.pNetworkObserver = nullptr;
    Tell(GetParam());
    EXPECT_TRUE(host.GetEvents().empty()) << testing::PrintToString(host.GetEvents());
}

INSTANTIATE_TEST_SUITE_P(Delivered, RelevantWord, testing::Values(2U, 4U, 5U));
INSTANTIATE_TEST_SUITE_P(NotDelivered, RelevantWord,
                         testing::Values(1U, 3U, 6U, 7U, 9U, 10U, 12U, 15U, 0x11U, 0x80000001U,
                                         0xFFFFFFFFU));

TEST_P(IrrelevantWord, IsToldToNobodyAndNothingIsRefreshed)
{
    Tell(GetParam());
    EXPECT_TRUE(host.GetEvents().empty()) << testing::PrintToString(host.GetEvents());
}

INSTANTIATE_TEST_SUITE_P(Delivered, IrrelevantWord, testing::Values(8U));
INSTANTIATE_TEST_SUITE_P(NotDelivered, IrrelevantWord,
                         testing::Values(0U, 0x10U, 0x18U, 0x80000000U, 0xFFFFFFF0U, 0xFFFFFFF8U));

TEST_F(NetworksChanged, TellsTheObserverOfTheMainConfigurationAndRefreshesThat)
{
    DeviceConfig mainConfig;
    mainConfig.pNetworkObserver = &host;
    host.config.pNetworkObserver = nullptr;
    host.config.pMainConfig = &mainConfig;
    Tell(5);
    const std::vector<HostEvent> vecEvents = host.GetEvents();
    ASSERT_EQ(vecEvents.size(), 2U);
    EXPECT_EQ(vecEvents[0].nWord, 5U);
    EXPECT_EQ(vecEvents[1].pConfig, &mainConfig);
}

TEST_F(NetworksChanged, DoesNotTellTheObserverOfAConfigurationThatIsNotTheMainOne)
{
    DeviceConfig mainConfig;
    host.config.pMainConfig = &mainConfig;
    Tell(5);
    EXPECT_TRUE(host.GetEvents().empty()) << testing::PrintToString(host.GetEvents());
    host.config.pMainConfig = &host.config;
}

TEST_F(NetworksChanged, TakesNoLock)
{
    host.Edit([&](DeviceConfig&) { Tell(5); });
    EXPECT_EQ(host.CountWord(5), 1U);
    EXPECT_EQ(host.CountRefreshes(), 1U);
}

} // namespace Tovra
