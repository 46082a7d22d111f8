#include "tests/connman/PrivateOpt.h"
#include "tests/plugin/Stage.h"

#include <gmock/gmock.h>

/** From a wish of the host's to its effect, end to end. */

namespace Tovra
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using TestSupport::Eventually;

namespace
{

using Service = DeviceConfig::NetworkService;

constexpr const char* pHomeId = "wifi_Home";
constexpr const char* pHome = "/net/connman/service/wifi_Home";
constexpr const char* pHomeKey = "Home52F50EAE";
constexpr const char* pGuest = "/net/connman/service/wifi_Guest";
constexpr const char* pGuestKey = "Guest64184D93";
constexpr const char* pPassphrase = "correct horse battery staple";

constexpr const char* pDhcpEvent = "--ipc-send=netcfg-dhcp-address-acquired";
constexpr const char* pStaticEvent = "--ipc-send=netcfg-static-address-configured";

/** Two networks, as ConnMan lives: it keeps settings, sorts, and connects by itself. */
Simulator::Scenario Neighbourhood()
{
    Simulator::Network home = Scenes::Wifi("Home");
    home.vecSecurity = {"psk", "wps"};
    home.sPassphrase = pPassphrase;
    Simulator::Network guest = Scenes::Wifi("Guest");
    guest.vecSecurity = {"psk"};
    guest.sPassphrase = "for guests only";
    guest.sAddress = "192.168.2.20";

    Simulator::Scenario scenario = Scenes::Quiet({home, guest}, {"ethernet", "wifi"});
    scenario.bSorted = true;
    scenario.bAutoConnects = true;
    scenario.sStorage = PrivateOpt::pStorage;
    return scenario;
}

Simulator::Scenario Connected(Simulator::Scenario scenario)
{
    scenario.vecServices.at(0).sState = "online";
    scenario.vecServices.at(0).bSaved = true;
    return scenario;
}

} // namespace

class Story : public Stage
{
protected:
    template <class Function> void Want(const char* pKey, const Function& fn)
    {
        host.Edit([&](DeviceConfig& config) { fn(config.mapNetworkServices.at(pKey)); });
    }

    void WantWifi(bool bPowered, bool bScan)
    {
        host.Edit([&](DeviceConfig& config) {
            config.mapNetworkTechnologies.at("wifi").bPowered = bPowered;
            config.mapNetworkTechnologies.at("wifi").bScan = bScan;
        });
    }

    bool AwaitState(const char* pPath, const std::string& sState)
    {
        return Eventually([&] { return pConnMan->GetState(pPath) == sState; });
    }

    bool AwaitHostCommands(std::size_t nCount)
    {
        return Eventually([&] { return GetHostCommands().size() >= nCount; });
    }

    Service ReadNetwork(const char* pKey)
    {
        Settle();
        EXPECT_EQ(Read(), 1);
        return host.FindNetwork(pKey).value();
    }

    bool AwaitLine(const std::string& sText) { return TestSupport::HostLog::AwaitText(sText); }

    /** What the agent answers when ConnMan asks for Home's passphrase once more. */
    std::string AskForPassphraseAgain()
    {
        using Simulator::MakeString;
        const Simulator::Value field = Simulator::MakeDictionaryValue(
            {{"Type", MakeString("psk")}, {"Requirement", MakeString("mandatory")}});
        const Simulator::Reply reply =
            AskAgent(pHome, Simulator::MakeDictionary({{"Passphrase", field}}));
        return reply.arguments.values.at(0).at("Passphrase").at(1);
    }
};

TEST_F(Story, OfANetworkThatIsConnectedByItsPassphrase)
{
    PrivateOpt::StoreSettings("wifi_020000000000_6f6c64_managed_psk");
    PrivateOpt::StoreSettings("ethernet_020000000001_cable");
    Start(Neighbourhood());
    EXPECT_FALSE(host.FindNetwork(pHomeKey)->bConnected);
    EXPECT_EQ(host.FindNetwork(pHomeKey)->sSecurity, "psk wps");

    Want(pHomeKey, [](Service& home) {
        home.bConnected = true;
        home.sPassphrase = pPassphrase;
    });
    EXPECT_EQ(Apply(), 1);

    EXPECT_EQ(pConnMan->WaitForCall("Connect", TestSupport::deadline)->sPath, pHome);
    EXPECT_TRUE(AwaitLine(std::string("Asking for Passphrase for ") + pHome));
    EXPECT_TRUE(AwaitLine(std::string("Connecting to ") + pHomeKey + " using passphrase."));
    ASSERT_TRUE(AwaitState(pHome, "online"));
    EXPECT_TRUE(host.AwaitWord(5));
    EXPECT_TRUE(Eventually([&] { return host.CountRefreshes() > 0; }));
    EXPECT_TRUE(AwaitHostCommands(1));
    EXPECT_TRUE(Eventually([] { return PrivateOpt::GetStored().size() == 2; }));
    EXPECT_THAT(PrivateOpt::GetStored(), ElementsAre("ethernet_020000000001_cable", pHomeId));

    const Service home = ReadNetwork(pHomeKey);
    EXPECT_TRUE(home.bConnected);
    EXPECT_FALSE(home.bFailed);
    EXPECT_TRUE(home.bDhcp);
    EXPECT_EQ(home.sIPv4Address, "192.168.1.20");
    EXPECT_EQ(home.sPassphrase, "");
    EXPECT_TRUE(host.FindTechnology("wifi")->bConnected);
    EXPECT_EQ(AskForPassphraseAgain(), "");
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent));
    EXPECT_FALSE(TestSupport::HostLog::Mentions("horse"));
}

TEST_F(Story, OfANetworkThatIsConnectedByWps)
{
    Start(Neighbourhood());
    Want(pHomeKey, [](Service& home) {
        home.bConnected = true;
        home.bUseWps = true;
    });
    EXPECT_EQ(Apply(), 1);

    EXPECT_TRUE(AwaitLine(std::string("Connecting to ") + pHomeKey + " using WPS."));
    ASSERT_TRUE(AwaitState(pHome, "online"));
    EXPECT_TRUE(host.AwaitWord(5));
    EXPECT_FALSE(host.FindNetwork(pHomeKey)->bUseWps);
    EXPECT_EQ(AskForPassphraseAgain(), "");
    EXPECT_TRUE(ReadNetwork(pHomeKey).bConnected);
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent));
}

TEST_F(Story, OfAStaticAddressWithNameServersAndBackToDhcp)
{
    Start(Connected(Neighbourhood()));
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent)) << "for what was there at the start";

    Want(pHomeKey, [](Service& home) {
        home.bDhcp = false;
        home.sIPv4Address = "192.168.1.99";
        home.sIPv4Netmask = "255.255.255.0";
        home.sIPv4Gateway = "192.168.1.254";
        home.vecNameservers = {"9.9.9.9", "192.168.1.254"};
    });
    EXPECT_EQ(Apply(), 1);
    ASSERT_TRUE(AwaitHostCommands(2));
    Service home = ReadNetwork(pHomeKey);
    EXPECT_FALSE(home.bDhcp);
    EXPECT_EQ(home.sIPv4Address, "192.168.1.99");
    EXPECT_EQ(home.sIPv4Netmask, "255.255.255.0");
    EXPECT_EQ(home.sIPv4Gateway, "192.168.1.254");
    EXPECT_THAT(home.vecNameservers, ElementsAre("9.9.9.9", "192.168.1.254"));
    EXPECT_TRUE(home.bConnected);
    EXPECT_EQ(Apply(), 1);
    Settle();
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent, pStaticEvent));

    Want(pHomeKey, [](Service& wanted) { wanted.bDhcp = true; });
    EXPECT_EQ(Apply(), 1);
    ASSERT_TRUE(AwaitHostCommands(3));
    home = ReadNetwork(pHomeKey);
    EXPECT_TRUE(home.bDhcp);
    EXPECT_EQ(home.sIPv4Address, "192.168.1.20");
    EXPECT_THAT(home.vecNameservers, ElementsAre("192.168.1.1"));
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent, pStaticEvent, pDhcpEvent));
}

// The host reads whenever it is told of a change, so it sees the failure, which does not last.
TEST_F(Story, OfAWrongPassphraseAndThenTheRightOne)
{
    Start(Neighbourhood());
    Want(pHomeKey, [](Service& home) {
        home.bConnected = true;
        home.sPassphrase = "wrong horse battery staple";
    });
    host.SetOnChange([this](unsigned) { Read(); });
    EXPECT_EQ(Apply(), 1);
    EXPECT_TRUE(Eventually([&] { return host.FindNetwork(pHomeKey)->bFailed; }));
    ASSERT_TRUE(AwaitState(pHome, "idle"));
    Settle();
    host.SetOnChange(nullptr);
    EXPECT_FALSE(ReadNetwork(pHomeKey).bConnected);
    EXPECT_THAT(GetHostCommands(), IsEmpty());

    Want(pHomeKey, [](Service& home) {
        home.bConnected = true;
        home.bFailed = false;
        home.sPassphrase = pPassphrase;
    });
    EXPECT_EQ(Apply(), 1);
    EXPECT_TRUE(AwaitLine("ConnMan: Retrying AgentRequest after using incorrect WiFi password"));
    ASSERT_TRUE(AwaitState(pHome, "online"));
    EXPECT_TRUE(AwaitHostCommands(1));
    EXPECT_TRUE(ReadNetwork(pHomeKey).bConnected);
    EXPECT_FALSE(ReadNetwork(pHomeKey).bFailed);
    EXPECT_FALSE(TestSupport::HostLog::Mentions("horse"));
}

TEST_F(Story, OfANetworkThatIsForgotten)
{
    PrivateOpt::StoreSettings(pHomeId);
    Start(Connected(Neighbourhood()));
    host.ForgetEvents();
    Want(pHomeKey, [](Service& home) { home.bConnected = false; });
    EXPECT_EQ(Apply(), 1);

    ASSERT_TRUE(AwaitState(pHome, "idle"));
    EXPECT_TRUE(host.AwaitWord(5));
    EXPECT_THAT(TakeCommands(), Contains(std::string(pHome) + " Remove"));
    EXPECT_THAT(PrivateOpt::GetStored(), ElementsAre(pHomeId)) << "as ConnMan keeps it";
    EXPECT_FALSE(ReadNetwork(pHomeKey).bConnected);
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent)) << "only for what was there at first";

    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    EXPECT_EQ(Apply(), 1);
    EXPECT_TRUE(AwaitLine(std::string("Asking for Passphrase for ") + pHome))
        << "ConnMan still knows the passphrase";
}

TEST_F(Story, OfAChangeFromOneNetworkToAnother)
{
    PrivateOpt::StoreSettings(pHomeId);
    Start(Connected(Neighbourhood()));
    Want(pGuestKey, [](Service& guest) {
        guest.bConnected = true;
        guest.sPassphrase = "for guests only";
    });
    EXPECT_EQ(Apply(), 1);

    ASSERT_TRUE(AwaitState(pGuest, "online"));
    ASSERT_TRUE(AwaitHostCommands(2));
    EXPECT_TRUE(Eventually([] { return PrivateOpt::GetStored().count(pHomeId) == 0; }));
    EXPECT_THAT(PrivateOpt::GetStored(), ElementsAre("wifi_Guest"));
    EXPECT_TRUE(ReadNetwork(pGuestKey).bConnected);
    EXPECT_FALSE(ReadNetwork(pHomeKey).bConnected);
    EXPECT_EQ(ReadNetwork(pGuestKey).sIPv4Address, "192.168.2.20");
}

TEST_F(Story, OfWifiThatIsSwitchedOffAndOnAgain)
{
    Start(Connected(Neighbourhood()));
    WantWifi(false, false);
    EXPECT_EQ(Apply(), 1);
    EXPECT_TRUE(host.AwaitWord(2));
    ASSERT_TRUE(ReadUntil([](const DeviceConfig& config) {
        return config.mapNetworkServices.empty() &&
               !config.mapNetworkTechnologies.at("wifi").bPowered;
    }));
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent));

    WantWifi(true, false);
    EXPECT_EQ(Apply(), 1);
    ASSERT_TRUE(AwaitHostCommands(2)) << "ConnMan connects to the network that it knows";
    ASSERT_TRUE(ReadUntil([](const DeviceConfig& config) {
        const auto home = config.mapNetworkServices.find(pHomeKey);
        return home != config.mapNetworkServices.end() && home->second.bConnected;
    }));
    EXPECT_TRUE(host.FindTechnology("wifi")->bPowered);
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent, pDhcpEvent));
}

TEST_F(Story, OfAScanThatFindsANetwork)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices.at(1).appearance = Simulator::Appearance::AfterScan;
    Start(scenario);
    EXPECT_FALSE(host.FindNetwork(pGuestKey));

    WantWifi(true, true);
    EXPECT_EQ(Apply(), 1);
    EXPECT_TRUE(AwaitLine("Starting scan for technology WiFi"));
    EXPECT_FALSE(host.FindTechnology("wifi")->bScan);
    EXPECT_TRUE(host.AwaitWord(5));
    ASSERT_TRUE(ReadUntil([](const DeviceConfig& config) {
        return config.mapNetworkServices.count(pGuestKey) == 1;
    }));
    EXPECT_EQ(host.FindNetwork(pGuestKey)->sName, "Guest");
    EXPECT_THAT(TakeCommands(), ElementsAre("/net/connman/technology/wifi Scan"));
}

// ConnMan starts anew and knows no agent: only what the plug-in hears of by signals reaches it.
TEST_F(Story, OfConnManThatStartsAnew)
{
    Start(Neighbourhood());
    pConnMan->Restart();
    pConnMan->SetState(pHome, "ready");
    EXPECT_TRUE(host.AwaitWord(5));
    EXPECT_TRUE(ReadNetwork(pHomeKey).bConnected);
    EXPECT_THAT(GetHostCommands(), ElementsAre(pDhcpEvent));
    EXPECT_EQ(pConnMan->GetAgentCount(), 0U);
}

} // namespace Tovra
