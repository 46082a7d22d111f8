#include "tests/connman/PrivateOpt.h"
#include "tests/corvane/Scene.h"
#include "tests/support/PrivateBus.h"

#include <filesystem>

namespace Tovra
{

namespace
{

using testing::HasSubstr;

class Trouble : public Scene
{
};

constexpr const char* pToldNothing =
    "corvane: the network daemon told of no technology within 0.2 s; is there the system bus, "
    "does the daemon run, and may this user talk to it?\n";

TEST_F(Trouble, WithoutConnManItSaysWhatItWaitedFor)
{
    const Outcome outcome = Run({"networks", "--wait", "0.2"});
    EXPECT_EQ(outcome.nExit, 6);
    EXPECT_EQ(outcome.sErrors, pToldNothing);
    EXPECT_EQ(RunForJson({"show", "a", "--wait", "0.2"}, 6).at("result"), "error");
}

TEST_F(Trouble, WithoutABusItSaysWhatItWaitedFor)
{
    const auto pSession = Start({"networks", "--wait", "0.2"}, Session::Ends::Pipes,
                                {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/opt/no-bus"}});
    EXPECT_EQ(pSession->AwaitExit(), 6);
    EXPECT_THAT(pSession->GetErrors(), HasSubstr(pToldNothing));
}

TEST_F(Trouble, WithConnManThatHasNothingItSaysWhatItWaitedFor)
{
    StartConnMan({});
    EXPECT_EQ(Run({"technologies", "--wait", "0.2"}).nExit, 6);
}

TEST_F(Trouble, ALibraryThatIsNotThereIsNamed)
{
    const Outcome outcome = Run({"--library", "/opt/none.so", "networks"});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.sErrors,
              "corvane: cannot load the plug-in: /opt/none.so: cannot open shared object file: No "
              "such file or directory; --library names another one\n");
}

TEST_F(Trouble, ALibraryThatIsNoPlugInIsNamed)
{
    const Outcome outcome = Run({"--library", "libm.so.6", "networks"});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_EQ(outcome.sErrors, "corvane: libm.so.6 is no target-specific plug-in: it has no "
                               "GetTargetSpecificInterface\n");
}

TEST_F(Trouble, AFileThatIsNoLibraryIsNamed)
{
    const Outcome outcome = Run({"--library", MakeFile("not a library"), "networks"});
    EXPECT_EQ(outcome.nExit, 2);
    EXPECT_THAT(outcome.sErrors, HasSubstr("cannot load the plug-in: /opt/file"));
}

TEST_F(Trouble, OutputThatCannotBeWrittenIsAnError)
{
    StartConnMan();
    const std::string sCommand = CORVANE " networks >/dev/full";
    Session session({"/bin/sh", "-c", sCommand});
    EXPECT_EQ(session.AwaitExit(), 1);
    EXPECT_EQ(session.GetErrors(), "corvane: cannot write the output\n");
}

TEST_F(Trouble, NothingIsLeftBehind)
{
    StartConnMan();
    Run({"networks"});
    Run({"--library", "/opt/none.so", "networks"});
    EXPECT_TRUE(std::filesystem::is_empty(GetEventDirectory()));
}

TEST_F(Trouble, TheLogIsOnStandardErrorFromTheLevelThatIsWanted)
{
    Simulator::Scenario scenario = Neighbourhood();
    scenario.vecServices[1].sState = "ready";
    StartConnMan(scenario);
    EXPECT_EQ(Run({"networks"}).sErrors, "");
    EXPECT_EQ(Run({"--log", "3", "networks"}).sErrors, "");
    const Outcome outcome = Run({"--log", "0", "networks"});
    EXPECT_THAT(outcome.sErrors, HasSubstr("[0] ConnMan: "));
    EXPECT_THAT(outcome.sErrors, HasSubstr("[1] ConnMan: "));
    const Outcome notable = Run({"--log", "1", "networks"});
    EXPECT_THAT(notable.sErrors, HasSubstr("[1] ConnMan: "));
    EXPECT_THAT(notable.sErrors, testing::Not(HasSubstr("[0] ")));
}

} // namespace

} // namespace Tovra
