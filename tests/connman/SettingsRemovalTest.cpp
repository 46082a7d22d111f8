#include "Common/ConnManImpl.h"
#include "Common/WifiSettings.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/ListData.h"
#include "tests/connman/PrivateOpt.h"

#include <boost/filesystem.hpp>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Tovra
{

using boost::filesystem::filesystem_error;
using ClientLog::Removal;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
namespace fs = std::filesystem;
namespace HostLog = TestSupport::HostLog;

namespace
{

const std::string sStorage = PrivateOpt::pStorage;
constexpr const char* pConnected = "wifi_a_b_managed_psk";

/** What is logged up to the directory, and then for each settings directory. */
std::vector<TestSupport::LogMessage> Log(const std::vector<std::string>& vecDeleted,
                                         const std::string& sConnected = pConnected)
{
    std::vector<TestSupport::LogMessage> vecMessages = {
        Removal(QelLogDebug, 395, "Deleting old wifi settings directories."),
        Removal(QelLogInfo, 407, "Connected service to not delete settings of: " + sConnected)};
    for (const std::string& sName : vecDeleted)
        vecMessages.push_back(Removal(QelLogInfo, 435, "Deleting settings directory " + sName));
    return vecMessages;
}

} // namespace

/** The client without a bus, which really removes, but runs no command. */
class SettingsRemoval : public testing::Test
{
protected:
    void SetUp() override
    {
        PrivateOpt::Clear();
        Connect(pConnected);
    }

    /** While there is no storage directory. */
    void Connect(const std::string& sIdentifier)
    {
        client.UpdateNetworks(
            ListData::Services({{"/net/connman/service/wifi_idle"},
                                {"/net/connman/service/" + sIdentifier, "ready"}}),
            0);
        HostLog::Reset();
    }

    static void Store(const std::vector<std::string>& vecNames)
    {
        for (const std::string& sName : vecNames)
            PrivateOpt::StoreSettings(sName);
    }

    DBus::Connection connection;
    ConnMan::Impl client{
        connection,
        {[](const std::string&) {}, ConnMan::Impl::GetSystemActions().fnRemoveOldSettings}};
};

// --- What is removed ---------------------------------------------------------------------------

TEST_F(SettingsRemoval, RemovesEveryWifiDirectoryButTheConnectedOne)
{
    Store({pConnected, "wifi_c_d_managed_psk", "ethernet_e_cable"});
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre(pConnected, "ethernet_e_cable"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAreArray(Log({"wifi_c_d_managed_psk"})));
}

TEST_F(SettingsRemoval, LeavesTheConnectedDirectoryWhole)
{
    Store({pConnected, "wifi_old"});
    const std::string sSettings = PrivateOpt::ReadFile(sStorage + "/" + pConnected + "/settings");
    client.DeleteOldWifiSettings();
    EXPECT_EQ(PrivateOpt::ReadFile(sStorage + "/" + pConnected + "/settings"), sSettings);
    EXPECT_TRUE(fs::exists(sStorage + "/" + pConnected + "/deeper/and/deeper/file"));
}

TEST_F(SettingsRemoval, RemovesThemAllWhileEthernetIsConnected)
{
    Connect("ethernet_e_cable");
    Store({pConnected, "wifi_x", "ethernet_e_cable", "ethernet_other_cable"});
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(),
                UnorderedElementsAre("ethernet_e_cable", "ethernet_other_cable"));
    EXPECT_THAT(HostLog::GetMessages(),
                UnorderedElementsAreArray(Log({pConnected, "wifi_x"}, "ethernet_e_cable")));
}

TEST_F(SettingsRemoval, RemovesNothingWhileNothingIsConnected)
{
    client.UpdateNetworks(ListData::Services({{"/net/connman/service/wifi_idle"}}), 0);
    HostLog::Reset();
    Store({"wifi_x", "wifi_idle"});
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre("wifi_x", "wifi_idle"));
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(Removal(QelLogDebug, 395, "Deleting old wifi settings directories."),
                            Removal(QelLogDebug, 416,
                                    "Currently not connected, not deleting any wifi settings "
                                    "directories.")));
}

TEST_F(SettingsRemoval, ComparesNamesExactly)
{
    Store({"wif", "Wifi_x", "WIFI", " wifi_x", "w", "wired_wifi_x"});
    const auto setKept = PrivateOpt::GetStored();
    Store({"wifi", "wifi_a_b_managed_ps", "wifi_a_b_managed_psk2", "wifi_A_b_managed_psk"});
    client.DeleteOldWifiSettings();
    EXPECT_EQ(PrivateOpt::GetStored(), setKept);
    EXPECT_THAT(HostLog::GetMessages(),
                UnorderedElementsAreArray(Log({"wifi", "wifi_a_b_managed_ps",
                                               "wifi_a_b_managed_psk2", "wifi_A_b_managed_psk"})));
}

TEST_F(SettingsRemoval, TakesAnyBytesInAName)
{
    const std::vector<std::string> vecNames = {"wifi \n;rm", "wifi_\xFF\xFE", "wifi_$(id)"};
    Store(vecNames);
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), UnorderedElementsAreArray(Log(vecNames)));
}

TEST_F(SettingsRemoval, LeavesFilesAlone)
{
    PrivateOpt::WriteFile(sStorage + "/wifi_x", "");
    PrivateOpt::WriteFile(sStorage + "/settings", "");
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre("wifi_x", "settings"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAreArray(Log({})));
}

TEST_F(SettingsRemoval, LooksOnlyAtDirectEntries)
{
    Store({"ethernet_e_cable/wifi_x"});
    client.DeleteOldWifiSettings();
    EXPECT_TRUE(fs::exists(sStorage + "/ethernet_e_cable/wifi_x/settings"));
}

TEST_F(SettingsRemoval, RemovesAnEmptyDirectory)
{
    fs::create_directories(sStorage + "/wifi_empty");
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), IsEmpty());
}

TEST_F(SettingsRemoval, LooksAtTheDirectoryAfreshEachTime)
{
    Store({"wifi_x"});
    client.DeleteOldWifiSettings();
    Store({"wifi_x", "wifi_y"});
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), IsEmpty());
}

TEST_F(SettingsRemoval, RemovesThoughNothingIsLogged)
{
    HostLog::SetThreshold(QelLogWarning);
    Store({"wifi_x"});
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SettingsRemoval, WithoutAStorageDirectorySaysNoMoreThanWhoIsConnected)
{
    client.DeleteOldWifiSettings();
    EXPECT_THAT(HostLog::GetMessages(), ElementsAreArray(Log({})));
    PrivateOpt::WriteFile("/opt/userdata", "no directory on the way either");
    client.DeleteOldWifiSettings();
    EXPECT_EQ(HostLog::GetMessages().size(), 4U);
}

// --- Links -------------------------------------------------------------------------------------

TEST_F(SettingsRemoval, RemovesALinkToADirectoryAndNotWhatItLeadsTo)
{
    PrivateOpt::WriteFile("/opt/elsewhere/file", "kept");
    Store({"ethernet_e_cable"});
    fs::create_symlink("/opt/elsewhere", sStorage + "/wifi_link");
    fs::create_symlink("ethernet_e_cable", sStorage + "/wifi_relative");
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre("ethernet_e_cable"));
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/elsewhere/file"), "kept");
    EXPECT_TRUE(fs::exists(sStorage + "/ethernet_e_cable/settings"));
    EXPECT_THAT(HostLog::GetMessages(),
                UnorderedElementsAreArray(Log({"wifi_link", "wifi_relative"})));
}

TEST_F(SettingsRemoval, DoesNotFollowALinkInsideADirectoryThatGoes)
{
    PrivateOpt::WriteFile("/opt/elsewhere/file", "kept");
    Store({"wifi_x"});
    fs::create_symlink("/opt/elsewhere", sStorage + "/wifi_x/link");
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), IsEmpty());
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/elsewhere/file"), "kept");
}

TEST_F(SettingsRemoval, LeavesALinkToAFileOrToNothing)
{
    PrivateOpt::WriteFile(sStorage + "/file", "");
    fs::create_symlink("file", sStorage + "/wifi_file");
    fs::create_symlink("nothing", sStorage + "/wifi_nothing");
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre("file", "wifi_file", "wifi_nothing"));
}

TEST_F(SettingsRemoval, LeavesALinkThatBearsTheConnectedName)
{
    fs::create_directories("/opt/elsewhere");
    fs::create_directories(sStorage);
    fs::create_symlink("/opt/elsewhere", sStorage + "/" + pConnected);
    client.DeleteOldWifiSettings();
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre(pConnected));
}

TEST_F(SettingsRemoval, FollowsALinkToTheStorageDirectory)
{
    PrivateOpt::WriteFile("/opt/elsewhere/wifi_x/settings", "");
    fs::create_directories("/opt/userdata");
    fs::create_symlink("/opt/elsewhere", sStorage);
    client.DeleteOldWifiSettings();
    EXPECT_FALSE(fs::exists("/opt/elsewhere/wifi_x"));
    EXPECT_TRUE(fs::is_symlink(sStorage));
}

// --- Failures ----------------------------------------------------------------------------------

TEST_F(SettingsRemoval, ThrowsWithoutAWordWhenTheStorageIsNoDirectory)
{
    PrivateOpt::WriteFile(sStorage, "");
    EXPECT_THROW(client.DeleteOldWifiSettings(), filesystem_error);
    EXPECT_THAT(HostLog::GetMessages(), ElementsAreArray(Log({})));
}

TEST_F(SettingsRemoval, ThrowsWhenTheStatusOfTheStorageCannotBeRead)
{
    fs::create_directories("/opt/userdata");
    fs::create_symlink("connman", sStorage); // leads to itself
    EXPECT_THROW(client.DeleteOldWifiSettings(), filesystem_error);
}

TEST_F(SettingsRemoval, ThrowsWhenTheStatusOfAnEntryCannotBeRead)
{
    fs::create_directories(sStorage);
    fs::create_symlink("other", sStorage + "/other"); // not even a name of ours
    EXPECT_THROW(client.DeleteOldWifiSettings(), filesystem_error);
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre("other"));
}

TEST_F(SettingsRemoval, ThrowsOnAReadOnlyFileSystemAndLeavesEverything)
{
    fs::create_directories(sStorage);
    const PrivateOpt::Mounted mounted(sStorage);
    Store({pConnected, "wifi_x"});
    mounted.MakeReadOnly();
    EXPECT_THROW(client.DeleteOldWifiSettings(), filesystem_error);
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre(pConnected, "wifi_x"));
    EXPECT_TRUE(fs::exists(sStorage + "/wifi_x/settings"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAreArray(Log({"wifi_x"})));
}

TEST_F(SettingsRemoval, StopsAtTheFirstFailureAndWhatIsRemovedStaysRemoved)
{
    std::set<std::string> setNames;
    for (int nDirectory = 10; nDirectory < 40; ++nDirectory)
        setNames.insert("wifi_" + std::to_string(nDirectory));
    Store({setNames.begin(), setNames.end()});
    fs::create_directories(sStorage + "/wifi_25/held");
    const PrivateOpt::Mounted mounted(sStorage + "/wifi_25/held");
    EXPECT_THROW(client.DeleteOldWifiSettings(), filesystem_error);

    // In whichever order the directory lists them: what was spoken of is gone, but for the last.
    std::vector<TestSupport::LogMessage> vecMessages = HostLog::GetMessages();
    ASSERT_GT(vecMessages.size(), 2U);
    EXPECT_EQ(vecMessages.back(), Log({"wifi_25"}).back());
    for (std::size_t nMessage = 2; nMessage + 1 < vecMessages.size(); ++nMessage) {
        const std::string& sText = vecMessages[nMessage].sText;
        EXPECT_EQ(setNames.erase(sText.substr(sText.rfind(' ') + 1)), 1U) << sText;
    }
    EXPECT_EQ(PrivateOpt::GetStored(), setNames);
}

TEST_F(SettingsRemoval, BearsThatADirectoryGoesWhileItLooks)
{
    Store({"wifi_1", "wifi_2", "wifi_3"});
    unsigned nCalls = 0;
    WifiSettings::RemoveOld(sStorage, pConnected, [&](const std::string&) {
        ++nCalls;
        fs::remove_all(sStorage + "/wifi_1");
        fs::remove_all(sStorage + "/wifi_2");
        fs::remove_all(sStorage + "/wifi_3");
    });
    EXPECT_EQ(nCalls, 1U);
    EXPECT_THAT(PrivateOpt::GetStored(), IsEmpty());
}

TEST_F(SettingsRemoval, RemovesNothingThatCouldNotBeSpokenOf)
{
    Store({"wifi_x"});
    HostLog::SetOnMessage([](const TestSupport::LogMessage& message) {
        if (message.nLine == 435)
            throw std::runtime_error("the log is full");
    });
    EXPECT_THROW(client.DeleteOldWifiSettings(), std::runtime_error);
    HostLog::Reset();
    EXPECT_TRUE(fs::exists(sStorage + "/wifi_x/settings"));
}

} // namespace Tovra
