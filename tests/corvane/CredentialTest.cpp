#include "tests/connman/PrivateOpt.h"
#include "tests/corvane/Scene.h"

#include <filesystem>

namespace Tovra
{

namespace
{

using testing::HasSubstr;
using testing::Not;

/** Where a passphrase must never show. */
class Credentials : public Scene
{
protected:
    /** A scenario in which connecting takes as long as the test. */
    void StartSlow()
    {
        Simulator::Scenario scenario = Neighbourhood();
        scenario.timing.association = 2 * deadline;
        StartConnMan(scenario);
    }

    // Of the program and of whatever it has started.
    static std::string ReadProcesses()
    {
        std::string sText;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            const std::string sPath = entry.path().string();
            if (std::isdigit(static_cast<unsigned char>(sPath[6])) == 0)
                continue;
            sText += PrivateOpt::ReadFile(sPath + "/cmdline") + "\n";
            sText += PrivateOpt::ReadFile(sPath + "/environ") + "\n";
        }
        return sText;
    }

    static void ExpectNoSecret(const Session& session)
    {
        EXPECT_THAT(session.GetOutput(), Not(HasSubstr(pPassphrase)));
        EXPECT_THAT(session.GetErrors(), Not(HasSubstr(pPassphrase)));
    }
};

TEST_F(Credentials, ShowInNoProcessAndNoLogWhileConnecting)
{
    StartSlow();
    const auto pSession =
        Start({"--log", "0", "--json", "connect", "My Net-1", "--passphrase-file", "-"});
    pSession->Write(std::string(pPassphrase) + "\n");
    ASSERT_TRUE(AwaitState(PathOf("wifi_home"), "association"));
    ASSERT_TRUE(pSession->AwaitErrors("using passphrase."));
    const std::string sProcesses = ReadProcesses();
    EXPECT_THAT(sProcesses, HasSubstr("passphrase-file")) << "looked at";
    EXPECT_THAT(sProcesses, Not(HasSubstr(pPassphrase)));
    pSession->Signal(SIGINT);
    EXPECT_EQ(pSession->AwaitExit(), 130);
    ExpectNoSecret(*pSession);
}

TEST_F(Credentials, ShowNowhereWhenTheyAreRefusedOrWrong)
{
    StartConnMan();
    for (const std::string sSecret : {"s3cr3t", "s3cr3t but wrong"}) {
        const Outcome outcome =
            Run({"--log", "0", "connect", "My Net-1", "--passphrase-file", "-"}, sSecret + "\n");
        EXPECT_NE(outcome.nExit, 0);
        EXPECT_THAT(outcome.sErrors, HasSubstr("passphrase"));
        EXPECT_THAT(outcome.sOutput + outcome.sErrors, Not(HasSubstr("s3cr3t")));
    }
}

TEST_F(Credentials, AreNotShownAsTheyAreTyped)
{
    StartConnMan();
    const auto pSession = StartInTerminal({"connect", "My Net-1"});
    ASSERT_TRUE(pSession->AwaitOutput("Passphrase (empty: the one that is stored): "));
    pSession->Write(std::string(pPassphrase) + "\n");
    ASSERT_TRUE(pSession->AwaitOutput("Connected, address 192.168.178.41"));
    EXPECT_EQ(pSession->AwaitExit(), 0);
    ExpectNoSecret(*pSession);
}

TEST_F(Credentials, AreNotShownAsTheyAreTypedToStandardInput)
{
    StartConnMan();
    const auto pSession = StartInTerminal({"connect", "My Net-1", "--passphrase-file", "-"});
    ASSERT_TRUE(pSession->AwaitOutput("Passphrase (empty: the one that is stored): "));
    pSession->Write(std::string(pPassphrase) + "\n");
    EXPECT_EQ(pSession->AwaitExit(), 0);
    ExpectNoSecret(*pSession);
}

TEST_F(Credentials, AreNotInTheHistoryOfTheShell)
{
    StartConnMan();
    const auto pSession = StartInTerminal({"shell"});
    ASSERT_TRUE(pSession->AwaitOutput("corvane> "));
    pSession->Write("connect 'My Net-1'\n");
    ASSERT_TRUE(pSession->AwaitOutput("Passphrase (empty: the one that is stored): "));
    pSession->Write(std::string(pPassphrase) + "\n");
    ASSERT_TRUE(pSession->AwaitOutput("Connected, address 192.168.178.41"));
    ASSERT_TRUE(pSession->AwaitOutput("corvane> "));
    pSession->Write("\x1b[A"); // up
    ASSERT_TRUE(pSession->AwaitOutput("connect 'My Net-1'"));
    pSession->Write("\nquit\n");
    EXPECT_EQ(pSession->AwaitExit(), 0);
    ExpectNoSecret(*pSession);
}

} // namespace

} // namespace Tovra
