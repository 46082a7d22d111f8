#include "Common/WifiSettings.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/OfflineClient.h"

#include <gmock/gmock.h>

namespace Tovra
{

using ClientLog::Removal;
using testing::ElementsAre;
using testing::IsEmpty;
namespace HostLog = TestSupport::HostLog;

namespace
{

std::vector<ConnMan::NetworkService> Records(const std::vector<ListData::Service>& vecServices)
{
    std::vector<ConnMan::NetworkService> vecRecords;
    for (const ListData::Service& service : vecServices) {
        auto properties = ListData::ServiceProperties(service);
        vecRecords.emplace_back(service.sPath, properties);
    }
    return vecRecords;
}

std::optional<std::string> Identifier(const std::vector<ListData::Service>& vecServices)
{
    return WifiSettings::FindConnectedIdentifier(Records(vecServices));
}

} // namespace

// --- Whose settings stay -----------------------------------------------------------------------

TEST(ConnectedIdentifier, IsTheLastElementOfTheFirstConnectedServicesPath)
{
    EXPECT_EQ(Identifier({{"/net/connman/service/wifi_a", "idle"},
                          {"/net/connman/service/wifi_b", "ready"},
                          {"/net/connman/service/wifi_c", "online"}}),
              "wifi_b");
    EXPECT_EQ(Identifier({{"/only", "online"}}), "only");
}

TEST(ConnectedIdentifier, IsNoneWhileNothingIsConnected)
{
    EXPECT_EQ(Identifier({}), std::nullopt);
    EXPECT_EQ(Identifier({{"/a/b", "idle"}, {"/a/c", "Ready"}, {"/a/d", "configuration"}}),
              std::nullopt);
}

TEST(ConnectedIdentifier, IsEmptyForAPathThatEndsInASlash)
{
    EXPECT_EQ(Identifier({{"/a/", "ready"}, {"/a/b", "ready"}}), "");
    EXPECT_EQ(Identifier({{"/", "ready"}}), "");
}

TEST(ConnectedIdentifier, IsTakenFromTheNextConnectedServiceWhereAPathHasNoSlash)
{
    EXPECT_EQ(Identifier({{"none", "ready"}, {"/a/b", "idle"}, {"/a/c", "online"}}), "c");
    EXPECT_EQ(Identifier({{"none", "ready"}, {"", "online"}}), std::nullopt);
}

// --- Which names are old -----------------------------------------------------------------------

TEST(OldSettings, BeginWithWifiAndAreNotTheConnectedOnes)
{
    for (const char* pName : {"wifi", "wifi_a_b_managed_psk2", "wifi_a_b_managed_ps", "wifixyz",
                              "wifi_A_b_managed_psk"})
        EXPECT_TRUE(WifiSettings::IsOld(pName, "wifi_a_b_managed_psk")) << pName;
    for (const char* pName : {"wifi_a_b_managed_psk", "wif", "Wifi_x", "WIFI_x", " wifi_x",
                              "ethernet_e_cable", "xwifi", "w", ""})
        EXPECT_FALSE(WifiSettings::IsOld(pName, "wifi_a_b_managed_psk")) << pName;
}

TEST(OldSettings, AreAllOfWiFiWhileEthernetIsConnected)
{
    EXPECT_TRUE(WifiSettings::IsOld("wifi_a", "ethernet_e_cable"));
    EXPECT_FALSE(WifiSettings::IsOld("ethernet_e_cable", "ethernet_e_cable"));
    EXPECT_FALSE(WifiSettings::IsOld("ethernet_f_cable", "ethernet_e_cable"));
}

// --- What the client asks for and says ---------------------------------------------------------

/** The client without a bus; what it wants removed is only written down. */
class RemovingSettings : public OfflineClient
{
protected:
    void Remove(const std::vector<ListData::Service>& vecServices)
    {
        UpdateNetworks(vecServices);
        vecDone.clear();
        HostLog::Reset();
        client.DeleteOldWifiSettings();
    }
};

TEST_F(RemovingSettings, KeepsThoseOfTheConnectedService)
{
    Remove({{"/s/wifi_a", "idle"}, {"/s/wifi_b", "online"}});
    EXPECT_THAT(vecDone, ElementsAre("remove wifi_b"));
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(Removal(QelLogDebug, 395, "Deleting old wifi settings directories."),
                            Removal(QelLogInfo, 407,
                                    "Connected service to not delete settings of: wifi_b")));
}

TEST_F(RemovingSettings, DoesNothingWhileNothingIsConnected)
{
    for (const auto& vecServices : {std::vector<ListData::Service>{}, {{"/s/wifi_a", "idle"}}}) {
        Remove(vecServices);
        EXPECT_THAT(vecDone, IsEmpty());
        EXPECT_THAT(
            HostLog::GetMessages(),
            ElementsAre(Removal(QelLogDebug, 395, "Deleting old wifi settings directories."),
                        Removal(QelLogDebug, 416,
                                "Currently not connected, not deleting any wifi settings "
                                "directories.")));
    }
}

TEST_F(RemovingSettings, DoesNothingForAnEmptyIdentifier)
{
    Remove({{"/s/", "ready"}});
    EXPECT_THAT(vecDone, IsEmpty());
    EXPECT_THAT(
        HostLog::GetMessages(),
        ElementsAre(Removal(QelLogDebug, 395, "Deleting old wifi settings directories."),
                    Removal(QelLogInfo, 407, "Connected service to not delete settings of: "),
                    Removal(QelLogDebug, 416,
                            "Currently not connected, not deleting any wifi settings "
                            "directories.")));
}

TEST_F(RemovingSettings, DoesNothingForAPathWithoutASlash)
{
    Remove({{"none", "ready"}});
    EXPECT_THAT(vecDone, IsEmpty());
    EXPECT_EQ(HostLog::GetMessages().size(), 2U);
}

TEST_F(RemovingSettings, RemovesThoughNothingIsLogged)
{
    UpdateNetworks({{"/s/wifi_a", "ready"}});
    vecDone.clear();
    HostLog::Reset();
    HostLog::SetThreshold(QelLogWarning);
    client.DeleteOldWifiSettings();
    EXPECT_THAT(vecDone, ElementsAre("remove wifi_a"));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

} // namespace Tovra
