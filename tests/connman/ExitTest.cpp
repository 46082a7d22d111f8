#include "tests/connman/DaemonData.h"
#include "tests/support/Counts.h"
#include "tests/support/PrivateBus.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/stat.h>

namespace Tovra
{

using ListData::Service;
using Simulator::Behaviour;

namespace
{

using Clock = std::chrono::steady_clock;

/** How a process ended. */
struct Ending {
    int nStatus = -1;
    std::string sOutput;                               ///< both of its streams
    Clock::duration duration = Clock::duration::max(); ///< from its word to its end
};

/** Runs tests/connman/ExitingProgram.cpp to its end. */
Ending RunToItsEnd(const std::string& sWhat)
{
    const std::string sCommand = "exec '" CORVANE_EXITING_PROGRAM "' " + sWhat + " 2>&1";
    FILE* pOutput = popen(sCommand.c_str(), "r");
    if (!pOutput)
        throw std::runtime_error("cannot run the exiting program");
    Ending ending;
    Clock::time_point begin = Clock::time_point::min();
    std::array<char, 1024> line = {};
    while (std::fgets(line.data(), line.size(), pOutput)) {
        if (line.data() == std::string("exiting\n"))
            begin = Clock::now();
        ending.sOutput += line.data();
    }
    ending.nStatus = pclose(pOutput);
    if (begin != Clock::time_point::min())
        ending.duration = Clock::now() - begin;
    return ending;
}

} // namespace

/** Processes that end beside a daemon that never stops telling them things. */
class ProcessExit : public testing::Test
{
protected:
    ProcessExit()
    {
        MakeCommand();
        const std::vector<Service> vecServices{{"/net/connected", "ready", "10.0.0.1"},
                                               {"/net/idle"}};
        // The signals and the answers agree, so that the host's command runs but once a process.
        daemon.OnCall({"GetServices", "", "", ""},
                      Behaviour::AnswerWith(DaemonData::Services(vecServices)));
        daemon.AddTechnology({});
        for (const Simulator::Signal& signal :
             {DaemonData::ServicesChanged(vecServices), DaemonData::TechnologyAdded(),
              DaemonData::StrengthChanged("/net/idle", 50),
              DaemonData::ServicePropertyChanged("/net/idle", "State", "idle"),
              DaemonData::ServicePropertyChanged("/net/idle", "Name", "Name")})
            daemon.EmitStorm(signal, 10'000'000, std::chrono::milliseconds(2));
    }

    ~ProcessExit() override { daemon.Stop(); }

    static void ExpectGoodEnding(const std::string& sWhat, const std::string& sSaid = "exiting\n")
    {
        const Ending ending = RunToItsEnd(sWhat);
        EXPECT_EQ(ending.nStatus, 0) << sWhat << ": " << ending.sOutput;
        EXPECT_NE(ending.sOutput.find(sSaid), std::string::npos) << sWhat << ": " << ending.sOutput;
        EXPECT_EQ(ending.sOutput.find("Sanitizer"), std::string::npos) << ending.sOutput;
        EXPECT_LT(ending.duration, std::chrono::seconds(2)) << sWhat << ": " << ending.sOutput;
    }

    Simulator::Daemon daemon{{}, TestSupport::GetSystemBus().GetAddress()};

private:
    /** The host's command; it stops for the process that is to end meanwhile. */
    static void MakeCommand()
    {
        std::filesystem::create_directories("/opt/tovra/bin");
        std::ofstream("/opt/tovra/bin/corvane")
            << "#!/bin/sh\n"
               "[ \"$WAIT_FOR_RELEASE\" ] || exit 0\n"
               "timeout 60 sh -c 'echo entered >/opt/entered; cat /opt/release' >/dev/null\n";
        std::filesystem::permissions("/opt/tovra/bin/corvane", std::filesystem::perms::owner_all);
        mkfifo("/opt/entered", 0600);
        mkfifo("/opt/release", 0600);
    }
};

TEST_F(ProcessExit, BeforeDispatchingHasBegunIsClean)
{
    ExpectGoodEnding("idle");
}

TEST_F(ProcessExit, RightAfterDispatchingHasBegunIsClean)
{
    ExpectGoodEnding("started");
}

TEST_F(ProcessExit, WithoutABusIsClean)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    ExpectGoodEnding("idle");
    ExpectGoodEnding("started");
    TestSupport::GetSystemBus().BecomeSystemBus();
}

TEST_F(ProcessExit, WithoutADaemonIsClean)
{
    daemon.Leave();
    ExpectGoodEnding("idle");
    ExpectGoodEnding("started");
}

TEST_F(ProcessExit, WhileACallbackRunsLetsItUseTheClientToItsEnd)
{
    ExpectGoodEnding("callback", "the callback had its lists\n");
}

TEST_F(ProcessExit, WhileTheHostsCommandRunsWaitsForIt)
{
    ExpectGoodEnding("command");
}

TEST_F(ProcessExit, ManyTimesUnderAStormIsCleanAndQuick)
{
    constexpr int nFull = 500;
    const int nExits = TestSupport::ReduceCount(nFull, 60, 30);
    const std::array<const char*, 10> sequence = {"busy", "busy",    "callback", "busy",    "busy",
                                                  "busy", "command", "busy",     "started", "idle"};
    int nRan = 0;
    for (; nRan < nExits && !HasFailure(); ++nRan)
        ExpectGoodEnding(sequence[static_cast<std::size_t>(nRan) % sequence.size()]);
    TestSupport::PrintCount("exits", nRan, nFull);
}

} // namespace Tovra
