#include "tests/connman/ClientOnBus.h"

#include <gmock/gmock.h>

namespace Tovra
{

using Simulator::Network;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;
namespace HostLog = TestSupport::HostLog;

namespace
{

Simulator::Scenario MakeScenario()
{
    Simulator::Scenario scenario;
    scenario.timing = Simulator::Timing::Quick();
    scenario.vecTechnologies = {{}};
    return scenario;
}

Network MakeNetwork(const std::string& sName)
{
    Network network;
    network.sName = sName;
    network.sPassphrase = "the right secret";
    network.vecSecurity = {"psk"};
    return network;
}

std::string GetIdentifier(const std::string& sPath)
{
    return sPath.substr(sPath.rfind('/') + 1);
}

} // namespace

/** What a change of the usable network sets off, from ConnMan's signal to the private /opt. */
class ChangeOnBus : public ClientOnBus
{
protected:
    ChangeOnBus() : ClientOnBus(MakeScenario()) {}

    void SetUp() override
    {
        ClientOnBus::SetUp();
        PrivateOpt::InstallHostCommand("echo \"$@\" >>/opt/record\n");
        sHome = daemon.AddService(MakeNetwork("Home"));
        AwaitState(sHome, "idle");
    }

    std::string GetKnownState(const std::string& sPath)
    {
        for (const ConnMan::NetworkService& service : GetClient().GetNetworks()) {
            if (service.sPath == sPath)
                return service.sState;
        }
        return "";
    }

    void AwaitState(const std::string& sPath, const std::string& sState)
    {
        EXPECT_TRUE(TestSupport::Eventually([&] { return GetKnownState(sPath) == sState; }));
    }

    void Connect(const std::string& sPath)
    {
        for (const ConnMan::NetworkService& service : GetClient().GetNetworks()) {
            if (service.sPath == sPath)
                GetClient().SetNetworkProperties(service, ConnMan::Connect);
        }
    }

    void AnswerWith(const std::vector<std::string>& vecPassphrases)
    {
        vecAnswers = vecPassphrases;
        GetClient().SetOnAgentRequest([this](const std::string&, const auto&) {
            std::map<std::string, std::string> mapAnswer;
            if (!vecAnswers.empty()) {
                mapAnswer["Passphrase"] = vecAnswers.front();
                vecAnswers.erase(vecAnswers.begin());
            }
            return mapAnswer;
        });
    }

    std::vector<std::string> vecAnswers; // dispatch thread
    std::string sHome;
};

TEST_F(ChangeOnBus, AConnectionWithTheRightPassphraseTellsTheHostAndForgetsOtherNetworks)
{
    PrivateOpt::StoreSettings(GetIdentifier(sHome));
    PrivateOpt::StoreSettings("wifi_old_managed_psk");
    PrivateOpt::StoreSettings("ethernet_e_cable");
    AnswerWith({"the right secret"});
    Connect(sHome);
    AwaitState(sHome, "online");
    AwaitHandled();
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"), "--ipc-send=netcfg-dhcp-address-acquired\n");
    EXPECT_THAT(PrivateOpt::GetStored(),
                UnorderedElementsAre(GetIdentifier(sHome), "ethernet_e_cable"));
    EXPECT_FALSE(HostLog::Mentions("secret"));
    EXPECT_THAT(HostLog::GetMessagesOfLevel(QelLogError), IsEmpty());
}

TEST_F(ChangeOnBus, AWrongPassphraseIsAskedForAgainAndTheRetryIsLogged)
{
    AnswerWith({"the wrong secret", "the right secret"});
    Connect(sHome);
    ASSERT_TRUE(TestSupport::Eventually([&] {
        const Simulator::Json properties = daemon.GetServiceProperties(sHome);
        return properties.contains("Error") && properties["State"][1] == "idle";
    }));
    EXPECT_THAT(HostLog::GetMessagesOfLevel(QelLogInfo), IsEmpty());
    Connect(sHome);
    AwaitState(sHome, "online");
    EXPECT_THAT(HostLog::GetMessagesWithText(ClientLog::Retry().sText),
                ElementsAre(ClientLog::Retry()));
    EXPECT_FALSE(HostLog::Mentions("secret"));
}

TEST_F(ChangeOnBus, ARemovalThatThrowsIsLoggedOnceAndTheThreadGoesOn)
{
    PrivateOpt::WriteFile(PrivateOpt::pStorage, "no directory");
    daemon.SetState(sHome, "ready");
    AwaitState(sHome, "ready");
    ASSERT_TRUE(
        TestSupport::Eventually([] { return !HostLog::GetMessagesOfLevel(QelLogError).empty(); }));

    // The list is in place and the host was told: only the removal failed.
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"), "--ipc-send=netcfg-dhcp-address-acquired\n");
    daemon.SetState(sHome, "online"); // with the same address: nothing to remove
    AwaitState(sHome, "online");
    AwaitHandled();
    const auto vecErrors = HostLog::GetMessagesOfLevel(QelLogError);
    ASSERT_THAT(vecErrors, SizeIs(1));
    EXPECT_EQ(vecErrors[0].nLine, 57);
    EXPECT_EQ(vecErrors[0].sFile, ClientLog::pFile);
    EXPECT_EQ(vecErrors[0].sText.rfind(
                  "ConnMan: " + vecErrors[0].sFunction + ": dropped after an exception: ", 0),
              0U);
    EXPECT_THAT(vecErrors[0].sText, HasSubstr(PrivateOpt::pStorage));
}

TEST_F(ChangeOnBus, WhatFailedIsTriedAgainAtTheNextChange)
{
    PrivateOpt::WriteFile(PrivateOpt::pStorage, "no directory");
    daemon.SetState(sHome, "ready");
    ASSERT_TRUE(
        TestSupport::Eventually([] { return !HostLog::GetMessagesOfLevel(QelLogError).empty(); }));
    PrivateOpt::RemoveFile(PrivateOpt::pStorage);
    PrivateOpt::StoreSettings("wifi_old_managed_psk");
    daemon.ChangeNetwork(sHome, [](Network& network) { network.sAddress = "192.168.1.99"; });
    EXPECT_TRUE(TestSupport::Eventually([] { return PrivateOpt::GetStored().empty(); }));
}

TEST_F(ChangeOnBus, LosingTheNetworkTellsAndRemovesNothing)
{
    daemon.SetState(sHome, "ready");
    AwaitState(sHome, "ready");
    ASSERT_TRUE(
        TestSupport::Eventually([] { return !PrivateOpt::ReadFile("/opt/record").empty(); }));
    AwaitHandled();
    PrivateOpt::StoreSettings("wifi_old_managed_psk");
    HostLog::Reset();
    daemon.SetState(sHome, "idle");
    EXPECT_TRUE(HostLog::Await(ClientLog::Removal(QelLogDebug, 416,
                                                  "Currently not connected, not deleting any wifi "
                                                  "settings directories.")));
    EXPECT_TRUE(HostLog::Await(ClientLog::Notification(390, "No network is online or ready.")));
    EXPECT_THAT(PrivateOpt::GetStored(), UnorderedElementsAre("wifi_old_managed_psk"));
    EXPECT_EQ(PrivateOpt::ReadFile("/opt/record"), "--ipc-send=netcfg-dhcp-address-acquired\n");
}

} // namespace Tovra
