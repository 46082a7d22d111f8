#include "tests/connman/PrivateOpt.h"
#include "tests/corvane/Scene.h"
#include "tests/support/PrivateBus.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace Tovra
{

namespace
{

using testing::HasSubstr;

constexpr const char* pCtrlC = "\x03";
constexpr std::chrono::seconds soon{5}; // also under a sanitizer, on a machine that is busy

class Interrupts : public Scene
{
protected:
    static void ExpectEnd(Session& session, int nExit)
    {
        session.Write(pCtrlC);
        EXPECT_EQ(session.AwaitExit(soon), nExit) << session.GetOutput();
    }
};

TEST_F(Interrupts, EndTheWaitForConnMan)
{
    const auto pSession = StartInTerminal({"networks"});
    ASSERT_TRUE(pSession->AwaitOutput("Waiting for the network daemon's lists"));
    ExpectEnd(*pSession, 130);
    EXPECT_THAT(pSession->GetOutput(), HasSubstr("corvane: interrupted\r\n"));
}

TEST_F(Interrupts, EndTheLoadingOfThePlugInWhileConnManIsSilent)
{
    StartConnMan();
    pConnMan->OnCall({"RegisterAgent", "", "", ""}, Simulator::Behaviour::StaySilent());
    const auto pSession = StartInTerminal({"networks"});
    ASSERT_TRUE(pConnMan->WaitForCall("RegisterAgent", deadline));
    ExpectEnd(*pSession, 130);
}

TEST_F(Interrupts, EndAScan)
{
    StartConnMan();
    pConnMan->OnCall({"Scan", "", "", ""}, Simulator::Behaviour::StaySilent());
    const auto pSession = StartInTerminal({"scan"});
    ASSERT_TRUE(pConnMan->WaitForCall("Scan", deadline));
    ExpectEnd(*pSession, 130);
    EXPECT_THAT(pSession->GetOutput(), HasSubstr("Interrupted; the scan goes on.\r\n"));
}

TEST_F(Interrupts, EndAConnect)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.timing.association = 2 * deadline;
    StartConnMan(scenario);
    const auto pSession = StartInTerminal({"connect", "Café am Eck"});
    ASSERT_TRUE(AwaitState(PathOf("wifi_cafe"), "association"));
    ExpectEnd(*pSession, 130);
    EXPECT_THAT(pSession->GetOutput(),
                HasSubstr("Interrupted; the network daemon may go on connecting.\r\n"));
}

TEST_F(Interrupts, EndChanges)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[0].sState = "online";
    StartConnMan(scenario);
    for (const char* pMember : {"SetProperty", "Disconnect"})
        pConnMan->OnCall({pMember, "", "", ""}, Simulator::Behaviour::StaySilent());
    const std::vector<std::vector<std::string>> vecCommands = {
        {"power", "wifi", "off"},
        {"disconnect", "Wired"},
        {"set", "Wired", "--address", "10.0.0.2", "--netmask", "255.0.0.0", "--gateway",
         "10.0.0.1"}};
    for (const auto& vecCommand : vecCommands) {
        pConnMan->ClearCalls();
        const auto pSession = StartInTerminal(vecCommand);
        ASSERT_TRUE(pConnMan->WaitForCall(
            [](const auto& call) {
                return call.sMember == "SetProperty" || call.sMember == "Disconnect";
            },
            deadline));
        ExpectEnd(*pSession, 130);
    }
}

TEST_F(Interrupts, EndThePassphrasePromptAndTheTerminalShowsAgainWhatIsTyped)
{
    StartConnMan();
    const auto pSession = StartInTerminal({"connect", "My Net-1"});
    ASSERT_TRUE(pSession->AwaitOutput("is stored): "));
    EXPECT_FALSE(pSession->ShowsWhatIsTyped());
    ExpectEnd(*pSession, 130);
    EXPECT_TRUE(pSession->ShowsWhatIsTyped());
    EXPECT_EQ(TakeCommands(), std::vector<std::string>());
}

TEST_F(Interrupts, EndTheWaitForAPassphraseOnAPipe)
{
    StartConnMan();
    const auto pSession = Start({"connect", "My Net-1", "--passphrase-file", "-"});
    ASSERT_TRUE(pConnMan->WaitForCall("GetTechnologies", deadline));
    pSession->Signal(SIGINT);
    EXPECT_EQ(pSession->AwaitExit(soon), 130);
}

TEST_F(Interrupts, EndWatching)
{
    StartConnMan();
    const auto pSession = StartInTerminal({"watch"});
    ASSERT_TRUE(pSession->AwaitOutput("'Wired'"));
    ExpectEnd(*pSession, 0);
    EXPECT_TRUE(std::filesystem::is_empty(GetEventDirectory()));
}

TEST_F(Interrupts, EndWatchingOnceTheBusIsGone)
{
    StartConnMan();
    // When a bus goes away, libdbus takes its own locks in another order than otherwise.
    const auto pSession =
        StartInTerminal({"watch"}, {{"TSAN_OPTIONS", "detect_deadlocks=0:atexit_sleep_ms=0"}});
    ASSERT_TRUE(pSession->AwaitOutput("'Wired'"));
    pConnMan.reset();
    TestSupport::GetSystemBus().Stop();
    ExpectEnd(*pSession, 0);
}

TEST_F(Interrupts, RequestsToEndDoTheSame)
{
    StartConnMan();
    for (const int nSignal : {SIGTERM, SIGHUP}) {
        const auto pSession = Start({"watch"});
        ASSERT_TRUE(pSession->AwaitOutput("'Wired'"));
        pSession->Signal(nSignal);
        EXPECT_EQ(pSession->AwaitExit(soon), 0);
    }
}

// While the plug-in waits for its command the signal is ignored, and its thread cannot be stopped.
TEST_F(Interrupts, EndWatchingWhileThePlugInsCommandRuns)
{
    const char* const pGate = "/opt/gate";
    ASSERT_EQ(mkfifo(pGate, 0600), 0);
    PrivateOpt::InstallHostCommand("trap '' INT HUP; exec 9<>/opt/gate\n"
                                   "echo >/opt/started; read line <&9\n");
    Simulator::Scenario scenario = Neighbourhood();
    StartConnMan(scenario);
    const auto pSession = StartInTerminal({"watch"});
    ASSERT_TRUE(pSession->AwaitOutput("'Wired'"));
    pConnMan->SetState(PathOf("wifi_home"), "ready");
    ASSERT_TRUE(Eventually([] { return std::filesystem::exists("/opt/started"); }));
    ExpectEnd(*pSession, 0);
    const int nGate = open(pGate, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(write(nGate, "\n", 1), 1) << "the command has ended before";
    close(nGate);
}

} // namespace

} // namespace Tovra
