#include "tests/plugin/Stage.h"

#include <gmock/gmock.h>

namespace Tovra
{

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using Service = DeviceConfig::NetworkService;
using Texts = std::vector<std::string>;

constexpr const char* pHome = "/net/connman/service/wifi_Home";
constexpr const char* pHomeKey = "Home52F50EAE";
constexpr const char* pCable = "/net/connman/service/ethernet_cable";
constexpr const char* pCableKey = "WiredBAB49A54";

std::string SetProperty(const char* pPath, const std::string& sProperty)
{
    return std::string(pPath) + " SetProperty " + sProperty;
}

const char* const pDhcp = R"(["IPv4.Configuration",["a{sv}",{"Method":["s","dhcp"]}]])";
const char* const pNoNameservers = R"(["Nameservers.Configuration",["as",[]]])";

std::string Manual(const std::string& sAddress)
{
    return R"(["IPv4.Configuration",["a{sv}",{"Address":["s",")" + sAddress +
           R"("],"Gateway":["s","10.0.0.1"],"Method":["s","manual"],"Netmask":["s","255.0.0.0"]}]])";
}

std::string Nameservers(const std::string& sList)
{
    return R"(["Nameservers.Configuration",["as",[)" + sList + "]]]";
}

Simulator::Network Static(const Simulator::Network& network)
{
    return Scenes::WithNameservers(
        Scenes::WithIPv4(network, "manual", "10.0.0.2", "255.0.0.0", "10.0.0.1"),
        {"10.0.0.3", "10.0.0.4"});
}

Simulator::Network Dynamic(const Simulator::Network& network)
{
    return Scenes::WithNameservers(
        Scenes::WithIPv4(network, "dhcp", "10.0.0.2", "255.0.0.0", "10.0.0.1"),
        {"10.0.0.3", "10.0.0.4"});
}

TestSupport::LogMessage UpdateMessage(const std::string& sKey, unsigned nFlags)
{
    return PlugInMessage("TargetSpecificSetNetworkConfiguration", 234,
                         "Updating network configuration for the network name " + sKey +
                             " with flags: " + std::to_string(nFlags));
}

} // namespace

/** ConnMan takes the commands and changes nothing, so that each test sees one comparison. */
class ApplyingServices : public Stage
{
protected:
    void StartDeaf(std::vector<Simulator::Network> vecServices)
    {
        Start(Scenes::Quiet(std::move(vecServices)));
        for (const char* pMember : {"SetProperty", "Connect", "Disconnect", "Remove"})
            pConnMan->OnCall({pMember, "", "", ""}, Simulator::Behaviour::AnswerWith({}));
    }

    template <class Function> void Want(const char* pKey, const Function& fn)
    {
        host.Edit([&](DeviceConfig& config) { fn(config.mapNetworkServices.at(pKey)); });
    }

    /** The flags that were logged, in order. */
    void ExpectLogged(const std::vector<TestSupport::LogMessage>& vecMessages)
    {
        EXPECT_EQ(TestSupport::HostLog::GetMessages(), vecMessages);
    }
};

TEST_F(ApplyingServices, ConnectsAnIdleNetworkThatIsToBeConnected)
{
    StartDeaf({Scenes::Wifi("Home")});
    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre(std::string(pHome) + " Connect"));
    ExpectLogged({UpdateMessage(pHomeKey, 1)});
}

TEST_F(ApplyingServices, ForgetsAConnectedWifiNetworkThatIsNotToBeConnected)
{
    StartDeaf({Scenes::Wifi("Home", "ready")});
    Want(pHomeKey, [](Service& home) { home.bConnected = false; });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre(std::string(pHome) + " Remove"));
    ExpectLogged({UpdateMessage(pHomeKey, 2)});
}

TEST_F(ApplyingServices, DisconnectsAConnectedCableThatIsNotToBeConnected)
{
    StartDeaf({Scenes::Cable("online")});
    Want(pCableKey, [](Service& cable) { cable.bConnected = false; });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre(std::string(pCable) + " Disconnect"));
    ExpectLogged({UpdateMessage(pCableKey, 2)});
}

TEST_F(ApplyingServices, SwitchesAStaticNetworkToDhcpAndClearsItsNameServers)
{
    StartDeaf({Static(Scenes::Wifi("Home", "ready"))});
    Want(pHomeKey, [](Service& home) { home.bDhcp = true; });
    Apply();
    EXPECT_THAT(TakeCommands(),
                ElementsAre(SetProperty(pHome, pDhcp), SetProperty(pHome, pNoNameservers)));
    ExpectLogged({UpdateMessage(pHomeKey, 0x14)});
}

TEST_F(ApplyingServices, SwitchesToDhcpAndConnectsInOne)
{
    StartDeaf({Static(Scenes::Wifi("Home"))});
    Want(pHomeKey, [](Service& home) {
        home.bDhcp = true;
        home.bConnected = true;
    });
    Apply();
    EXPECT_THAT(TakeCommands(),
                ElementsAre(SetProperty(pHome, pDhcp), SetProperty(pHome, pNoNameservers),
                            std::string(pHome) + " Connect"));
    ExpectLogged({UpdateMessage(pHomeKey, 0x15)});
}

TEST_F(ApplyingServices, SwitchesToDhcpAndForgetsInOne)
{
    StartDeaf({Static(Scenes::Wifi("Home", "online"))});
    Want(pHomeKey, [](Service& home) {
        home.bDhcp = true;
        home.bConnected = false;
    });
    Apply();
    EXPECT_THAT(TakeCommands(),
                ElementsAre(SetProperty(pHome, pDhcp), SetProperty(pHome, pNoNameservers),
                            std::string(pHome) + " Remove"));
    ExpectLogged({UpdateMessage(pHomeKey, 0x16)});
}

TEST_F(ApplyingServices, LeavesAStaticNetworkAloneThatIsAsWanted)
{
    StartDeaf({Static(Scenes::Wifi("Home", "ready"))});
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), IsEmpty());
    ExpectLogged({});
}

TEST_F(ApplyingServices, GivesADhcpNetworkAStaticAddress)
{
    StartDeaf({Dynamic(Scenes::Wifi("Home", "ready"))});
    Want(pHomeKey, [](Service& home) { home.bDhcp = false; });
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(SetProperty(pHome, Manual("10.0.0.2"))));
    ExpectLogged({UpdateMessage(pHomeKey, 0x08)});
}

TEST_F(ApplyingServices, GivesADhcpNetworkAStaticAddressAndNameServers)
{
    StartDeaf({Dynamic(Scenes::Wifi("Home", "ready"))});
    Want(pHomeKey, [](Service& home) {
        home.bDhcp = false;
        home.sIPv4Address = "10.0.0.9";
        home.vecNameservers = {"10.0.0.5"};
    });
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(SetProperty(pHome, Manual("10.0.0.9")),
                                            SetProperty(pHome, Nameservers("\"10.0.0.5\""))));
    ExpectLogged({UpdateMessage(pHomeKey, 0x18)});
}

TEST_F(ApplyingServices, TakesAnotherOrderOfNameServersForADifference)
{
    StartDeaf({Static(Scenes::Wifi("Home", "ready"))});
    Want(pHomeKey, [](Service& home) { home.vecNameservers = {"10.0.0.4", "10.0.0.3"}; });
    Apply();
    EXPECT_THAT(TakeCommands(),
                ElementsAre(SetProperty(pHome, Nameservers("\"10.0.0.4\",\"10.0.0.3\""))));
    ExpectLogged({UpdateMessage(pHomeKey, 0x10)});
}

TEST_F(ApplyingServices, LeavesAddressAndNameServersOfADhcpNetworkToDhcp)
{
    StartDeaf({Dynamic(Scenes::Wifi("Home", "ready"))});
    Want(pHomeKey, [](Service& home) {
        home.sIPv4Address = "10.0.0.9";
        home.vecNameservers = {"10.0.0.5"};
    });
    Apply();
    EXPECT_THAT(TakeCommands(), IsEmpty());
    ExpectLogged({});
}

TEST_F(ApplyingServices, GoesThroughTheNetworksInConnMansOrder)
{
    StartDeaf({Scenes::Wifi("Other", "ready"), Scenes::Wifi("Home"), Scenes::Cable("online")});
    Want("Other6E38FF95", [](Service& other) { other.bConnected = false; });
    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    Want(pCableKey, [](Service& cable) { cable.bConnected = false; });
    Apply();
    EXPECT_THAT(TakeCommands(),
                ElementsAre("/net/connman/service/wifi_Other Remove",
                            std::string(pHome) + " Connect", std::string(pCable) + " Disconnect"));
    ExpectLogged({UpdateMessage("Other6E38FF95", 2), UpdateMessage(pHomeKey, 1),
                  UpdateMessage(pCableKey, 2)});
}

// One record for two networks: each is compared with it by itself.
TEST_F(ApplyingServices, ConnectsEachNetworkOfTheNameThatIsNotConnected)
{
    Simulator::Network second = Scenes::Wifi("Home");
    second.sPath += "_5GHz";
    StartDeaf({Scenes::Wifi("Home", "ready"), second});
    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(std::string(pHome) + "_5GHz Connect"));
}

TEST_F(ApplyingServices, NeverTouchesAHiddenNetworkOrOneThatTheHostHasNotRead)
{
    Simulator::Network hidden = Scenes::Wifi("hidden", "ready");
    hidden.sName.reset();
    StartDeaf({hidden, Scenes::Wifi("Home", "ready")});
    host.Edit([](DeviceConfig& config) { config.mapNetworkServices.clear(); });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), IsEmpty());
    ExpectLogged({});
}

TEST_F(ApplyingServices, IgnoresANetworkThatConnManDoesNotHaveAnyMore)
{
    StartDeaf({Scenes::Wifi("Home")});
    host.Edit(
        [](DeviceConfig& config) { config.mapNetworkServices["Gone00000000"].bConnected = true; });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), IsEmpty());
}

TEST_F(ApplyingServices, KeepsTheWishesAndSendsTheSameAgain)
{
    StartDeaf({Scenes::Wifi("Home")});
    Want(pHomeKey, [](Service& home) {
        home.bConnected = true;
        home.sPassphrase = "correct horse";
    });
    Apply();
    Apply();
    EXPECT_THAT(TakeCommands(),
                ElementsAre(std::string(pHome) + " Connect", std::string(pHome) + " Connect"));
    const Service home = host.FindNetwork(pHomeKey).value();
    EXPECT_TRUE(home.bConnected);
    EXPECT_EQ(home.sPassphrase, "correct horse");
}

TEST_F(ApplyingServices, SendsNothingOnceConnManShowsWhatIsWanted)
{
    StartDeaf({Scenes::Wifi("Home")});
    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    pConnMan->SetState(pHome, "ready");
    Settle();
    Apply();
    EXPECT_THAT(TakeCommands(), IsEmpty());
}

TEST_F(ApplyingServices, AsksWhetherTheLevelIsLoggedAtAll)
{
    StartDeaf({Scenes::Wifi("Home")});
    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    TestSupport::HostLog::SetActive(QelLogInfo, false);
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(std::string(pHome) + " Connect"));
    ExpectLogged({});
}

// The log is the host's, so it is where a failure can come from in the middle of it.
TEST_F(ApplyingServices, ThatFailsHasSentWhatCameBeforeAndLeavesTheLockFree)
{
    StartDeaf({Scenes::Wifi("Home"), Scenes::Wifi("Other")});
    Want(pHomeKey, [](Service& home) { home.bConnected = true; });
    Want("Other6E38FF95", [](Service& other) { other.bConnected = true; });
    TestSupport::HostLog::SetOnMessage([](const TestSupport::LogMessage& message) {
        if (message.sText.find("Other") != std::string::npos)
            throw std::runtime_error("log full");
    });
    EXPECT_THROW(Apply(), std::runtime_error);
    EXPECT_THAT(TakeCommands(), ElementsAre(std::string(pHome) + " Connect"));

    TestSupport::HostLog::SetOnMessage(nullptr);
    EXPECT_EQ(Read(), 1);
}

} // namespace Tovra
