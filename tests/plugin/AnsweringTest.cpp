#include "tests/plugin/Stage.h"

#include <gmock/gmock.h>

namespace Tovra
{

using testing::ElementsAre;

namespace
{

using Service = DeviceConfig::NetworkService;
using Answer = std::map<std::string, std::string>;
using Messages = std::vector<TestSupport::LogMessage>;

constexpr const char* pHome = "/net/connman/service/wifi_Home";
constexpr const char* pHomeKey = "Home52F50EAE";

Simulator::Value Field(const std::string& sType, const std::string& sRequirement)
{
    return Simulator::MakeDictionaryValue({{"Type", Simulator::MakeString(sType)},
                                           {"Requirement", Simulator::MakeString(sRequirement)}});
}

const Simulator::Value name = Field("string", "mandatory");
const Simulator::Value passphrase = Field("psk", "mandatory");
const Simulator::Value wps = Field("wpspin", "alternate");

/** The lines of one request, in the plug-in's order. */
class Lines
{
public:
    explicit Lines(std::string path) : sPath(std::move(path)) {}

    TestSupport::LogMessage Called() const
    {
        return Line(262, "TargetSpecificKX22::OnAgentRequest() called for sUniqueId=" + sPath);
    }
    TestSupport::LogMessage Asking() const
    {
        return Line(271, "Asking for Passphrase for " + sPath);
    }
    TestSupport::LogMessage Named(const std::string& sKey) const
    {
        return Line(278, "Network name for " + sPath + " is " + sKey);
    }
    static TestSupport::LogMessage Exists(const std::string& sKey)
    {
        return Line(283, "Configuration for " + sKey + " exists.");
    }
    static TestSupport::LogMessage UsingWps(const std::string& sKey)
    {
        return Line(289, "Connecting to " + sKey + " using WPS.");
    }
    static TestSupport::LogMessage UsingPassphrase(const std::string& sKey)
    {
        return Line(295, "Connecting to " + sKey + " using passphrase.");
    }

private:
    static TestSupport::LogMessage Line(int nLine, const std::string& sText)
    {
        return PlugInMessage("OnAgentRequest", nLine, sText);
    }

    std::string sPath;
};

} // namespace

class Answering : public Stage
{
protected:
    void StartWithHome() { Start(Scenes::Quiet({Scenes::Wifi("Other"), Scenes::Wifi("Home")})); }

    template <class Function> void Want(const Function& fn)
    {
        host.Edit([&](DeviceConfig& config) { fn(config.mapNetworkServices.at(pHomeKey)); });
    }

    /** ConnMan lists the path once for each of the names. */
    void StartWithOnePathFor(const std::vector<std::string>& vecNames)
    {
        StartConnMan(Scenes::Quiet({Scenes::Wifi("Home")}));
        Simulator::Json services = Simulator::Json::array();
        for (const std::string& sName : vecNames) {
            Simulator::Json properties = pConnMan->GetServiceProperties(pHome);
            properties["Name"] = {"s", sName};
            services.push_back({pHome, properties});
        }
        pConnMan->OnCall({"GetServices", "", "", ""},
                         Simulator::Behaviour::AnswerWith(
                             {"a(oa{sv})", Simulator::Json::array({std::move(services)})}));
        StartHost();
    }

    Answer Ask(const Simulator::Properties& fields, const std::string& sPath = pHome)
    {
        TestSupport::HostLog::Reset();
        const Simulator::Reply reply = AskAgent(sPath, Simulator::MakeDictionary(fields));
        EXPECT_EQ(reply.sError, "");
        EXPECT_EQ(reply.arguments.sSignature, "a{sv}");
        Answer mapAnswer;
        for (const auto& [sName, variant] : reply.arguments.values.at(0).items()) {
            EXPECT_EQ(variant.at(0), "s");
            mapAnswer[sName] = variant.at(1).get<std::string>();
        }
        return mapAnswer;
    }

    void ExpectLogged(const Messages& vecMessages)
    {
        EXPECT_EQ(TestSupport::HostLog::GetMessages(), vecMessages);
    }

    const Lines lines{pHome};
};

TEST_F(Answering, GivesTheNameAndTheStoredPassphraseOnce)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}),
              (Answer{{"Name", "Home"}, {"Passphrase", "correct horse"}}));
    ExpectLogged({lines.Called(), lines.Asking(), lines.Named(pHomeKey), Lines::Exists(pHomeKey),
                  Lines::UsingPassphrase(pHomeKey)});
    EXPECT_EQ(host.FindNetwork(pHomeKey)->sPassphrase, "");

    EXPECT_EQ(Ask({{"Passphrase", passphrase}}), (Answer{{"Name", "Home"}, {"Passphrase", ""}}));
}

TEST_F(Answering, GivesAnEmptyPassphraseThatIsStored)
{
    StartWithHome();
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}), (Answer{{"Name", "Home"}, {"Passphrase", ""}}));
    ExpectLogged({lines.Called(), lines.Asking(), lines.Named(pHomeKey), Lines::Exists(pHomeKey),
                  Lines::UsingPassphrase(pHomeKey)});
}

TEST_F(Answering, GivesAPassphraseThatTheHostStoredInBetween)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "wrong horse"; });
    Ask({{"Passphrase", passphrase}});
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}).at("Passphrase"), "correct horse");
}

TEST_F(Answering, GivesTheNameThatTheHostsRecordHas)
{
    StartWithHome();
    Want([](Service& home) { home.sName = "Sweet Home"; });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}).at("Name"), "Sweet Home");
}

TEST_F(Answering, GivesNothingForANameAlone)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    EXPECT_EQ(Ask({{"Name", name}}), Answer());
    ExpectLogged({lines.Called()});
    EXPECT_EQ(host.FindNetwork(pHomeKey)->sPassphrase, "correct horse");
}

TEST_F(Answering, GivesNothingForWpsAlone)
{
    StartWithHome();
    Want([](Service& home) { home.bUseWps = true; });
    EXPECT_EQ(Ask({{"WPS", wps}}), Answer());
    ExpectLogged({lines.Called()});
    EXPECT_TRUE(host.FindNetwork(pHomeKey)->bUseWps);
}

TEST_F(Answering, GivesNothingForANetworkThatTheHostDoesNotKnow)
{
    StartWithHome();
    host.Edit([](DeviceConfig& config) { config.mapNetworkServices.erase(pHomeKey); });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}), Answer());
    ExpectLogged({lines.Called(), lines.Asking(), lines.Named(pHomeKey)});
}

TEST_F(Answering, GivesNothingForAPathThatConnManDoesNotList)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    const std::string sPath = "/net/connman/service/wifi_home"; // a letter's case
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}, sPath), Answer());
    ExpectLogged({Lines(sPath).Called(), Lines(sPath).Asking()});
    EXPECT_EQ(host.FindNetwork(pHomeKey)->sPassphrase, "correct horse");
}

TEST_F(Answering, GoesOnFromARecordOfThePathThatTheHostDoesNotKnowToTheNext)
{
    StartWithOnePathFor({"Stranger", "Home"});
    const std::string sStrangerKey = "Stranger1CA1B7A7";
    host.Edit([&](DeviceConfig& config) {
        ASSERT_EQ(config.mapNetworkServices.erase(sStrangerKey), 1U);
    });
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}),
              (Answer{{"Name", "Home"}, {"Passphrase", "correct horse"}}));
    ExpectLogged({lines.Called(), lines.Asking(), lines.Named(sStrangerKey), lines.Named(pHomeKey),
                  Lines::Exists(pHomeKey), Lines::UsingPassphrase(pHomeKey)});
}

// The second takes what the first has left.
TEST_F(Answering, AnswersForEachRecordOfThePathSoThatTheLastCounts)
{
    StartWithOnePathFor({"Home", "Home"});
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}), (Answer{{"Name", "Home"}, {"Passphrase", ""}}));
    ExpectLogged({lines.Called(), lines.Asking(), lines.Named(pHomeKey), Lines::Exists(pHomeKey),
                  Lines::UsingPassphrase(pHomeKey), lines.Named(pHomeKey), Lines::Exists(pHomeKey),
                  Lines::UsingPassphrase(pHomeKey)});
}

TEST_F(Answering, AsksForWpsOnceWhenItIsWantedAndOffered)
{
    StartWithHome();
    Want([](Service& home) {
        home.bUseWps = true;
        home.sPassphrase = "correct horse";
    });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}, {"WPS", wps}}),
              (Answer{{"Name", "Home"}, {"WPS", ""}}));
    ExpectLogged({lines.Called(), lines.Asking(), lines.Named(pHomeKey), Lines::Exists(pHomeKey),
                  Lines::UsingWps(pHomeKey)});
    EXPECT_FALSE(host.FindNetwork(pHomeKey)->bUseWps);

    EXPECT_EQ(Ask({{"Passphrase", passphrase}, {"WPS", wps}}),
              (Answer{{"Name", "Home"}, {"Passphrase", "correct horse"}}));
}

TEST_F(Answering, GivesThePassphraseAndKeepsTheWishForWpsWhenThatIsNotOffered)
{
    StartWithHome();
    Want([](Service& home) {
        home.bUseWps = true;
        home.sPassphrase = "correct horse";
    });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}}),
              (Answer{{"Name", "Home"}, {"Passphrase", "correct horse"}}));
    EXPECT_TRUE(host.FindNetwork(pHomeKey)->bUseWps);
}

TEST_F(Answering, GivesThePassphraseWhenWpsIsOfferedAndNotWanted)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    EXPECT_EQ(Ask({{"Passphrase", passphrase}, {"WPS", wps}}),
              (Answer{{"Name", "Home"}, {"Passphrase", "correct horse"}}));
}

// ConnMan may tell which passphrase was wrong: that is no question.
TEST_F(Answering, IsNotMovedByWhatIsOnlyInformation)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    const Simulator::Value previous =
        Simulator::MakeDictionaryValue({{"Type", Simulator::MakeString("psk")},
                                        {"Requirement", Simulator::MakeString("informational")},
                                        {"Value", Simulator::MakeString("wrong horse")}});
    EXPECT_EQ(Ask({{"Passphrase", passphrase}, {"PreviousPassphrase", previous}}),
              (Answer{{"Name", "Home"}, {"Passphrase", "correct horse"}}));
    EXPECT_FALSE(TestSupport::HostLog::Mentions("horse"));
}

TEST_F(Answering, TellsNoPassphraseToTheLog)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    Ask({{"Passphrase", passphrase}});
    EXPECT_FALSE(TestSupport::HostLog::Mentions("horse"));
}

TEST_F(Answering, AsksWhetherTheLevelIsLoggedAtAll)
{
    StartWithHome();
    TestSupport::HostLog::Reset();
    TestSupport::HostLog::SetActive(QelLogInfo, false);
    AskAgent(pHome, Simulator::MakeDictionary({{"Passphrase", passphrase}}));
    ExpectLogged({});
}

// The log is the host's, so it is where a failure can come from in the middle of it.
TEST_F(Answering, ThatFailsIsAnErrorToConnManTheLockIsFreeAndTheCredentialNotTaken)
{
    StartWithHome();
    Want([](Service& home) { home.sPassphrase = "correct horse"; });
    TestSupport::HostLog::SetOnMessage([](const TestSupport::LogMessage& message) {
        if (message.nLine == 295)
            throw std::runtime_error("log full");
    });
    const Simulator::Reply reply =
        AskAgent(pHome, Simulator::MakeDictionary({{"Passphrase", passphrase}}));
    EXPECT_EQ(reply.sError, "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(host.FindNetwork(pHomeKey)->sPassphrase, "correct horse");
    EXPECT_EQ(Apply(), 1);
}

} // namespace Tovra
