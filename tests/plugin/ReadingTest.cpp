#include "tests/plugin/Stage.h"

#include <gmock/gmock.h>

namespace Tovra
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace
{

constexpr const char* pHomeKey = "Home52F50EAE";

using Service = DeviceConfig::NetworkService;

TestSupport::LogMessage HiddenMessage(const std::string& sPath)
{
    return PlugInMessage("TargetSpecificGetNetworkConfiguration", 112,
                         "I don't know how to deal with hidden network " + sPath);
}

Simulator::Network Hidden()
{
    Simulator::Network network = Scenes::Wifi("hidden");
    network.sName.reset();
    return network;
}

} // namespace

class Reading : public Stage
{
protected:
    std::size_t CountNetworks()
    {
        return host.Look([](const DeviceConfig& c) { return c.mapNetworkServices.size(); });
    }

    std::size_t CountTechnologies()
    {
        return host.Look([](const DeviceConfig& c) { return c.mapNetworkTechnologies.size(); });
    }

    Service GetHome() { return host.FindNetwork(pHomeKey).value(); }

    Service ReadHome()
    {
        Settle();
        EXPECT_EQ(Read(), 1);
        return GetHome();
    }

    void Force(const std::string& sState)
    {
        pConnMan->SetState("/net/connman/service/wifi_Home", sState);
    }
};

TEST_F(Reading, EmptiesBothMapsWhenConnManHasNothing)
{
    Start(Scenes::Quiet({}, {}));
    host.Edit([](DeviceConfig& config) {
        config.mapNetworkServices["OldAAAAAAAA"].sName = "Old";
        config.mapNetworkTechnologies["wifi"].sName = "Old";
    });
    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(CountNetworks(), 0U);
    EXPECT_EQ(CountTechnologies(), 0U);
}

TEST_F(Reading, ShowsATechnology)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home", "ready")}, {"wifi", "ethernet"}));
    ASSERT_EQ(CountTechnologies(), 2U);
    const auto wifi = host.FindTechnology("wifi").value();
    EXPECT_EQ(wifi.sName, "WiFi");
    EXPECT_TRUE(wifi.bPowered);
    EXPECT_TRUE(wifi.bConnected);
    EXPECT_FALSE(wifi.bScan);
    const auto ethernet = host.FindTechnology("ethernet").value();
    EXPECT_EQ(ethernet.sName, "Wired");
    EXPECT_FALSE(ethernet.bConnected);
}

TEST_F(Reading, ShowsAllThatConnManTellsOfANetwork)
{
    Simulator::Network home =
        Scenes::WithNameservers(Scenes::WithIPv4(Scenes::Wifi("Home", "ready"), "manual",
                                                 "10.0.0.2", "255.0.0.0", "10.0.0.1"),
                                {"10.0.0.3", "10.0.0.4"});
    home.vecSecurity = {"psk", "wps"};
    home.nStrength = 73;
    Start(Scenes::Quiet({home}));

    const Service service = GetHome();
    EXPECT_EQ(service.sType, "wifi");
    EXPECT_EQ(service.sName, "Home");
    EXPECT_EQ(service.sInterface, "wlan0");
    EXPECT_EQ(service.sMacAddress, "02:00:00:00:00:00");
    EXPECT_TRUE(service.bConnected);
    EXPECT_FALSE(service.bFailed);
    EXPECT_EQ(service.sSecurity, "psk wps");
    EXPECT_EQ(service.nStrength, 73);
    EXPECT_FALSE(service.bDhcp);
    EXPECT_EQ(service.sIPv4Address, "10.0.0.2");
    EXPECT_EQ(service.sIPv4Netmask, "255.0.0.0");
    EXPECT_EQ(service.sIPv4Gateway, "10.0.0.1");
    EXPECT_THAT(service.vecNameservers, ElementsAre("10.0.0.3", "10.0.0.4"));
    EXPECT_FALSE(service.bUseWps);
    EXPECT_EQ(service.sPassphrase, "");
}

TEST_F(Reading, JoinsTheSecurityMethodsInConnMansOrder)
{
    Simulator::Network home = Scenes::Wifi("Home");
    home.vecSecurity = {"wps", "psk"};
    Start(Scenes::Quiet({home}));
    EXPECT_EQ(GetHome().sSecurity, "wps psk");
}

TEST_F(Reading, LeavesAHiddenNetworkOutAndLogsItOnceEachTime)
{
    Start(Scenes::Quiet({Hidden(), Scenes::Wifi("Home")}));
    EXPECT_EQ(Read(), 1);
    EXPECT_THAT(TestSupport::HostLog::GetMessages(),
                ElementsAre(HiddenMessage("/net/connman/service/wifi_hidden")));
    EXPECT_EQ(CountNetworks(), 1U);
    EXPECT_EQ(GetHome().sName, "Home");

    EXPECT_EQ(Read(), 1);
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), SizeIs(2));
}

TEST_F(Reading, LeavesANetworkOutWhoseNameIsTheEmptyOne)
{
    Start(Scenes::Quiet({Scenes::Wifi("")}));
    EXPECT_EQ(Read(), 1);
    EXPECT_THAT(TestSupport::HostLog::GetMessages(),
                ElementsAre(HiddenMessage("/net/connman/service/wifi_")));
    EXPECT_EQ(CountNetworks(), 0U);
}

TEST_F(Reading, AsksWhetherTheLevelIsLoggedAtAll)
{
    Start(Scenes::Quiet({Hidden()}));
    TestSupport::HostLog::SetActive(QelLogInfo, false);
    Read();
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
}

TEST_F(Reading, LogsAndSendsNothingElse)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home", "failure"), Scenes::Cable("online")}));
    Read();
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
    EXPECT_THAT(TakeCommands(), IsEmpty());
}

TEST_F(Reading, ShowsReadyAndOnlineAsConnectedAndNothingElse)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    for (const char* pState :
         {"association", "configuration", "ready", "online", "disconnect", "idle", "failure"}) {
        Force(pState);
        const bool bExpected = std::string(pState) == "ready" || std::string(pState) == "online";
        EXPECT_EQ(ReadHome().bConnected, bExpected) << pState;
    }
}

TEST_F(Reading, KeepsAFailureWhileTheNetworkIsThere)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    EXPECT_FALSE(ReadHome().bFailed);
    Force("failure");
    EXPECT_TRUE(ReadHome().bFailed);
    Force("idle");
    EXPECT_TRUE(ReadHome().bFailed);
    Force("ready");
    EXPECT_TRUE(ReadHome().bFailed);
}

TEST_F(Reading, ForgetsAFailureThatNoReadingSaw)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    Force("failure");
    Settle();
    Force("idle");
    EXPECT_FALSE(ReadHome().bFailed);
}

TEST_F(Reading, ForgetsAFailureOfANetworkThatWasAwayForOneReading)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home", "failure")}));
    EXPECT_TRUE(GetHome().bFailed);
    pConnMan->RemoveService("/net/connman/service/wifi_Home");
    ASSERT_TRUE(ReadUntil([](const DeviceConfig& c) { return c.mapNetworkServices.empty(); }));
    pConnMan->AddService(Scenes::Wifi("Home"));
    ASSERT_TRUE(ReadUntil([](const DeviceConfig& c) { return !c.mapNetworkServices.empty(); }));
    EXPECT_FALSE(GetHome().bFailed);
}

TEST_F(Reading, KeepsAFailureThatTheHostClearedClearedUntilTheNextOne)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home", "failure")}));
    Force("idle");
    EXPECT_TRUE(ReadHome().bFailed);
    host.Edit([](DeviceConfig& c) { c.mapNetworkServices.at(pHomeKey).bFailed = false; });
    EXPECT_FALSE(ReadHome().bFailed);
    Force("failure");
    EXPECT_TRUE(ReadHome().bFailed);
}

TEST_F(Reading, ShowsANetworkWithoutAnAddressMethodAsOneByDhcp)
{
    Simulator::Network none = Scenes::Wifi("Home");
    none.overrides["IPv4"] = Simulator::MakeDictionaryValue({});
    Simulator::Network absent = Scenes::Wifi("Other");
    absent.overrides["IPv4"] = std::nullopt;
    Start(Scenes::Quiet({none, absent}));
    ASSERT_EQ(CountNetworks(), 2U);
    host.Look([](const DeviceConfig& config) {
        for (const auto& [sKey, service] : config.mapNetworkServices)
            EXPECT_TRUE(service.bDhcp) << sKey;
    });
}

TEST_F(Reading, ShowsTheLaterOfTwoNetworksOfOneName)
{
    Simulator::Network first = Scenes::Wifi("Home", "ready");
    first.nStrength = 80;
    Simulator::Network second = Scenes::Wifi("Home");
    second.sPath += "_5GHz";
    second.nStrength = 40;
    Start(Scenes::Quiet({first, second}));
    EXPECT_EQ(CountNetworks(), 1U);
    EXPECT_EQ(GetHome().nStrength, 40);
    EXPECT_FALSE(GetHome().bConnected);
}

TEST_F(Reading, DropsWhatTheHostWantedAndDidNotApply)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    host.Edit([](DeviceConfig& config) {
        DeviceConfig::NetworkTechnology& wifi = config.mapNetworkTechnologies.at("wifi");
        wifi.bPowered = false;
        wifi.bScan = true;
        Service& home = config.mapNetworkServices.at(pHomeKey);
        home.bConnected = true;
        home.bDhcp = false;
        home.sIPv4Address = "10.0.0.2";
        home.vecNameservers = {"10.0.0.3"};
        home.bUseWps = true;
        home.sPassphrase = "correct horse";
    });
    EXPECT_EQ(Read(), 1);
    EXPECT_TRUE(host.FindTechnology("wifi")->bPowered);
    EXPECT_FALSE(host.FindTechnology("wifi")->bScan);
    EXPECT_FALSE(GetHome().bConnected);
    EXPECT_TRUE(GetHome().bDhcp);
    EXPECT_EQ(GetHome().sIPv4Address, "");
    EXPECT_THAT(GetHome().vecNameservers, IsEmpty());
    EXPECT_FALSE(GetHome().bUseWps);
    EXPECT_EQ(GetHome().sPassphrase, "");
}

TEST_F(Reading, ShowsANewStrengthWithoutAWordToTheHost)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    pConnMan->ChangeNetwork("/net/connman/service/wifi_Home",
                            [](Simulator::Network& network) { network.nStrength = 99; });
    EXPECT_EQ(ReadHome().nStrength, 99);
    EXPECT_THAT(host.GetEvents(), IsEmpty());
}

// The log is the host's, so it is where a failure can come from in the middle of a reading.
TEST_F(Reading, ThatFailsLeavesTheHostsMapsAsTheyWereAndTheLockFree)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home"), Hidden()}));
    host.Edit([](DeviceConfig& config) {
        config.mapNetworkServices.at(pHomeKey).sPassphrase = "correct horse";
        config.mapNetworkTechnologies.at("wifi").bScan = true;
    });
    TestSupport::HostLog::SetOnMessage([](const auto&) { throw std::runtime_error("log full"); });
    EXPECT_THROW(Read(), std::runtime_error);
    EXPECT_EQ(GetHome().sPassphrase, "correct horse");
    EXPECT_TRUE(host.FindTechnology("wifi")->bScan);

    TestSupport::HostLog::SetOnMessage(nullptr);
    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(GetHome().sPassphrase, "");
}

} // namespace Tovra
