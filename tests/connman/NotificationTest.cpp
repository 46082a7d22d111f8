#include "Common/HostEvent.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/OfflineClient.h"

#include <future>
#include <gmock/gmock.h>

namespace Tovra
{

using ClientLog::Notification;
using testing::ElementsAre;
using testing::IsEmpty;
namespace HostLog = TestSupport::HostLog;

namespace
{

constexpr const char* pDhcpCommand =
    "/opt/tovra/bin/corvane --ipc-send=netcfg-dhcp-address-acquired";
constexpr const char* pStaticCommand =
    "/opt/tovra/bin/corvane --ipc-send=netcfg-static-address-configured";
constexpr const char* pAutoIpCommand =
    "/opt/tovra/bin/corvane --ipc-send=netcfg-autoip-address-acquired";

} // namespace

// --- Which command a method gives --------------------------------------------------------------

TEST(HostCommand, TellsOfAnAddressByDhcp)
{
    EXPECT_EQ(HostEvent::MakeCommand("dhcp"), pDhcpCommand);
}

TEST(HostCommand, TellsOfAStaticAddress)
{
    EXPECT_EQ(HostEvent::MakeCommand("manual"), pStaticCommand);
}

TEST(HostCommand, TellsOfAnAutomaticAddressForAnyOtherMethod)
{
    for (const char* pMethod :
         {"off", "fixed", "auto", "", "DHCP", "Manual", "dhcp ", "dhcpv6", "; reboot", "$(reboot)"})
        EXPECT_EQ(HostEvent::MakeCommand(pMethod), pAutoIpCommand) << pMethod;
}

// --- Which service is told of ------------------------------------------------------------------

/** The client without a bus; the commands that it runs are only written down. */
class Notifying : public testing::Test
{
protected:
    void SetList(const std::vector<ListData::Service>& vecServices)
    {
        client.UpdateNetworks(ListData::Services(vecServices), 0);
        vecCommands.clear();
        HostLog::Reset();
    }

    void Tell(const std::vector<ListData::Service>& vecServices)
    {
        SetList(vecServices);
        client.UpdateNetworkStateIpc();
    }

    void Run(const std::string& sCommand)
    {
        vecCommands.push_back(sCommand);
        if (fnRunning)
            fnRunning();
    }

    DBus::Connection connection;
    std::vector<std::string> vecCommands;
    std::function<void()> fnRunning;
    ConnMan::Impl client{connection,
                         {[this](const std::string& sCommand) { Run(sCommand); },
                          [](const std::string&, const auto&) {}}};
};

TEST_F(Notifying, TellsOfTheFirstConnectedServiceAfterALineForEachBefore)
{
    Tell({{"/1", "idle", "", "dhcp", "First"},
          {"/2", "ready", "192.0.2.2", "manual", "Second"},
          {"/3", "online", "192.0.2.3", "dhcp", "Third"}});
    EXPECT_THAT(vecCommands, ElementsAre(pStaticCommand));
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(Notification(361, "Updating network state via IPC."),
                            Notification(367, "Skipping network 'First', state = idle"),
                            Notification(
                                386, std::string("Sending IPC message for network 'Second' via '") +
                                         pStaticCommand + "'.")));
}

TEST_F(Notifying, OnlineAndReadyAreEqualInRank)
{
    Tell({{"/1", "online", "", "manual"}, {"/2", "ready", "", "dhcp"}});
    EXPECT_THAT(vecCommands, ElementsAre(pStaticCommand));
    Tell({{"/1", "ready", "", "manual"}, {"/2", "online", "", "dhcp"}});
    EXPECT_THAT(vecCommands, ElementsAre(pStaticCommand));
}

TEST_F(Notifying, SkipsEveryStateThatIsNotExactlyOnlineOrReady)
{
    for (const char* pState : {"idle", "failure", "association", "configuration", "disconnect",
                               "Ready", "ONLINE", "ready ", ""}) {
        Tell({{"/1", pState, "192.0.2.1", "dhcp", "Name"}});
        EXPECT_THAT(vecCommands, IsEmpty()) << pState;
        EXPECT_THAT(HostLog::GetMessages(),
                    ElementsAre(Notification(361, "Updating network state via IPC."),
                                Notification(367, std::string("Skipping network 'Name', state = ") +
                                                      pState),
                                Notification(390, "No network is online or ready.")));
    }
}

TEST_F(Notifying, WithAnEmptyListRunsNothing)
{
    Tell({});
    EXPECT_THAT(vecCommands, IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(Notification(361, "Updating network state via IPC."),
                            Notification(390, "No network is online or ready.")));
}

TEST_F(Notifying, TellsOfAServiceThatHasNoNameNoAddressAndAnotherMethod)
{
    Tell({{"/1", "failure"}, {"/2", "ready", "", "off"}});
    EXPECT_THAT(vecCommands, ElementsAre(pAutoIpCommand));
    EXPECT_THAT(
        HostLog::GetMessages(),
        ElementsAre(Notification(361, "Updating network state via IPC."),
                    Notification(367, "Skipping network '', state = failure"),
                    Notification(386, std::string("Sending IPC message for network '' via '") +
                                          pAutoIpCommand + "'.")));
}

TEST_F(Notifying, DoesNotSuppressRepeats)
{
    Tell({{"/1", "ready", "192.0.2.1", "dhcp"}});
    client.UpdateNetworkStateIpc();
    EXPECT_THAT(vecCommands, ElementsAre(pDhcpCommand, pDhcpCommand));
}

TEST_F(Notifying, RunsTheCommandThoughNothingIsLogged)
{
    SetList({{"/1", "idle"}, {"/2", "ready", "192.0.2.1", "dhcp"}});
    HostLog::SetThreshold(QelLogInfo);
    client.UpdateNetworkStateIpc();
    EXPECT_THAT(vecCommands, ElementsAre(pDhcpCommand));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(Notifying, LogsBeforeItRunsTheCommand)
{
    std::size_t nLogged = 0;
    SetList({{"/1", "ready"}});
    fnRunning = [&] { nLogged = HostLog::GetMessages().size(); };
    client.UpdateNetworkStateIpc();
    EXPECT_EQ(nLogged, 2U);
}

TEST_F(Notifying, LeavesTheListsFreeWhileTheCommandRuns)
{
    SetList({{"/1", "ready"}});
    std::size_t nCopied = 0;
    fnRunning = [&] {
        auto copied = std::async(std::launch::async, [&] { return client.GetNetworks().size(); });
        if (copied.wait_for(TestSupport::deadline) != std::future_status::ready)
            std::abort(); // the other thread waits for ever
        nCopied = copied.get();
    };
    client.UpdateNetworkStateIpc();
    EXPECT_EQ(nCopied, 1U);
}

TEST_F(Notifying, WhatTheCommandThrowsLeavesTheListsAsTheyWere)
{
    SetList({{"/1", "ready"}});
    fnRunning = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(client.UpdateNetworkStateIpc(), std::runtime_error);
    EXPECT_THAT(ListData::Paths(client.GetNetworks()), ElementsAre("/1"));
}

} // namespace Tovra
