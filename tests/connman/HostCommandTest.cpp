#include "Common/ConnManImpl.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/ListData.h"
#include "tests/connman/PrivateOpt.h"

#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace Tovra
{

using testing::ElementsAre;
namespace HostLog = TestSupport::HostLog;

/** The client as it is, without a bus: it runs the command that is in the private /opt. */
class HostCommandRun : public testing::Test
{
protected:
    void SetUp() override
    {
        PrivateOpt::Clear();
        HostLog::Reset();
    }

    void Update(const std::vector<ListData::Service>& vecServices)
    {
        client.UpdateNetworks(ListData::Services(vecServices), 0);
    }

    DBus::Connection connection;
    ConnMan::Impl client{connection};
};

constexpr const char* pRecord = R"(printf '%s arguments:' $# >>/opt/record
printf ' "%s"' "$@" >>/opt/record
echo >>/opt/record
)";

TEST_F(HostCommandRun, HasTheEventAsItsOnlyArgument)
{
    PrivateOpt::InstallHostCommand(pRecord);
    Update({{"/1", "ready", "192.0.2.1", "dhcp"}});
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"),
              "1 arguments: \"--ipc-send=netcfg-dhcp-address-acquired\"\n");
}

TEST_F(HostCommandRun, IsMadeForEachChange)
{
    PrivateOpt::InstallHostCommand(pRecord);
    Update({{"/1", "ready", "192.0.2.1", "dhcp"}});
    Update({{"/1", "online", "192.0.2.1", "dhcp"}}); // no change
    Update({{"/1", "online", "192.0.2.1", "manual"}});
    Update({{"/1", "online", "169.254.0.1", "auto"}});
    Update({{"/1", "idle"}}); // nothing to tell
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"),
              "1 arguments: \"--ipc-send=netcfg-dhcp-address-acquired\"\n"
              "1 arguments: \"--ipc-send=netcfg-static-address-configured\"\n"
              "1 arguments: \"--ipc-send=netcfg-autoip-address-acquired\"\n");
}

TEST_F(HostCommandRun, IsWaitedFor)
{
    PrivateOpt::InstallHostCommand("echo begun >/opt/record\n"
                                   "read line </opt/fifo\n"
                                   "echo over >/opt/record\n");
    ASSERT_EQ(mkfifo("/opt/fifo", 0600), 0);
    auto update = std::async(std::launch::async, [&] {
        Update({{"/1", "ready"}});
        return PrivateOpt::ReadFile("/opt/record");
    });
    EXPECT_TRUE(
        TestSupport::Eventually([] { return PrivateOpt::ReadFile("/opt/record") == "begun\n"; }));
    EXPECT_EQ(update.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    std::fstream("/opt/fifo") << "go on" << std::endl; // for both, so as not to wait for the reader
    EXPECT_EQ(update.get(), "over\n");
}

TEST_F(HostCommandRun, FailsWithoutAWordWhenThereIsNoCommand)
{
    testing::internal::CaptureStderr(); // the shell complains
    Update({{"/1", "ready", "192.0.2.1", "dhcp", "Name"}});
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(
        HostLog::GetMessagesOfFunction("UpdateNetworkStateIpc"),
        ElementsAre(ClientLog::Notification(361, "Updating network state via IPC."),
                    ClientLog::Notification(386, "Sending IPC message for network 'Name' via "
                                                 "'/opt/tovra/bin/corvane "
                                                 "--ipc-send=netcfg-dhcp-address-acquired'.")));
    EXPECT_EQ(client.GetNetworks().size(), 1U);
}

TEST_F(HostCommandRun, MayFailOrDieWithoutAWord)
{
    for (const char* pScript : {"exit 1\n", "exit 127\n", "kill -9 $$\n"}) {
        PrivateOpt::InstallHostCommand(pScript);
        Update({});
        HostLog::Reset();
        Update({{"/1", "ready"}});
        EXPECT_EQ(HostLog::GetMessagesOfFunction("UpdateNetworkStateIpc").size(), 2U) << pScript;
    }
}

TEST_F(HostCommandRun, ComesAfterTheListIsInPlaceAndBeforeSettingsAreRemoved)
{
    PrivateOpt::StoreSettings("wifi_old");
    PrivateOpt::InstallHostCommand("ls /opt/userdata/connman >/opt/record\n");
    bool bCalled = false;
    client.SetOnNetworksChanged(
        [&](unsigned int) {
            bCalled = true;
            EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"), "");
            EXPECT_EQ(client.GetNetworks().size(), 1U);
        },
        ConnMan::ServicesUpdated);
    Update({{"/s/wifi_new", "ready"}});
    EXPECT_TRUE(bCalled);
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"), "wifi_old\n");
    EXPECT_TRUE(PrivateOpt::GetStored().empty());
}

} // namespace Tovra
