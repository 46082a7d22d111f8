#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::HasSubstr;
using testing::Not;

class Lists : public Scene
{
protected:
    static void SetStrength(Simulator::Network& network, unsigned nStrength)
    {
        network.overrides["Strength"] =
            Simulator::ReadValue(Simulator::Json::array({"y", nStrength}), "Strength");
    }
};

TEST_F(Lists, TechnologiesAreATable)
{
    StartConnMan();
    const Outcome outcome = Run({"technologies"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput, "TYPE      NAME   POWERED  CONNECTED\n"
                               "ethernet  Wired  yes      no\n"
                               "wifi      WiFi   yes      no\n");
    EXPECT_EQ(outcome.sErrors, "");
}

TEST_F(Lists, TechnologiesAreJson)
{
    StartConnMan();
    EXPECT_EQ(RunForJson({"technologies"}), Json::parse(R"({"technologies": [
        {"type": "ethernet", "name": "Wired", "powered": true, "connected": false},
        {"type": "wifi", "name": "WiFi", "powered": true, "connected": false}]})"));
}

TEST_F(Lists, NetworksAreATableWithBars)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sState = "ready";
    scenario.vecServices[1].sMethod = "manual";
    StartConnMan(scenario);
    const Outcome outcome = Run({"networks"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput,
              "NAME         TYPE      SIGNAL    SECURITY  STATE      ADDRESS\n"
              "Café am Eck  wifi      ▮▮▮▯  52  none\n"
              "Guests       wifi      ▮▯▯▯  20  psk\n"
              "My Net-1     wifi      ▮▮▮▮  78  psk wps   connected  192.168.178.41 (static)\n"
              "Wired        ethernet\n");
    EXPECT_EQ(outcome.sErrors, "");
}

TEST_F(Lists, NetworksAreJson)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices.resize(2);
    scenario.vecServices[1].sState = "ready";
    StartConnMan(scenario);
    EXPECT_EQ(RunForJson({"networks"}), Json::parse(R"({"networks": [
        {"key": "MyNet1726E16D6", "name": "My Net-1", "type": "wifi", "interface": "wlan0",
         "mac_address": "02:00:00:00:00:00", "connected": true, "failed": false,
         "security": ["psk", "wps"], "strength": 78, "dhcp": true,
         "address": "192.168.178.41", "netmask": "255.255.255.0", "gateway": "192.168.178.1",
         "nameservers": ["192.168.178.1"]},
        {"key": "WiredBAB49A54", "name": "Wired", "type": "ethernet", "interface": "eth0",
         "mac_address": "02:00:00:00:00:00", "connected": false, "failed": false,
         "security": [], "strength": null, "dhcp": true,
         "address": "", "netmask": "", "gateway": "", "nameservers": []}]})"));
}

TEST_F(Lists, WithoutNetworksItSaysSo)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices.clear();
    StartConnMan(scenario);
    EXPECT_EQ(Run({"networks"}).sOutput, "There are no networks; 'corvane scan' looks for some.\n");
    EXPECT_EQ(RunForJson({"networks"}), Json::parse(R"({"networks": []})"));
}

TEST_F(Lists, ShowTellsAllOfANetwork)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sState = "online";
    scenario.vecServices[1].vecNameservers = {"192.168.178.1", "9.9.9.9"};
    StartConnMan(scenario);
    const std::string sExpected = "Name          My Net-1\n"
                                  "Key           MyNet1726E16D6\n"
                                  "Type          wifi\n"
                                  "Interface     wlan0\n"
                                  "MAC address   02:00:00:00:00:00\n"
                                  "Connected     yes\n"
                                  "Failed        no\n"
                                  "Security      psk wps\n"
                                  "Signal        78 %\n"
                                  "Method        DHCP\n"
                                  "Address       192.168.178.41 netmask 255.255.255.0\n"
                                  "Gateway       192.168.178.1\n"
                                  "Name servers  192.168.178.1, 9.9.9.9\n";
    EXPECT_EQ(Run({"show", "My Net-1"}).sOutput, sExpected);
    EXPECT_EQ(Run({"show", "MyNet1726E16D6"}).sOutput, sExpected) << "by its key";
    EXPECT_EQ(RunForJson({"show", "My Net-1"}).at("network").at("name"), "My Net-1");
}

TEST_F(Lists, AStrengthAboveHundredIsUnknown)
{
    Simulator::Scenario scenario = Neighbourhood();
    SetStrength(scenario.vecServices[1], 101);
    SetStrength(scenario.vecServices[2], 100);
    StartConnMan(scenario);
    EXPECT_THAT(Run({"networks"}).sOutput, HasSubstr("My Net-1     wifi                psk wps\n"));
    EXPECT_THAT(Run({"show", "My Net-1"}).sOutput, HasSubstr("Signal        unknown\n"));
    EXPECT_EQ(RunForJson({"show", "My Net-1"}).at("network").at("strength"), nullptr);
    EXPECT_EQ(RunForJson({"show", "Guests"}).at("network").at("strength"), 100);
}

TEST_F(Lists, AnUnknownNetworkIsAnsweredWithWhatThereIs)
{
    StartConnMan();
    for (const char* pCommand : {"show", "connect", "disconnect"}) {
        const Outcome outcome = Run({pCommand, "MyNet-1"});
        EXPECT_EQ(outcome.nExit, 3);
        EXPECT_EQ(outcome.sOutput, "");
        EXPECT_EQ(outcome.sErrors, "corvane: there is no network 'MyNet-1'; there is "
                                   "'Café am Eck', 'Guests', 'My Net-1', 'Wired'\n");
    }
    EXPECT_EQ(TakeCommands(), std::vector<std::string>());
    EXPECT_EQ(RunForJson({"show", "Home"}, 3),
              Json({{"result", "error"},
                    {"text", "there is no network 'Home'; there is 'Café am Eck', 'Guests', "
                             "'My Net-1', 'Wired'"}}));
}

TEST_F(Lists, AnUnknownNetworkThatIsNoTextIsOneTooInJson)
{
    StartConnMan();
    EXPECT_EQ(RunForJson({"show", "\xff"}, 3).at("result"), "error");
}

TEST_F(Lists, NetworksOfOneNameAreOneEntry)
{
    Simulator::Scenario scenario = Neighbourhood();
    Simulator::Network other = scenario.vecServices[1];
    other.sPath = PathOf("wifi_home_5ghz");
    other.nStrength = 31;
    scenario.vecServices.push_back(other);
    StartConnMan(scenario);
    const Json networks = RunForJson({"networks"}).at("networks");
    ASSERT_EQ(networks.size(), 4u);
    EXPECT_EQ(networks[2].at("name"), "My Net-1");
    EXPECT_EQ(networks[2].at("strength"), 31) << "of the later one";
}

TEST_F(Lists, ANameGoesBeforeAKey)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[2].sName = "MyNet1726E16D6"; // the key of My Net-1
    StartConnMan(scenario);
    EXPECT_THAT(Run({"show", "MyNet1726E16D6"}).sOutput,
                testing::StartsWith("Name          MyNet1726E16D6\n"));
    EXPECT_THAT(Run({"show", "My Net-1"}).sOutput, HasSubstr("Key           MyNet1726E16D6\n"));
}

TEST_F(Lists, NamesCannotSteerTheTerminal)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sName = "Red\x1b[31m \xc2\x9b 7m\n";
    StartConnMan(scenario);
    const Outcome outcome = Run({"networks"});
    EXPECT_THAT(outcome.sOutput, HasSubstr("Red?[31m ? 7m?  "));
    EXPECT_THAT(outcome.sOutput, Not(HasSubstr("\x1b")));
    EXPECT_THAT(Run({"show", "nothing"}).sErrors, HasSubstr("'Red?[31m ? 7m?'"));
}

TEST_F(Lists, ListsThatComeLateAreWaitedFor)
{
    StartConnMan();
    pConnMan->OnCall({"GetTechnologies", "", "", ""}, Simulator::Behaviour::Hold());
    const auto pSession = Start({"technologies"});
    EXPECT_TRUE(pSession->AwaitErrors("Waiting for the network daemon's lists\n"));
    pConnMan->ReleaseReplies();
    EXPECT_TRUE(pSession->AwaitOutput("wifi      WiFi   yes      no\n"));
    EXPECT_EQ(pSession->AwaitExit(), 0);
}

} // namespace

} // namespace Tovra
