#include "tests/connman/PrivateOpt.h"
#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* pFailed =
    "The connection failed. The cause is not told; likely ones are a wrong passphrase and a "
    "network out of reach.\n";

class Connecting : public Scene
{
protected:
    static Outcome Connect(const std::string& sPassphrase, std::vector<std::string> vecMore = {})
    {
        std::vector<std::string> vecArguments = {"connect", "My Net-1", "--passphrase-file", "-"};
        vecArguments.insert(vecArguments.end(), vecMore.begin(), vecMore.end());
        return Run(vecArguments, sPassphrase + "\n");
    }

    const std::string sHome = PathOf("wifi_home");
};

TEST_F(Connecting, AWrongPassphraseFailsAndTheRightOneConnects)
{
    StartConnMan();
    const Outcome wrong = Connect("orange pie 7");
    EXPECT_EQ(wrong.nExit, 4);
    EXPECT_EQ(wrong.sOutput, "");
    EXPECT_EQ(wrong.sErrors, std::string("Connecting\nAsked to connect\n"
                                         "The credential was taken; connecting\n") +
                                 pFailed);

    const Outcome right = Connect(pPassphrase);
    EXPECT_EQ(right.nExit, 0);
    EXPECT_EQ(right.sOutput, "Connected, address 192.168.178.41\n");
    EXPECT_EQ(right.sErrors,
              "Connecting\nAsked to connect\nThe credential was taken; connecting\n");
    EXPECT_THAT(TakeCommands(), ElementsAre("wifi_home Connect", "wifi_home Connect"));
}

TEST_F(Connecting, JsonTellsWhatIsKnownApart)
{
    StartConnMan();
    const std::vector<std::string> vecConnect = {"connect", "My Net-1", "--passphrase-file", "-"};
    const Json failed = RunForJson(vecConnect, 4, "orange pie 7");
    EXPECT_EQ(failed.at("result"), "failed");
    EXPECT_EQ(failed.at("credential_taken"), true);
    EXPECT_EQ(failed.at("network").at("failed"), true);

    const Json done = RunForJson(vecConnect, 0, pPassphrase);
    EXPECT_EQ(done.at("command"), "connect");
    EXPECT_EQ(done.at("result"), "done");
    EXPECT_EQ(done.at("applied"), true);
    EXPECT_EQ(done.at("credential_taken"), true);
    EXPECT_EQ(done.at("network").at("connected"), true);
    EXPECT_EQ(done.at("network").at("failed"), false);
    EXPECT_EQ(done.at("text"), "Connected, address 192.168.178.41");

    const Json again = RunForJson(vecConnect, 0, pPassphrase);
    EXPECT_EQ(again.at("applied"), false);
    EXPECT_EQ(again.at("text"), "Connected already.");
}

TEST_F(Connecting, AnOpenNetworkTakesNothing)
{
    StartConnMan();
    const Outcome outcome = Run({"connect", "Café am Eck"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sOutput, "Connected, address 192.168.1.20\n");
    EXPECT_EQ(outcome.sErrors, "Connecting\nAsked to connect\n");
}

TEST_F(Connecting, ACableTakesNothing)
{
    StartConnMan();
    EXPECT_EQ(Run({"connect", "Wired"}).sOutput, "Connected, address 10.20.0.15\n");
}

TEST_F(Connecting, WpsTakesThePushButton)
{
    StartConnMan();
    const Outcome outcome = Run({"connect", "My Net-1", "--wps"});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sErrors, "Connecting\n"
                               "Asked to connect; press the access point's button\n"
                               "The credential was taken; connecting\n");
}

TEST_F(Connecting, ThePassphraseIsTheFirstLineOfAFile)
{
    StartConnMan();
    const std::string sFile = MakeFile(std::string(pPassphrase) + "\r\nmore\n");
    EXPECT_EQ(Run({"connect", "My Net-1", "--passphrase-file", sFile}).nExit, 0);
}

TEST_F(Connecting, AnEmptyPassphraseStandsForTheStoredOne)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].bSaved = true;
    StartConnMan(scenario);
    const Outcome outcome = Connect("");
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sErrors, "Connecting\nAsked to connect\n");
}

TEST_F(Connecting, AStoredPassphraseThatWorksLeavesTheGivenOneUnasked)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].bSaved = true;
    StartConnMan(scenario);
    const Json done = RunForJson({"connect", "My Net-1", "--passphrase-file", "-"}, 0, "not asked");
    EXPECT_EQ(done.at("credential_taken"), false);
    EXPECT_EQ(done.at("network").at("connected"), true);
}

TEST_F(Connecting, AStoredPassphraseThatIsWrongIsToldApart)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].bSaved = true;
    scenario.vecServices[1].sSavedPassphrase = "as it was once";
    StartConnMan(scenario);
    const Outcome outcome = Connect(pPassphrase);
    EXPECT_EQ(outcome.nExit, 4);
    EXPECT_THAT(outcome.sErrors, HasSubstr("the credential was not asked for"));
}

TEST_F(Connecting, AFailureFromEarlierIsNoneOfThisAttempt)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sState = "failure";
    scenario.vecServices[1].sError = "invalid-key";
    StartConnMan(scenario);
    EXPECT_EQ(Connect(pPassphrase).nExit, 0);
}

TEST_F(Connecting, ANetworkThatGivesNoAddressFails)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[3].sFailure = "dhcp-failed";
    StartConnMan(scenario);
    const Outcome outcome = Run({"connect", "Café am Eck"});
    EXPECT_EQ(outcome.nExit, 4);
    EXPECT_THAT(outcome.sErrors, HasSubstr("and one that gives no address.\n"));
}

TEST_F(Connecting, TheTimeToWaitEndsIt)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.timing.association = deadline;
    StartConnMan(scenario);
    const Outcome taken = Connect(pPassphrase, {"--wait", "0.7"});
    EXPECT_EQ(taken.nExit, 5);
    EXPECT_THAT(taken.sErrors,
                HasSubstr("The credential was taken, but the network is not connected yet; a wrong "
                          "passphrase may show as no more than this.\n"));

    const Json open = RunForJson({"connect", "Café am Eck", "--wait", "0.7"}, 5);
    EXPECT_EQ(open.at("result"), "timed-out");
    EXPECT_EQ(open.at("text"), "The network is not connected yet.");
}

TEST_F(Connecting, AButtonThatIsNotPushedIsNoWrongPassphrase)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].bWaitsForButton = true;
    StartConnMan(scenario);
    const Json waiting = RunForJson({"connect", "My Net-1", "--wps", "--wait", "0.7"}, 5);
    EXPECT_EQ(waiting.at("text"),
              "The credential was taken, but the network is not connected yet.");
}

TEST_F(Connecting, ACredentialThatNobodyAsksForIsSaidToBeSo)
{
    StartConnMan();
    pConnMan->OnCall({"Connect", "", "", ""}, Simulator::Behaviour::StaySilent());
    const Outcome outcome = Connect(pPassphrase, {"--wait", "0.5"});
    EXPECT_EQ(outcome.nExit, 5);
    EXPECT_THAT(outcome.sErrors,
                HasSubstr("not connected yet, and no credential was asked for.\n"));
}

TEST_F(Connecting, ANetworkThatComesAndGoesMeanwhileDoesNotCostTheCredential)
{
    Simulator::Scenario scenario = Neighbourhood();
    StartConnMan(scenario);
    pConnMan->OnCall({"Connect", "", "", ""}, Simulator::Behaviour::StaySilent());
    const auto pSession = Start({"connect", "My Net-1", "--passphrase-file", "-"});
    pSession->Write(std::string(pPassphrase) + "\n");
    ASSERT_TRUE(pConnMan->WaitForCall("Connect", deadline));
    pConnMan->SetState(PathOf("wifi_guests"), "ready"); // makes the plug-in tell of changes
    pConnMan->SetState(PathOf("wifi_guests"), "idle");
    pConnMan->RemoveService(PathOf("wifi_cafe"));
    // Answered by now, and so read by the host before the question comes.
    ASSERT_TRUE(Eventually([&] { return pConnMan->GetCalls("GetServices").size() >= 2; }));
    const std::string sAnswer = AskForPassphrase(PathOf("wifi_home"));
    EXPECT_THAT(sAnswer, HasSubstr(pPassphrase));
    EXPECT_TRUE(pSession->AwaitErrors("The credential was taken; connecting\n"));
}

TEST_F(Connecting, AnotherNetworkIsLeftAlone)
{
    StartConnMan(WithAnotherCable());
    EXPECT_EQ(Run({"connect", "Café am Eck"}).nExit, 0);
    EXPECT_THAT(TakeCommands(), ElementsAre("wifi_cafe Connect"));
}

TEST_F(Connecting, SettingsOfOtherWifiNetworksAreRemovedAndTheProgramRuns)
{
    PrivateOpt::StoreSettings("wifi_home");
    PrivateOpt::StoreSettings("wifi_old");
    StartConnMan();
    const auto pWatch = Start({"watch"});
    ASSERT_TRUE(pWatch->AwaitOutput("'Wired'"));
    EXPECT_EQ(Connect(pPassphrase).nExit, 0);
    EXPECT_TRUE(pWatch->AwaitOutput("! event netcfg-dhcp-address-acquired\n"));
    EXPECT_THAT(PrivateOpt::GetStored(), ElementsAre("wifi_home"));
}

// What is refused before anything is sent.
class ConnectRefusal : public Connecting
{
protected:
    void ExpectRefused(const Outcome& outcome, const std::string& sReason)
    {
        EXPECT_EQ(outcome.nExit, 2) << outcome;
        EXPECT_EQ(outcome.sErrors, "corvane: " + sReason + "\n");
        EXPECT_THAT(TakeCommands(), IsEmpty());
    }
};

TEST_F(ConnectRefusal, APassphraseOfTheWrongLengthIsRefusedBeforeAnythingIsSent)
{
    StartConnMan();
    const std::string sTakes = "; this network takes 8 to 63 characters or 64 hexadecimal digits";
    ExpectRefused(Connect("seven 7"), "the passphrase has 7 characters" + sTakes);
    ExpectRefused(Connect(std::string(64, 'x')), "the passphrase has 64 characters" + sTakes);
    ExpectRefused(Connect(std::string(65, 'a')), "the passphrase has 65 characters" + sTakes);
    EXPECT_EQ(Connect(std::string(64, 'A')).nExit, 4) << "sent, and wrong";
    EXPECT_EQ(Connect(std::string(63, 'x')).nExit, 4) << "sent, and wrong";
}

TEST_F(ConnectRefusal, APassphraseHasToComeFromSomewhere)
{
    StartConnMan();
    ExpectRefused(Run({"connect", "My Net-1"}),
                  "this network takes a passphrase; give --passphrase-file FILE (- for standard "
                  "input) or --wps");
    ExpectRefused(Run({"connect", "My Net-1", "--passphrase-file", "/opt/none"}),
                  "cannot read the passphrase from /opt/none: No such file or directory");
    ExpectRefused(Run({"connect", "My Net-1", "--passphrase-file", "/opt"}),
                  "cannot read the passphrase from /opt: Is a directory");
}

TEST_F(ConnectRefusal, WhatTheNetworkDoesNotTakeIsRefused)
{
    StartConnMan();
    ExpectRefused(Run({"connect", "Café am Eck", "--passphrase-file", "-"}, "12345678"),
                  "this network takes no passphrase; connect it without --passphrase-file");
    ExpectRefused(Run({"connect", "Café am Eck", "--wps"}),
                  "this network needs no WPS; connect it without --wps");
    ExpectRefused(Run({"connect", "Guests", "--wps"}),
                  "this network offers no WPS; give --passphrase-file FILE (- for standard input), "
                  "or the passphrase when asked for it");
}

} // namespace

} // namespace Tovra
