#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Addresses : public Scene
{
protected:
    void StartConnected()
    {
        Simulator::Scenario scenario = Neighbourhood();
        scenario.vecServices[1].sState = "ready";
        StartConnMan(scenario);
    }

    static std::vector<std::string> Static(const std::string& sAddress, const std::string& sNetmask,
                                           const std::string& sGateway,
                                           const std::vector<std::string>& vecNameservers = {})
    {
        std::vector<std::string> vecArguments = {"set",       "My Net-1", "--address", sAddress,
                                                 "--netmask", sNetmask,   "--gateway", sGateway};
        for (const std::string& sNameserver : vecNameservers)
            vecArguments.insert(vecArguments.end(), {"--nameserver", sNameserver});
        return vecArguments;
    }

    void ExpectRefused(const std::vector<std::string>& vecArguments, const std::string& sReason)
    {
        const Outcome outcome = Run(vecArguments);
        EXPECT_EQ(outcome.nExit, 2) << outcome;
        EXPECT_EQ(outcome.sErrors, "corvane: " + sReason + "\n");
        EXPECT_THAT(TakeCommands(), IsEmpty());
    }
};

TEST_F(Addresses, AStaticAddressIsSetAndConfirmed)
{
    StartConnected();
    const Outcome outcome = Run(
        Static("192.168.178.50", "255.255.255.0", "192.168.178.1", {"9.9.9.9", "192.168.178.1"}));
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput, "Set: 192.168.178.50 by static configuration.\n");
    EXPECT_EQ(outcome.sErrors, "Setting the address\n");
    EXPECT_EQ(TakeCommands().size(), 2u) << "the address and the name servers";
    const Json network = RunForJson({"show", "My Net-1"}).at("network");
    EXPECT_EQ(network.at("dhcp"), false);
    EXPECT_EQ(network.at("address"), "192.168.178.50");
    EXPECT_EQ(network.at("nameservers"), Json::array({"9.9.9.9", "192.168.178.1"}));
}

TEST_F(Addresses, DhcpIsSetAndConfirmed)
{
    StartConnected();
    ASSERT_EQ(Run(Static("10.0.0.2", "255.0.0.0", "10.0.0.1")).nExit, 0);
    const Json outcome = RunForJson({"set", "My Net-1", "--dhcp"});
    EXPECT_EQ(outcome.at("command"), "set");
    EXPECT_EQ(outcome.at("result"), "done");
    EXPECT_EQ(outcome.at("key"), "MyNet1726E16D6");
    EXPECT_EQ(outcome.at("confirmed"), true);
    EXPECT_EQ(outcome.at("network").at("address"), "192.168.178.41");
    EXPECT_EQ(outcome.at("text"), "Set: 192.168.178.41 by DHCP.");
}

TEST_F(Addresses, WhileNotConnectedItCannotBeConfirmed)
{
    StartConnMan();
    const Outcome outcome = Run(Static("10.0.0.2", "255.0.0.0", "10.0.0.1"));
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput,
              "Sent. The network is not connected; until it is, this cannot be confirmed.\n");
    EXPECT_THAT(TakeCommands(), testing::Contains(HasSubstr("IPv4.Configuration")));
    EXPECT_EQ(RunForJson({"set", "My Net-1", "--dhcp"}).at("confirmed"), false);
}

TEST_F(Addresses, TheTimeToWaitEndsIt)
{
    StartConnected();
    pConnMan->OnCall({"SetProperty", "", "", ""}, Simulator::Behaviour::StaySilent());
    std::vector<std::string> vecArguments = Static("10.0.0.2", "255.0.0.0", "10.0.0.1");
    vecArguments.insert(vecArguments.end(), {"--wait", "0.5"});
    const Outcome outcome = Run(vecArguments);
    EXPECT_EQ(outcome.nExit, 5);
    EXPECT_THAT(outcome.sErrors,
                HasSubstr("Sent, but the network does not show the new settings yet.\n"));
    const Json late = RunForJson(vecArguments, 5);
    EXPECT_EQ(late.at("result"), "timed-out");
    EXPECT_EQ(late.at("confirmed"), false);
}

TEST_F(Addresses, AnotherNetworkOfAnotherNameIsLeftAlone)
{
    StartConnMan(WithAnotherCable());
    EXPECT_EQ(Run(Static("10.0.0.2", "255.0.0.0", "10.0.0.1")).nExit, 0);
    EXPECT_THAT(TakeCommands(), Not(testing::Contains(HasSubstr("Disconnect"))));
}

TEST_F(Addresses, WhatIsNoAddressIsRefusedBeforeAnythingIsSent)
{
    StartConnected();
    const std::string sWrite = "; write four numbers from 0 to 255, such as 192.168.1.20";
    ExpectRefused(Static("10.0.0", "255.0.0.0", "10.0.0.1"),
                  "the address '10.0.0' is no IPv4 address" + sWrite);
    ExpectRefused(Static("10.0.0.256", "255.0.0.0", "10.0.0.1"),
                  "the address '10.0.0.256' is no IPv4 address" + sWrite);
    ExpectRefused(Static("fd00::2", "255.0.0.0", "10.0.0.1"),
                  "the address 'fd00::2' is no IPv4 address" + sWrite);
    ExpectRefused(Static("10.0.0.2", "255.0.0.0", "router"),
                  "the gateway 'router' is no IPv4 address" + sWrite);
    ExpectRefused(Static("10.0.0.2", "8", "10.0.0.1"),
                  "the netmask '8' is no IPv4 address" + sWrite);
}

TEST_F(Addresses, WhatIsNoNetmaskIsRefusedBeforeAnythingIsSent)
{
    StartConnected();
    const std::string sIs = " is no netmask; it is ones followed by zeroes, such as 255.255.255.0";
    ExpectRefused(Static("10.0.0.2", "255.0.255.0", "10.0.0.1"), "'255.0.255.0'" + sIs);
    ExpectRefused(Static("10.0.0.2", "0.0.0.0", "10.0.0.1"), "'0.0.0.0'" + sIs);
}

TEST_F(Addresses, WhatDoesNotFitTogetherIsRefusedBeforeAnythingIsSent)
{
    StartConnected();
    ExpectRefused(Static("10.0.0.2", "255.255.255.0", "10.0.1.1"),
                  "the gateway 10.0.1.1 cannot be reached from 10.0.0.2 with netmask "
                  "255.255.255.0; it must lie in the same network");
    ExpectRefused(Static("10.0.0.2", "255.255.255.0", "10.0.0.2"),
                  "the gateway 10.0.0.2 is the address itself; it must be another one of the same "
                  "network");
    const std::string sIs = " is no host's address with this netmask; take one between the first "
                            "and the last of the network";
    ExpectRefused(Static("10.0.0.0", "255.255.255.0", "10.0.0.1"), "10.0.0.0" + sIs);
    ExpectRefused(Static("10.0.0.2", "255.255.255.0", "10.0.0.255"), "10.0.0.255" + sIs);
}

TEST_F(Addresses, WhatIsNoNameServerIsRefusedBeforeAnythingIsSent)
{
    StartConnected();
    ExpectRefused(Static("10.0.0.2", "255.0.0.0", "10.0.0.1", {"9.9.9.9", "dns.example"}),
                  "the name server 'dns.example' is no address; write one such as 192.168.1.1 or "
                  "fd00::1");
}

} // namespace

} // namespace Tovra
