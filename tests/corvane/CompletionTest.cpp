#include "tests/corvane/Scene.h"

#include <filesystem>
#include <sstream>

namespace Tovra
{

namespace
{

class Completion : public Scene
{
protected:
    /** What bash offers for the last of the words. */
    static std::string Complete(const std::string& sWords)
    {
        const std::string sDirectory = std::filesystem::path(CORVANE).parent_path().string();
        Session session(
            {"/bin/bash", "-c",
             "PATH=" + sDirectory + ":$PATH; source " COMPLETION "; COMP_WORDS=(" + sWords +
                 "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _corvane; echo \"${COMPREPLY[*]}\""});
        EXPECT_EQ(session.AwaitExit(), 0) << session.GetErrors();
        return session.GetOutput();
    }
};

TEST_F(Completion, OffersCommandsAndOptions)
{
    EXPECT_EQ(Complete("corvane s"), "show scan set shell\n");
    EXPECT_EQ(Complete("corvane --l"), "--library --log\n");
    EXPECT_EQ(Complete("corvane connect Home --p"), "--passphrase-file\n");
    EXPECT_EQ(Complete("corvane power wifi o"), "on off\n");
    EXPECT_EQ(Complete("corvane --ipc-send = netcfg-s"), "netcfg-static-address-configured\n");
}

TEST_F(Completion, OffersTheNetworksThatThereAre)
{
    StartConnMan();
    EXPECT_EQ(Complete("corvane show My"), "MyNet1726E16D6\n");
}

// Those that it offers are those that there are.
TEST_F(Completion, KnowsEveryCommand)
{
    std::istringstream words(Complete("corvane ''"));
    const Outcome help = Run({"--help"});
    int nCommands = 0;
    for (std::string sWord; words >> sWord && sWord[0] != '-'; ++nCommands)
        EXPECT_THAT(help.sOutput, testing::HasSubstr("\n  " + sWord + " "));
    EXPECT_EQ(nCommands, 10);
}

/** zsh at a terminal, which completes what is typed before a tab. */
class ZshCompletion : public Scene
{
protected:
    ZshCompletion()
    {
        const std::string sDirectory = std::filesystem::path(CORVANE).parent_path().string();
        session.Write("PATH=" + sDirectory + ":$PATH fpath=(" ZSH_COMPLETIONS " $fpath)\n");
        session.Write(
            "tell() { zle -I; print -r \"<$BUFFER>\"; BUFFER= }; zle -N tell; bindkey '^T' tell\n");
        session.Write("autoload -U compinit; compinit -D -u; PS1='re''ady> '\n");
        EXPECT_TRUE(session.AwaitOutput("ready> "));
    }

    void ExpectCompleted(const std::string& sTyped, const std::string& sCompleted)
    {
        session.Write(sTyped + "\t\x14"); // a tab, and it tells the line and clears it
        EXPECT_TRUE(session.AwaitOutput("<" + sCompleted)) << session.GetOutput();
        EXPECT_TRUE(session.AwaitOutput("ready> "));
    }

    Session session{{"/bin/zsh", "-f", "-i"}, Session::Ends::Terminal, {{"TERM", "xterm"}}};
};

TEST_F(ZshCompletion, OffersCommandsAndOptions)
{
    ExpectCompleted("corvane tech", "corvane technologies");
    ExpectCompleted("corvane --lib", "corvane --library");
    ExpectCompleted("corvane connect Home --pass", "corvane connect Home --passphrase-file");
    ExpectCompleted("corvane set Home --name", "corvane set Home --nameserver");
    ExpectCompleted("corvane power wifi of", "corvane power wifi off");
    ExpectCompleted("corvane --ipc-send=netcfg-s",
                    "corvane --ipc-send=netcfg-static-address-configured");
}

TEST_F(ZshCompletion, OffersTheNetworksThatThereAre)
{
    StartConnMan();
    ExpectCompleted("corvane show My", "corvane show MyNet1726E16D6");
}

} // namespace

} // namespace Tovra
