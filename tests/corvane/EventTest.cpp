#include "tests/connman/PrivateOpt.h"
#include "tests/corvane/Scene.h"

#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tovra
{

namespace
{

using testing::HasSubstr;
using testing::Not;

constexpr const char* pDhcp = "--ipc-send=netcfg-dhcp-address-acquired";
constexpr const char* pShownDhcp = "! event netcfg-dhcp-address-acquired\n";

class Events : public Scene
{
protected:
    static std::unique_ptr<Session> StartWatching()
    {
        auto pWatch = Start({"watch"});
        EXPECT_TRUE(pWatch->AwaitOutput("Watching; Ctrl-C ends.\n"));
        return pWatch;
    }

    static void ExpectNobodyTold()
    {
        const Outcome outcome = Run({pDhcp});
        EXPECT_EQ(outcome.nExit, 7);
        EXPECT_EQ(outcome.sErrors, "corvane: no corvane of this user runs that could be told\n");
    }

    static mode_t GetMode(const std::string& sPath)
    {
        struct stat status = {};
        EXPECT_EQ(stat(sPath.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, geteuid());
        return status.st_mode & 0777u;
    }
};

TEST_F(Events, WithNobodyRunningTheStatusSaysSo)
{
    ExpectNobodyTold();
    EXPECT_EQ(RunForJson({pDhcp}, 7).at("result"), "error");
}

TEST_F(Events, OneThatRunsIsTold)
{
    const auto pWatch = StartWatching();
    for (const char* pEvent : {"netcfg-dhcp-address-acquired", "netcfg-static-address-configured",
                               "netcfg-autoip-address-acquired"}) {
        const Outcome outcome = Run({std::string("--ipc-send=") + pEvent});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.sOutput + outcome.sErrors, "");
        EXPECT_TRUE(pWatch->AwaitOutput(std::string("! event ") + pEvent + "\n"));
    }
}

TEST_F(Events, TwoThatRunAreBothTold)
{
    const auto pFirst = StartWatching();
    const auto pSecond = StartWatching();
    EXPECT_EQ(Run({pDhcp}).nExit, 0);
    EXPECT_TRUE(pFirst->AwaitOutput(pShownDhcp));
    EXPECT_TRUE(pSecond->AwaitOutput(pShownDhcp));
}

TEST_F(Events, UnknownOnesAreAnsweredWithThoseThereAre)
{
    const auto pWatch = StartWatching();
    for (const std::string sEvent : {"netcfg", "netcfg-dhcp-address-acquired "}) {
        const Outcome outcome = Run({"--ipc-send=" + sEvent});
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.sErrors,
                  "corvane: unknown event '" + sEvent +
                      "'; the events are netcfg-dhcp-address-acquired, "
                      "netcfg-static-address-configured, netcfg-autoip-address-acquired\n");
    }
    EXPECT_EQ(Run({"--ipc-send="}).nExit, 2);
    pWatch->Signal(SIGINT);
    EXPECT_EQ(pWatch->AwaitExit(), 0);
    EXPECT_THAT(pWatch->GetOutput(), Not(HasSubstr("! event")));
}

TEST_F(Events, AreSentAlone)
{
    const Outcome outcome = Run({pDhcp, "networks"});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.sErrors, "corvane: --ipc-send stands alone; see --help\n");
}

// The dynamic linker tells of every library that is loaded.
TEST_F(Events, AreSentWithoutThePlugIn)
{
    const auto pWatch = StartWatching();
    const std::map<std::string, std::string> mapTelling = {{"LD_DEBUG", "files"}};
    const auto pSending = Start({pDhcp}, Session::Ends::Pipes, mapTelling);
    EXPECT_EQ(pSending->AwaitExit(), 0);
    EXPECT_THAT(pSending->GetErrors(), HasSubstr("libfundra"));
    EXPECT_THAT(pSending->GetErrors(), Not(HasSubstr("libcorvane_KX22")));

    const auto pReading = Start({"networks", "--wait", "0"}, Session::Ends::Pipes, mapTelling);
    pReading->AwaitExit();
    EXPECT_THAT(pReading->GetErrors(), HasSubstr("libcorvane_KX22"));
}

TEST_F(Events, ReachOnlyTheUserThemselves)
{
    const auto pWatch = StartWatching();
    EXPECT_EQ(GetMode(GetEventDirectory()), 0700u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(GetEventDirectory()), {}), 1);
}

TEST_F(Events, ADirectoryThatOthersCanEnterIsRefused)
{
    std::filesystem::create_directory(GetEventDirectory());
    ASSERT_EQ(chmod(GetEventDirectory().c_str(), 0755), 0);
    for (const char* pArgument : {"watch", pDhcp}) {
        const Outcome outcome = Run({pArgument});
        EXPECT_EQ(outcome.nExit, 1);
        EXPECT_EQ(outcome.sErrors, "corvane: cannot use " + GetEventDirectory() +
                                       ": it must be a directory that only you can enter\n");
    }
}

TEST_F(Events, ALinkToElsewhereIsRefused)
{
    std::filesystem::create_directory("/opt/elsewhere");
    std::filesystem::create_symlink("/opt/elsewhere", GetEventDirectory());
    EXPECT_EQ(Run({"watch"}).nExit, 1);
    EXPECT_EQ(Run({pDhcp}).nExit, 1);
    EXPECT_TRUE(std::filesystem::is_empty("/opt/elsewhere"));
}

TEST_F(Events, WhoeverWasKilledIsNotCountedAndTidiedUp)
{
    {
        const auto pWatch = StartWatching();
        pWatch->Signal(SIGKILL);
        pWatch->AwaitExit();
    }
    EXPECT_FALSE(std::filesystem::is_empty(GetEventDirectory()));
    ExpectNobodyTold();
    EXPECT_TRUE(std::filesystem::is_empty(GetEventDirectory()));
}

// A host that does not read must not hold up the plug-in, which runs the command.
TEST_F(Events, ForSomebodyWhoDoesNotReadNobodyWaits)
{
    std::filesystem::create_directory(GetEventDirectory());
    ASSERT_EQ(chmod(GetEventDirectory().c_str(), 0700), 0);
    const int nDeaf = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, (GetEventDirectory() + "/1").c_str());
    const auto* const pAddress = reinterpret_cast<const sockaddr*>(&address);
    ASSERT_EQ(bind(nDeaf, pAddress, sizeof(address)), 0);
    const int nFilling = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    while (sendto(nFilling, "x", 1, 0, pAddress, sizeof(address)) == 1) {
    }
    ExpectNobodyTold();
    close(nFilling);
    close(nDeaf);
}

TEST_F(Events, OneOfTwoThatReadsIsEnough)
{
    const auto pWatch = StartWatching();
    PrivateOpt::WriteFile(GetEventDirectory() + "/1", "not a socket");
    EXPECT_EQ(Run({pDhcp}).nExit, 0);
    EXPECT_TRUE(pWatch->AwaitOutput(pShownDhcp));
}

} // namespace

} // namespace Tovra
