#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* pPrompt = "corvane> ";

class Shell : public Scene
{
protected:
    void StartPrompt()
    {
        StartConnMan();
        pShell = StartInTerminal({"shell"});
        ASSERT_TRUE(pShell->AwaitOutput("Type --help for the commands, quit to leave"));
        ASSERT_TRUE(pShell->AwaitOutput(pPrompt));
    }

    void ExpectAnswer(const std::string& sTyped, const std::string& sAnswer)
    {
        pShell->Write(sTyped);
        EXPECT_TRUE(pShell->AwaitOutput(sAnswer)) << pShell->GetOutput();
        EXPECT_TRUE(pShell->AwaitOutput(pPrompt)) << pShell->GetOutput();
    }

    void ExpectEnd(const std::string& sTyped, int nExit = 0)
    {
        pShell->Write(sTyped);
        EXPECT_EQ(pShell->AwaitExit(), nExit) << pShell->GetOutput();
    }

    std::unique_ptr<Session> pShell;
};

TEST_F(Shell, OnAPipeEveryLineIsACommand)
{
    StartConnMan();
    const Outcome outcome = Run({"shell"}, "technologies\n\n  show 'My Net-1'\nquit\nnetworks\n");
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.sErrors, "");
    EXPECT_THAT(outcome.sOutput, StartsWith("TYPE      NAME   POWERED  CONNECTED\n"));
    EXPECT_THAT(outcome.sOutput, HasSubstr("Name          My Net-1\n"));
    EXPECT_THAT(outcome.sOutput, testing::Not(HasSubstr("SIGNAL"))) << "after quit";
    EXPECT_THAT(outcome.sOutput, testing::Not(HasSubstr("corvane>")));
}

TEST_F(Shell, GoesOnAfterAnErrorAndEndsAsTheLastCommandDid)
{
    StartConnMan();
    const Outcome outcome = Run({"shell"}, "show nothing\ntechnologies\nfly\n");
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_THAT(outcome.sErrors, StartsWith("corvane: there is no network 'nothing'; there is "));
    EXPECT_THAT(outcome.sErrors, HasSubstr("\ncorvane: "));
    EXPECT_THAT(outcome.sOutput, HasSubstr("wifi      WiFi"));
}

TEST_F(Shell, APassphraseIsTheNextLineOfThePipe)
{
    StartConnMan();
    const Outcome outcome = Run({"shell"}, std::string("connect 'My Net-1' --passphrase-file -\n") +
                                               pPassphrase + "\nshow \"My Net-1\"\n");
    EXPECT_EQ(outcome.nExit, 0) << outcome;
    EXPECT_THAT(outcome.sOutput, StartsWith("Connected, address 192.168.178.41\nName "));
}

TEST_F(Shell, JsonIsForAllCommandsOrForOne)
{
    StartConnMan();
    const Outcome all = Run({"--json", "shell"}, "technologies\nshow nothing\n");
    EXPECT_THAT(all.sOutput, StartsWith("{\"technologies\":["));
    EXPECT_THAT(all.sOutput, HasSubstr("}\n{\"result\":\"error\","));
    const Outcome one = Run({"shell"}, "technologies --json\ntechnologies\n");
    EXPECT_THAT(one.sOutput, StartsWith("{\"technologies\":["));
    EXPECT_THAT(one.sOutput, HasSubstr("}\nTYPE "));
}

TEST_F(Shell, ProgramOptionsHaveNoPlaceInIt)
{
    StartConnMan();
    EXPECT_EQ(Run({"shell"}, "--library x networks\n").nExit, 2);
    EXPECT_EQ(Run({"shell"}, "shell\n").nExit, 2);
}

TEST_F(Shell, ForgetsACredentialThatNobodyAskedFor)
{
    StartConnMan();
    pConnMan->OnCall({"Connect", "", "", ""}, Simulator::Behaviour::StaySilent());
    pShell = Start({"shell"});
    pShell->Write(std::string("connect 'My Net-1' --passphrase-file - --wait 0.3\n") + pPassphrase +
                  "\ntechnologies\n");
    ASSERT_TRUE(pShell->AwaitOutput("WiFi"));
    const std::string sAnswer = AskForPassphrase(PathOf("wifi_home"));
    EXPECT_THAT(sAnswer, testing::Not(HasSubstr(pPassphrase)));
    EXPECT_THAT(sAnswer, HasSubstr("\"Passphrase\""));
}

TEST_F(Shell, AtThePromptCommandsAreTyped)
{
    StartPrompt();
    ExpectAnswer("technologies\n", "WiFi   yes");
    ExpectAnswer("connect 'Café am Eck'\n", "Connected, address 192.168.1.20");
    ExpectAnswer("--help\n", "OPTIONS");
    ExpectEnd("quit\n");
}

TEST_F(Shell, HistoryBringsBackWhatWasTyped)
{
    StartPrompt();
    ExpectAnswer("show 'Café am Eck'\n", "Name          Café am Eck");
    ExpectAnswer("technologies\n", "WiFi   yes");
    ExpectAnswer("\x1b[A\x1b[A\n", "Name          Café am Eck");
    ExpectEnd("exit\n");
}

TEST_F(Shell, TabCompletesCommandsAndNames)
{
    StartPrompt();
    ExpectAnswer("techn\t\n", "WiFi   yes");
    ExpectAnswer("show Gu\t\n", "Name          Guests");
    ExpectAnswer("show My\t\n", "Name          My Net-1");
    ExpectAnswer("power wi\t on\n", "wifi is on.");
    ExpectEnd("quit\n");
}

TEST_F(Shell, CtrlCGivesUpTheLine)
{
    StartPrompt();
    pShell->Write("fly away");
    ASSERT_TRUE(pShell->AwaitOutput("fly away"));
    ExpectAnswer("\x03", "\n");
    ExpectAnswer("technologies\n", "WiFi   yes");
    ExpectEnd("quit\n");
}

TEST_F(Shell, CtrlCEndsACommandAndNotThePrompt)
{
    StartPrompt();
    pShell->Write("watch\n");
    ASSERT_TRUE(pShell->AwaitOutput("+ network 'Wired'"));
    ExpectAnswer("\x03", "\n");
    pConnMan->OnCall({"Scan", "", "", ""}, Simulator::Behaviour::StaySilent());
    pShell->Write("scan\n");
    ASSERT_TRUE(pConnMan->WaitForCall("Scan", deadline));
    ExpectAnswer("\x03", "Interrupted; the scan goes on.");
    ExpectEnd("quit\n", 130);
}

TEST_F(Shell, TheEndOfInputLeavesIt)
{
    StartPrompt();
    ExpectEnd("\x04"); // Ctrl-D
}

TEST_F(Shell, ARequestToEndEndsIt)
{
    StartPrompt();
    pShell->Signal(SIGTERM);
    EXPECT_EQ(pShell->AwaitExit(), 0);
    ASSERT_TRUE(Eventually([&] { return pConnMan->GetAgentCount() == 0; }));
    pShell = Start({"shell"});
    ASSERT_TRUE(Eventually([&] { return pConnMan->GetAgentCount() == 1; }));
    pShell->Signal(SIGTERM);
    EXPECT_EQ(pShell->AwaitExit(), 130);
}

TEST_F(Shell, TheTerminalIsLeftAsItWas)
{
    StartPrompt();
    ExpectAnswer("technologies\n", "WiFi   yes");
    ExpectEnd("quit\n");
    EXPECT_TRUE(pShell->ShowsWhatIsTyped());
}

} // namespace

} // namespace Tovra
