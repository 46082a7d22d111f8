#include "tests/corvane/Scene.h"

namespace Tovra
{

namespace
{

using testing::HasSubstr;
using testing::Not;

class Terminal : public Scene
{
protected:
    void StartConnected()
    {
        Simulator::Scenario scenario = Neighbourhood();
        scenario.vecServices[1].sState = "ready";
        scenario.vecServices[2].sState = "failure";
        StartConnMan(scenario);
    }

    static std::string RunInTerminal(std::vector<std::string> vecArguments,
                                     std::map<std::string, std::string> mapEnvironment = {})
    {
        const auto pSession = StartInTerminal(std::move(vecArguments), std::move(mapEnvironment));
        EXPECT_EQ(pSession->AwaitExit(), 0);
        return pSession->GetOutput();
    }
};

TEST_F(Terminal, ShowsColours)
{
    StartConnected();
    const std::string sOutput = RunInTerminal({"networks"});
    EXPECT_THAT(sOutput, HasSubstr("\x1b[1mNAME "));
    EXPECT_THAT(sOutput, HasSubstr("\x1b[32mMy Net-1 "));
    EXPECT_THAT(sOutput, HasSubstr("\x1b[31mGuests "));
    EXPECT_THAT(RunInTerminal({"technologies"}), HasSubstr("\x1b[1mTYPE "));
}

TEST_F(Terminal, ShowsNoColoursWhereNoneAreWanted)
{
    StartConnected();
    EXPECT_THAT(RunInTerminal({"networks"}, {{"NO_COLOR", "1"}}), Not(HasSubstr("\x1b[3")));
    EXPECT_THAT(RunInTerminal({"networks"}, {{"NO_COLOR", ""}}), HasSubstr("\x1b[32m"))
        << "an empty NO_COLOR is none";
    EXPECT_THAT(RunInTerminal({"networks", "--json"}), Not(HasSubstr("\x1b[")));
    EXPECT_THAT(Run({"networks"}).sOutput, Not(HasSubstr("\x1b[")));
}

TEST_F(Terminal, ShowsProgressInPlace)
{
    StartConnMan();
    const std::string sOutput = RunInTerminal({"connect", "Café am Eck"});
    EXPECT_EQ(sOutput, "\r\x1b[KConnecting \r\x1b[KAsked to connect \r\x1b[K"
                       "Connected, address 192.168.1.20\r\n");
}

TEST_F(Terminal, AWrongPassphraseAndThenTheRightOne)
{
    StartConnMan();
    const auto pWrong = StartInTerminal({"connect", "My Net-1"});
    ASSERT_TRUE(pWrong->AwaitOutput("Passphrase (empty: the one that is stored): "));
    EXPECT_FALSE(pWrong->ShowsWhatIsTyped());
    pWrong->Write("orange pie 7\n");
    EXPECT_TRUE(pWrong->AwaitOutput("\r\x1b[KThe connection failed."));
    EXPECT_EQ(pWrong->AwaitExit(), 4);
    EXPECT_TRUE(pWrong->ShowsWhatIsTyped());

    const auto pRight = StartInTerminal({"connect", "My Net-1"});
    ASSERT_TRUE(pRight->AwaitOutput("Passphrase (empty: the one that is stored): "));
    pRight->Write(std::string(pPassphrase) + "\n");
    EXPECT_TRUE(pRight->AwaitOutput("\r\x1b[KConnected, address 192.168.178.41\r\n"));
    EXPECT_EQ(pRight->AwaitExit(), 0);
}

TEST_F(Terminal, APassphraseThatIsTooShortIsRefusedAtOnce)
{
    StartConnMan();
    const auto pSession = StartInTerminal({"connect", "My Net-1"});
    ASSERT_TRUE(pSession->AwaitOutput("is stored): "));
    pSession->Write("short\n");
    EXPECT_TRUE(pSession->AwaitOutput("corvane: the passphrase has 5 characters; "));
    EXPECT_EQ(pSession->AwaitExit(), 2);
    EXPECT_EQ(TakeCommands(), std::vector<std::string>());
}

} // namespace

} // namespace Tovra
