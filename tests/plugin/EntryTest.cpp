#include "tests/plugin/Stage.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ProcessThreads.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <set>
#include <system_error>
#include <thread>

/** The exported entry, mostly with a bus on which there is no ConnMan. */

namespace Tovra
{

using TestSupport::Host;
using TestSupport::PlugInLibrary;

namespace
{

constexpr std::size_t nMoreThanThereIs = std::size_t(1) << 46;

/** While it lives, no thread can be started: each wants more stack than there is memory. */
class NoMoreThreads
{
public:
    NoMoreThreads()
    {
        pthread_getattr_default_np(&usual);
        pthread_attr_t huge = {};
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, nMoreThanThereIs);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }

    ~NoMoreThreads()
    {
        pthread_setattr_default_np(&usual);
        pthread_attr_destroy(&usual);
    }

    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t usual = {};
};

void AddANetwork(DeviceConfig& config)
{
    config.mapNetworkServices["OldAAAAAAAA"].sName = "Old";
}

} // namespace

TEST(Entry, GivesOneObjectThatKeepsTheFirstConfiguration)
{
    const PlugInLibrary library;
    Host& host = Host::Get();
    DeviceConfig second;
    AddANetwork(second);
    host.Edit(AddANetwork);

    ITargetSpecific* const pPlugIn = library.GetInterface(host.config);
    ASSERT_NE(pPlugIn, nullptr);
    EXPECT_EQ(library.GetInterface(second), pPlugIn);

    EXPECT_EQ(pPlugIn->TargetSpecificGetNetworkConfiguration(), 1);
    EXPECT_TRUE(host.Look([](const DeviceConfig& c) { return c.mapNetworkServices.empty(); }));
    EXPECT_EQ(second.mapNetworkServices.size(), 1U);
}

TEST(Entry, GivesOneObjectToAllThatCallItAtOnce)
{
    const PlugInLibrary library;
    TestSupport::Mailbox<ITargetSpecific*> mailbox;
    std::vector<std::thread> vecThreads;
    for (int n = 0; n < 16; ++n)
        vecThreads.emplace_back([&] { mailbox.Put(library.GetInterface(Host::Get().config)); });
    std::set<ITargetSpecific*> setObjects;
    for (std::thread& thread : vecThreads) {
        setObjects.insert(mailbox.Take().value_or(nullptr));
        thread.join();
    }
    EXPECT_EQ(setObjects.size(), 1U);
    EXPECT_EQ(setObjects.count(nullptr), 0U);
    EXPECT_EQ(TestSupport::FindThreads("DBusThread").size(), 1U);
}

TEST(Entry, StartsTheDispatchThreadNotTheLoading)
{
    const PlugInLibrary library;
    EXPECT_TRUE(TestSupport::FindThreads("DBusThread").empty());
    library.GetInterface(Host::Get().config);
    EXPECT_EQ(TestSupport::FindThreads("DBusThread").size(), 1U);
}

TEST(Entry, ThrowsWhatBuildingThrowsAndTriesAgain)
{
    const PlugInLibrary library;
    Host& host = Host::Get();
    {
        const NoMoreThreads noMoreThreads;
        EXPECT_THROW(library.GetInterface(host.config), std::system_error);
        EXPECT_THROW(library.GetInterface(host.config), std::system_error);
    }
    EXPECT_TRUE(TestSupport::FindThreads("DBusThread").empty());

    EXPECT_NE(library.GetInterface(host.config), nullptr);
    EXPECT_EQ(TestSupport::FindThreads("DBusThread").size(), 1U);
}

using EntryWithConnMan = Stage;

TEST_F(EntryWithConnMan, HooksThePlugInInOnceHoweverOftenBuildingFailed)
{
    StartConnMan(Scenes::Quiet({Scenes::Wifi("Home")}));
    const PlugInLibrary library;
    {
        const NoMoreThreads noMoreThreads;
        EXPECT_THROW(library.GetInterface(host.config), std::system_error);
    }
    StartHost();
    pConnMan->SetState("/net/connman/service/wifi_Home", "ready");
    Settle();
    EXPECT_EQ(host.CountWord(5), 1U);
    EXPECT_EQ(pConnMan->GetAgentCount(), 1U);
}

TEST_F(EntryWithConnMan, HooksThePlugInInOnceHoweverOftenItIsCalled)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    const PlugInLibrary library;
    EXPECT_EQ(library.GetInterface(host.config), pPlugIn);
    DeviceConfig other;
    EXPECT_EQ(library.GetInterface(other), pPlugIn);
    pConnMan->SetState("/net/connman/service/wifi_Home", "ready");
    Settle();
    EXPECT_EQ(host.CountWord(5), 1U);
}

TEST_F(EntryWithConnMan, GivesAnObjectWhoseLoadingGivesZero)
{
    Start(Scenes::Quiet());
    EXPECT_EQ(pPlugIn->TargetSpecificLoad(), 0);
}

TEST(Load, GivesZeroWithoutConnMan)
{
    const PlugInLibrary library;
    EXPECT_EQ(library.GetInterface(Host::Get().config)->TargetSpecificLoad(), 0);
}

TEST(Load, GivesZeroWithoutABus)
{
    TestSupport::GetSystemBus().Stop();
    const PlugInLibrary library;
    EXPECT_EQ(library.GetInterface(Host::Get().config)->TargetSpecificLoad(), 0);
}

TEST(Entry, GivesAnObjectThatWorksOnEmptyListsWithoutABus)
{
    TestSupport::GetSystemBus().Stop();
    const PlugInLibrary library;
    Host& host = Host::Get();
    host.Edit(AddANetwork);
    ITargetSpecific* const pPlugIn = library.GetInterface(host.config);
    EXPECT_EQ(pPlugIn->TargetSpecificSetNetworkConfiguration(), 1);
    EXPECT_EQ(host.Look([](const DeviceConfig& c) { return c.mapNetworkServices.size(); }), 1U);
    EXPECT_EQ(pPlugIn->TargetSpecificGetNetworkConfiguration(), 1);
    EXPECT_EQ(host.Look([](const DeviceConfig& c) { return c.mapNetworkServices.size(); }), 0U);
    EXPECT_TRUE(host.GetEvents().empty());
}

} // namespace Tovra
