#include "tests/plugin/Stage.h"

#include <gmock/gmock.h>

namespace Tovra
{

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

constexpr const char* pScanWifi = "/net/connman/technology/wifi Scan";

std::string Power(const std::string& sType, bool bOn)
{
    return "/net/connman/technology/" + sType + R"( SetProperty ["Powered",["b",)" +
           (bOn ? "true" : "false") + "]]";
}

TestSupport::LogMessage ScanMessage(const std::string& sName)
{
    return PlugInMessage("TargetSpecificSetNetworkConfiguration", 177,
                         "Starting scan for technology " + sName);
}

Simulator::Scenario TurnedOff(Simulator::Scenario scenario, std::size_t nTechnology)
{
    scenario.vecTechnologies.at(nTechnology).bPowered = false;
    return scenario;
}

} // namespace

/** ConnMan takes the commands and changes nothing, so that each test sees one comparison. */
class ApplyingTechnologies : public Stage
{
protected:
    void StartDeaf(const Simulator::Scenario& scenario)
    {
        Start(scenario);
        pConnMan->OnCall({"SetProperty", "", "", ""}, Simulator::Behaviour::AnswerWith({}));
        pConnMan->OnCall({"Scan", "", "", ""}, Simulator::Behaviour::AnswerWith({}));
        pConnMan->OnCall({"Connect", "", "", ""}, Simulator::Behaviour::AnswerWith({}));
    }

    void Want(const std::string& sType, bool bPowered, bool bScan)
    {
        host.Edit([&](DeviceConfig& config) {
            DeviceConfig::NetworkTechnology& wanted = config.mapNetworkTechnologies.at(sType);
            wanted.bPowered = bPowered;
            wanted.bScan = bScan;
        });
    }

    void WantHomeConnected()
    {
        host.Edit([](DeviceConfig& config) {
            config.mapNetworkServices.at("Home52F50EAE").bConnected = true;
        });
    }

    bool WantsScan(const std::string& sType) { return host.FindTechnology(sType)->bScan; }
};

TEST_F(ApplyingTechnologies, SendsNothingForWhatWasOnlyRead)
{
    StartDeaf(Scenes::Quiet({Scenes::Wifi("Home"), Scenes::Cable("online")}, {"wifi", "ethernet"}));
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), IsEmpty());
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
}

TEST_F(ApplyingTechnologies, TurnsOffAndOn)
{
    StartDeaf(TurnedOff(Scenes::Quiet({}, {"wifi", "ethernet"}), 1));
    Want("wifi", false, false);
    Want("ethernet", true, false);
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("wifi", false), Power("ethernet", true)));
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
}

TEST_F(ApplyingTechnologies, StartsOneScanClearsTheWishAndLeavesTheNetworksToTheNextTime)
{
    StartDeaf(Scenes::Quiet({Scenes::Wifi("Home")}));
    Want("wifi", true, true);
    WantHomeConnected();

    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre(pScanWifi));
    EXPECT_FALSE(WantsScan("wifi"));
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), ElementsAre(ScanMessage("WiFi")));

    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre("/net/connman/service/wifi_Home Connect"));
}

TEST_F(ApplyingTechnologies, StartsOneScanATimeAndLeavesTheLaterTechnologiesAlone)
{
    StartDeaf(Scenes::Quiet({}, {"wifi", "bluetooth", "ethernet"}));
    Want("wifi", true, true);
    Want("bluetooth", true, true);
    Want("ethernet", false, false);

    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(pScanWifi));
    EXPECT_TRUE(WantsScan("bluetooth"));

    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre("/net/connman/technology/bluetooth Scan"));
    EXPECT_FALSE(WantsScan("bluetooth"));

    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("ethernet", false)));
}

TEST_F(ApplyingTechnologies, PowersTheEarlierTechnologiesBeforeAScan)
{
    StartDeaf(Scenes::Quiet({}, {"ethernet", "wifi"}));
    Want("ethernet", false, false);
    Want("wifi", true, true);
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("ethernet", false), pScanWifi));
}

TEST_F(ApplyingTechnologies, TurnsOnAndScansInOne)
{
    StartDeaf(TurnedOff(Scenes::Quiet(), 0));
    Want("wifi", true, true);
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("wifi", true), pScanWifi));
    EXPECT_FALSE(WantsScan("wifi"));
}

TEST_F(ApplyingTechnologies, DoesNotScanWhatIsToBeOffButTurnsItOff)
{
    StartDeaf(Scenes::Quiet({Scenes::Wifi("Home")}));
    Want("wifi", false, true);
    WantHomeConnected();
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(),
                ElementsAre(Power("wifi", false), "/net/connman/service/wifi_Home Connect"));
    EXPECT_TRUE(WantsScan("wifi"));
}

TEST_F(ApplyingTechnologies, DoesNotScanWhatIsOffAndIsToStayOff)
{
    StartDeaf(TurnedOff(Scenes::Quiet(), 0));
    Want("wifi", false, true);
    Apply();
    EXPECT_THAT(TakeCommands(), IsEmpty());
    EXPECT_TRUE(WantsScan("wifi"));
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
}

TEST_F(ApplyingTechnologies, LeavesAloneWhatTheHostDoesNotKnow)
{
    StartDeaf(Scenes::Quiet({}, {"wifi", "ethernet"}));
    Want("ethernet", false, false);
    host.Edit([](DeviceConfig& config) { config.mapNetworkTechnologies.erase("wifi"); });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("ethernet", false)));
    EXPECT_FALSE(host.FindTechnology("wifi"));
}

TEST_F(ApplyingTechnologies, IgnoresWhatConnManDoesNotHave)
{
    StartDeaf(Scenes::Quiet());
    host.Edit([](DeviceConfig& config) {
        config.mapNetworkTechnologies["cellular"] = {"Cellular", true, false, true};
    });
    EXPECT_EQ(Apply(), 1);
    EXPECT_THAT(TakeCommands(), IsEmpty());
    EXPECT_TRUE(WantsScan("cellular"));
}

TEST_F(ApplyingTechnologies, SendsTheSameAgainUntilConnManHasDoneIt)
{
    StartDeaf(Scenes::Quiet());
    Want("wifi", false, false);
    Apply();
    Apply();
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("wifi", false), Power("wifi", false)));

    pConnMan->ClearBehaviours();
    Apply();
    ASSERT_TRUE(host.AwaitWord(2));
    pConnMan->ClearCalls();
    Apply();
    EXPECT_THAT(TakeCommands(), IsEmpty());
}

TEST_F(ApplyingTechnologies, ThatFailsKeepsTheScanClearedAndTheLockFree)
{
    StartDeaf(Scenes::Quiet({}, {"ethernet", "wifi"}));
    Want("ethernet", false, false);
    Want("wifi", true, true);
    TestSupport::HostLog::SetOnMessage([](const auto&) { throw std::runtime_error("log full"); });
    EXPECT_THROW(Apply(), std::runtime_error);
    EXPECT_FALSE(WantsScan("wifi"));
    EXPECT_THAT(TakeCommands(), ElementsAre(Power("ethernet", false))) << "what is sent is sent";

    TestSupport::HostLog::SetOnMessage(nullptr);
    EXPECT_EQ(Read(), 1);
}

} // namespace Tovra
