#include "tests/simulator/Neighbourhood.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

const std::string sHome = PathOf(MakeWifi("Home"));

Network MakeWps()
{
    Network network = MakeWifi("Home");
    network.vecSecurity = {"psk", "wps"};
    return network;
}

Json Answers(const std::vector<std::pair<std::string, std::string>>& vecFields)
{
    Json fields = Json::object();
    for (const auto& [sName, sValue] : vecFields)
        fields[sName] = Json::array({"s", sValue});
    return fields;
}

Json Passphrase(const std::string& sPassphrase)
{
    return Answers({{"Passphrase", sPassphrase}});
}

std::string GetLateError(const Neighbourhood& neighbourhood)
{
    return neighbourhood.vecLate.empty() ? "no answer" : neighbourhood.vecLate.back().sError;
}

// An agent is registered and has been asked.
std::unique_ptr<Neighbourhood> MakeAsked(const Network& network = MakeWifi("Home"))
{
    auto pNeighbourhood = std::make_unique<Neighbourhood>(std::vector<Network>{network});
    pNeighbourhood->RegisterAgent();
    pNeighbourhood->Connect(PathOf(network));
    return pNeighbourhood;
}

} // namespace

TEST(SimulatedAgent, IsAskedForThePassphraseOfANewNetwork)
{
    const auto pNeighbourhood = MakeAsked();
    const OutgoingCall& question = pNeighbourhood->GetQuestion();
    EXPECT_EQ(question.sDestination, ":1.1");
    EXPECT_EQ(question.sPath, "/agent");
    EXPECT_EQ(question.sMember, "RequestInput");
    EXPECT_EQ(question.arguments.sSignature, "oa{sv}");
    EXPECT_EQ(question.arguments.values[0], sHome);
    EXPECT_EQ(pNeighbourhood->GetRequest(), Json::parse(R"({"Passphrase": ["a{sv}",
        {"Type": ["s", "psk"], "Requirement": ["s", "mandatory"]}]})"));
    EXPECT_EQ(pNeighbourhood->outlet.timeout, std::chrono::seconds(120));
    EXPECT_TRUE(pNeighbourhood->vecLate.empty());
}

TEST(SimulatedAgent, IsOfferedWpsWhereTheAccessPointHasIt)
{
    EXPECT_EQ(MakeAsked(MakeWps())->GetRequest(), Json::parse(R"({
        "Passphrase": ["a{sv}", {"Type": ["s", "psk"], "Requirement": ["s", "mandatory"],
            "Alternates": ["as", ["WPS"]]}],
        "WPS": ["a{sv}", {"Type": ["s", "wpspin"], "Requirement": ["s", "alternate"]}]})"));
}

TEST(SimulatedAgent, OfTheSameConnectionIsAskedElseTheFirst)
{
    Neighbourhood neighbourhood({MakeWifi("Home"), MakeWifi("Other")});
    neighbourhood.RegisterAgent(":1.7");
    neighbourhood.RegisterAgent(":1.1");
    neighbourhood.Connect(sHome, ":1.1");
    EXPECT_EQ(neighbourhood.GetQuestion().sDestination, ":1.1");
    neighbourhood.Connect(PathOf(MakeWifi("Other")), ":1.9");
    EXPECT_EQ(neighbourhood.GetQuestion().sDestination, ":1.7");
}

TEST(SimulatedAgent, IsAskedOneQuestionAtATime)
{
    const Network other = MakeWifi("Other");
    Neighbourhood neighbourhood({MakeWifi("Home"), other});
    neighbourhood.RegisterAgent();
    neighbourhood.Connect(sHome);
    neighbourhood.Connect(PathOf(other));
    EXPECT_EQ(neighbourhood.outlet.vecAsked.size(), 1U);
    neighbourhood.AnswerAgent(Passphrase("correct horse"));
    EXPECT_EQ(neighbourhood.outlet.vecAsked.size(), 2U);
    EXPECT_EQ(neighbourhood.GetQuestion().arguments.values[0], PathOf(other));
}

TEST(SimulatedAgent, IsNotTroubledWithAQuestionThatIsWithdrawnBeforeItsTurn)
{
    const Network other = MakeWifi("Other");
    Neighbourhood neighbourhood({MakeWifi("Home"), other});
    neighbourhood.RegisterAgent();
    neighbourhood.Connect(sHome);
    neighbourhood.Connect(PathOf(other));
    neighbourhood.Disconnect(PathOf(other));
    EXPECT_EQ(GetLateError(neighbourhood), "net.connman.Error.OperationTimeout");
    neighbourhood.AnswerAgent(Passphrase("correct horse"));
    EXPECT_EQ(neighbourhood.outlet.vecAsked.size(), 1U);
}

TEST(SimulatedAgent, CanBeRegisteredOnceAConnection)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    const Arguments path = {"o", Json::array({"/agent"})};
    const auto fnCall = [&](const char* pMember) {
        return neighbourhood.Call("/", "net.connman.Manager", pMember, path)->sError;
    };
    EXPECT_EQ(fnCall("UnregisterAgent"), "net.connman.Error.NotRegistered");
    EXPECT_EQ(fnCall("RegisterAgent"), "");
    EXPECT_EQ(fnCall("RegisterAgent"), "net.connman.Error.AlreadyExists");
    EXPECT_EQ(fnCall("UnregisterAgent"), "");
    EXPECT_EQ(fnCall("RegisterAgent"), "");
}

TEST(SimulatedAgent, ThatIsMissingMakesConnectFail)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    EXPECT_EQ(neighbourhood.Connect(sHome)->sError, "net.connman.Error.NotRegistered");
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
}

TEST(SimulatedAgent, IsForgottenWithItsConnection)
{
    Neighbourhood neighbourhood({MakeWifi("Home")});
    neighbourhood.RegisterAgent();
    neighbourhood.simulation.ConnectionGone(":1.1");
    EXPECT_EQ(neighbourhood.Connect(sHome)->sError, "net.connman.Error.NotRegistered");
}

TEST(SimulatedAgent, ThatGivesTheRightPassphraseGetsConnectedAndIsNotAskedAgain)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->AnswerAgent(Answers({{"Name", "x"}, {"Passphrase", "correct horse"}}));
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(GetLateError(*pNeighbourhood), "");
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "online");

    pNeighbourhood->Disconnect(sHome);
    pNeighbourhood->outlet.Pass(aWhile);
    pNeighbourhood->Connect(sHome);
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "online");
    EXPECT_EQ(pNeighbourhood->outlet.vecAsked.size(), 1U);
}

TEST(SimulatedAgent, IsToldOfAWrongPassphraseAndAnyAnswerButRetryEndsTheFailure)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->AnswerAgent(Passphrase("wrong passphrase"));
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "failure");
    EXPECT_EQ(pNeighbourhood->GetProperty(sHome, "Error"), "invalid-key");
    EXPECT_EQ(pNeighbourhood->GetQuestion().sMember, "ReportError");
    EXPECT_EQ(pNeighbourhood->GetQuestion().arguments.values,
              (Json::array({sHome, "invalid-key"})));
    EXPECT_TRUE(pNeighbourhood->vecLate.empty());

    pNeighbourhood->RefuseAgent("org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "idle");
    EXPECT_EQ(GetLateError(*pNeighbourhood), "net.connman.Error.Failed");
}

TEST(SimulatedAgent, IsToldOfAFailureThatHasPassedAlreadyIfTheScenarioWantsIt)
{
    Scenario scenario = MakeScenario({MakeWifi("Home")});
    scenario.bFailurePasses = true;
    Neighbourhood neighbourhood(scenario);
    neighbourhood.RegisterAgent();
    neighbourhood.Connect(sHome);
    neighbourhood.AnswerAgent(Passphrase("wrong passphrase"));
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.outlet.GetAnnounced(sHome, "State"),
              (std::vector<Json>{"association", "failure", "idle"}));
    EXPECT_EQ(neighbourhood.GetQuestion().sMember, "ReportError");
    neighbourhood.RefuseAgent("org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(neighbourhood.GetState(sHome), "idle");
    EXPECT_EQ(GetLateError(neighbourhood), "net.connman.Error.Failed");
}

TEST(SimulatedAgent, IsAskedAgainWithThePreviousPassphraseAfterRetry)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->AnswerAgent(Passphrase("wrong passphrase"));
    pNeighbourhood->outlet.Pass(aWhile);
    pNeighbourhood->RefuseAgent("net.connman.Agent.Error.Retry");
    EXPECT_EQ(pNeighbourhood->GetQuestion().sMember, "RequestInput");
    EXPECT_EQ(pNeighbourhood->GetRequest()["PreviousPassphrase"], Json::parse(R"(["a{sv}",
        {"Type": ["s", "psk"], "Requirement": ["s", "informational"],
         "Value": ["s", "wrong passphrase"]}])"));
    pNeighbourhood->AnswerAgent(Passphrase("correct horse"));
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(GetLateError(*pNeighbourhood), "");
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "online");
    EXPECT_EQ(pNeighbourhood->GetProperty(sHome, "Error"), nullptr);
}

TEST(SimulatedAgent, IsAskedAgainByTheNextConnectAfterAWrongPassphrase)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->AnswerAgent(Passphrase("wrong passphrase"));
    pNeighbourhood->outlet.Pass(aWhile);
    pNeighbourhood->AnswerAgent(Json::object());
    pNeighbourhood->Connect(sHome);
    EXPECT_TRUE(pNeighbourhood->GetRequest().contains("PreviousPassphrase"));
}

TEST(SimulatedAgent, ThatGivesNoPassphraseOfTheRightFormHasGivenAnInvalidKey)
{
    for (const std::string& sWrong :
         {std::string("1234567"), std::string(65, 'a'), std::string(64, 'g'), std::string()}) {
        const auto pNeighbourhood = MakeAsked();
        pNeighbourhood->AnswerAgent(Passphrase(sWrong));
        EXPECT_EQ(pNeighbourhood->GetProperty(sHome, "Error"), "invalid-key") << sWrong;
        EXPECT_EQ(pNeighbourhood->GetState(sHome), "failure") << sWrong;
        EXPECT_EQ(pNeighbourhood->GetQuestion().sMember, "ReportError") << sWrong;
    }
}

TEST(SimulatedAgent, ThatCancelsAbortsTheConnect)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->RefuseAgent("net.connman.Agent.Error.Canceled");
    EXPECT_EQ(GetLateError(*pNeighbourhood), "net.connman.Error.OperationAborted");
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "idle");
}

TEST(SimulatedAgent, ThatFailsOtherwiseIsAsGoodAsATimeout)
{
    for (const char* pError :
         {"org.freedesktop.DBus.Error.NoReply", "org.freedesktop.DBus.Error.UnknownMethod"}) {
        const auto pNeighbourhood = MakeAsked();
        pNeighbourhood->RefuseAgent(pError);
        EXPECT_EQ(GetLateError(*pNeighbourhood), "net.connman.Error.OperationTimeout");
    }
}

TEST(SimulatedAgent, ThatAnswersWithoutADictionaryHasAnsweredInvalidArguments)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->outlet.vecAsked.back().fnAnswer({});
    EXPECT_EQ(GetLateError(*pNeighbourhood), "net.connman.Error.InvalidArguments");
}

TEST(SimulatedAgent, ThatAnswersWithAnEmptyDictionaryIsAskedAtOnceAgain)
{
    const auto pNeighbourhood = MakeAsked();
    pNeighbourhood->AnswerAgent(Json::object());
    EXPECT_EQ(pNeighbourhood->outlet.vecAsked.size(), 2U);
    EXPECT_TRUE(pNeighbourhood->vecLate.empty());
}

TEST(SimulatedAgent, ThatChoosesThePushButtonIsConnectedWithoutAPassphrase)
{
    const auto pNeighbourhood = MakeAsked(MakeWps());
    pNeighbourhood->AnswerAgent(Answers({{"WPS", ""}}));
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "online");
    EXPECT_EQ(pNeighbourhood->simulation.GetService(sHome).sPassphrase, "correct horse")
        << "the access point tells it";
}

TEST(SimulatedAgent, ThatWantsWpsWaitsUntilTheButtonIsPushedIfTheNetworkDoes)
{
    Network network = MakeWps();
    network.bWaitsForButton = true;
    const auto pNeighbourhood = MakeAsked(network);
    pNeighbourhood->AnswerAgent(Answers({{"WPS", ""}}));
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "association");
    pNeighbourhood->simulation.PushButton(sHome);
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "online");
    EXPECT_FALSE(pNeighbourhood->vecLate.back().IsError());
}

TEST(SimulatedAgent, ThatWantsWpsWaitsInVainForAButtonThatNobodyPushes)
{
    Network network = MakeWps();
    network.bWaitsForButton = true;
    const auto pNeighbourhood = MakeAsked(network);
    pNeighbourhood->AnswerAgent(Answers({{"WPS", ""}}));
    pNeighbourhood->outlet.Pass(std::chrono::seconds(121));
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "failure");
    EXPECT_EQ(GetLateError(*pNeighbourhood), "net.connman.Error.OperationTimeout");
}

TEST(SimulatedAgent, IsReadUpToWpsAndNotFurther)
{
    const auto pNeighbourhood = MakeAsked(MakeWps());
    pNeighbourhood->AnswerAgent(Answers({{"WPS", ""}, {"Passphrase", "short"}}));
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "online");
}

TEST(SimulatedAgent, ThatGivesAPinNeedsTheRightOne)
{
    Network network = MakeWps();
    network.sWpsPin = "12345670";
    const auto pRight = MakeAsked(network);
    pRight->AnswerAgent(Answers({{"WPS", "12345670"}}));
    pRight->outlet.Pass(aWhile);
    EXPECT_EQ(pRight->GetState(sHome), "online");

    const auto pWrong = MakeAsked(network);
    pWrong->AnswerAgent(Answers({{"WPS", "00000000"}}));
    pWrong->outlet.Pass(aWhile);
    EXPECT_EQ(pWrong->GetProperty(sHome, "Error"), "connect-failed");

    const auto pMalformed = MakeAsked(network);
    pMalformed->AnswerAgent(Answers({{"WPS", "1234"}}));
    EXPECT_EQ(pMalformed->GetProperty(sHome, "Error"), "invalid-key");
}

TEST(SimulatedAgent, IsCancelledByADisconnect)
{
    const auto pNeighbourhood = MakeAsked();
    EXPECT_EQ(pNeighbourhood->Disconnect(sHome)->sError, "net.connman.Error.NotConnected");
    EXPECT_EQ(pNeighbourhood->GetQuestion().sMember, "Cancel");
    EXPECT_EQ(GetLateError(*pNeighbourhood), "net.connman.Error.OperationTimeout");
}

TEST(SimulatedAgent, ThatAnswersTooLateChangesNothing)
{
    const auto pNeighbourhood = MakeAsked();
    const Answer fnAnswer = pNeighbourhood->outlet.vecAsked.back().fnAnswer;
    pNeighbourhood->Disconnect(sHome);
    Reply reply;
    reply.arguments = {"a{sv}", Json::array({Passphrase("correct horse")})};
    fnAnswer(reply);
    pNeighbourhood->outlet.Pass(aWhile);
    EXPECT_EQ(pNeighbourhood->GetState(sHome), "idle");
    EXPECT_EQ(pNeighbourhood->vecLate.size(), 1U);
}

TEST(SimulatedAgent, IsNotToldWhenAConnectionFailsByItself)
{
    Network network = MakeWifi("Home");
    network.bSaved = true;
    network.sSavedPassphrase = "an old passphrase";
    Scenario scenario = MakeScenario({network});
    scenario.bAutoConnects = true;
    Neighbourhood neighbourhood(scenario);
    neighbourhood.RegisterAgent();
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "failure");
    EXPECT_TRUE(neighbourhood.outlet.vecAsked.empty());
}

TEST(SimulatedAgent, WithoutOneTheCallerWaitsForTheTimeoutOfAFailedAttempt)
{
    Network network = MakeWifi("Home");
    network.bSaved = true;
    network.sSavedPassphrase = "an old passphrase";
    Neighbourhood neighbourhood({network});
    neighbourhood.Connect(sHome);
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(sHome), "failure");
    EXPECT_TRUE(neighbourhood.vecLate.empty());
    neighbourhood.outlet.Pass(std::chrono::seconds(120));
    EXPECT_EQ(GetLateError(neighbourhood), "net.connman.Error.OperationTimeout");
}

TEST(SimulatedAgent, NamesAHiddenNetworkWhichThenIsListedAndConnected)
{
    Network hidden = MakeWifi("");
    hidden.sName.reset();
    Network cellar = MakeWifi("Cellar");
    cellar.appearance = Appearance::WhenNamed;
    Neighbourhood neighbourhood({hidden, cellar});
    neighbourhood.RegisterAgent();
    EXPECT_EQ(neighbourhood.GetProperty(PathOf(hidden), "Name"), nullptr);
    neighbourhood.Connect(PathOf(hidden));
    const Json request = neighbourhood.GetRequest();
    EXPECT_EQ(request["Name"], Json::parse(R"(["a{sv}", {"Type": ["s", "string"],
        "Requirement": ["s", "mandatory"], "Alternates": ["as", ["SSID"]]}])"));
    EXPECT_TRUE(request.contains("SSID"));
    EXPECT_TRUE(request.contains("Passphrase"));

    neighbourhood.AnswerAgent(Answers({{"Name", "Cellar"}, {"Passphrase", "correct horse"}}));
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(neighbourhood.GetState(PathOf(cellar)), "online");
    EXPECT_EQ(GetLateError(neighbourhood), "");
}

TEST(SimulatedAgent, ThatNamesANetworkWhichIsNotThereMakesConnectFail)
{
    Network hidden = MakeWifi("");
    hidden.sName.reset();
    Neighbourhood neighbourhood({hidden});
    neighbourhood.RegisterAgent();
    neighbourhood.Connect(PathOf(hidden));
    neighbourhood.AnswerAgent(Answers({{"Name", "Nowhere"}}));
    neighbourhood.outlet.Pass(aWhile);
    EXPECT_EQ(GetLateError(neighbourhood), "net.connman.Error.Failed");
}

TEST(SimulatedAgent, ReceivesOnlyTheErrorsTheScenarioAsksFor)
{
    for (const char* pFailure : {"dhcp-failed", "connect-failed", "out-of-range"}) {
        Network network = MakeWifi("Home");
        network.bSaved = true;
        network.sFailure = pFailure;
        const auto pNeighbourhood = MakeAsked(network);
        pNeighbourhood->outlet.Pass(aWhile);
        EXPECT_EQ(pNeighbourhood->GetQuestion().sMember, "ReportError");
        EXPECT_EQ(pNeighbourhood->GetQuestion().arguments.values[1], pFailure);
    }
}

} // namespace Tovra::Simulator
