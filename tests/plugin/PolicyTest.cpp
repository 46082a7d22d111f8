#include "tests/plugin/ChildProcess.h"
#include "tests/plugin/Stage.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateMounts.h"
#include "tests/support/TestMain.h"

#include <cstdlib>
#include <gmock/gmock.h>

/**
 * What others than ConnMan send in ConnMan's name, on a bus with the policy file that is installed
 * with the plug-in (CORVANE_BUS_POLICY), and on one without: there it arrives, which shows that the
 * forgeries are good.
 */

namespace Tovra
{

using testing::IsEmpty;
using testing::Not;

namespace
{

constexpr const char* pHome = "/net/connman/service/wifi_Home";
constexpr const char* pHomeKey = "Home52F50EAE";

/** Who forges: root, or a user without rights. */
enum class Forger { Root, Nobody };

/** Runs dbus-send on the test's bus; gives what it wrote. */
std::string Send(Forger forger, const std::string& sArguments)
{
    const std::string sAs =
        forger == Forger::Nobody ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    return TestSupport::ReadOutput(sAs + "dbus-send --bus='" +
                                   TestSupport::GetSystemBus().GetAddress() + "' " + sArguments +
                                   " 2>&1");
}

const std::vector<std::string> forgedSignals = {
    "/ net.connman.Manager.ServicesChanged string:none",
    "/ net.connman.Manager.TechnologyAdded string:none",
    "/ net.connman.Manager.TechnologyRemoved string:none",
    "/net/connman/technology/wifi net.connman.Technology.PropertyChanged string:Powered",
    std::string(pHome) + " net.connman.Service.PropertyChanged string:State",
};

std::string ForgedStrength(unsigned nStrength)
{
    return std::string(pHome) + " net.connman.Service.PropertyChanged string:Strength uint32:" +
           std::to_string(nStrength);
}

bool CanBeNobody()
{
    return std::system("setpriv --reuid=65534 --regid=65534 --clear-groups true 2>/dev/null") == 0;
}

} // namespace

class Policy : public Stage, public testing::WithParamInterface<Forger>
{
protected:
    void SetUp() override
    {
        if (GetParam() == Forger::Nobody && !CanBeNobody())
            GTEST_SKIP() << "only root can run a program as another user";
        Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    }

    std::string ForgeSignal(const std::string& sSignal, bool bStraight)
    {
        const std::string sTo = bStraight ? "--dest=" + GetPlugInName() + " " : "";
        return Send(GetParam(), "--type=signal " + sTo + sSignal);
    }

    /** A question for the passphrase, in the shape that dbus-send can give it. */
    std::string ForgeQuestion()
    {
        return Send(GetParam(), "--print-reply --dest=" + GetPlugInName() +
                                    " /tovra/corvane/connman/agent net.connman.Agent.RequestInput"
                                    " objpath:" +
                                    pHome);
    }

    int ReadStrength()
    {
        Settle();
        Read();
        const auto home = host.FindNetwork(pHomeKey);
        return home ? home->nStrength : -1;
    }

    /** What the plug-in asked ConnMan for since the start, because of what it heard. */
    std::vector<std::string> GetQuestions()
    {
        Settle();
        std::vector<std::string> vecMembers;
        for (const Simulator::Call& call : pConnMan->GetCalls())
            vecMembers.push_back(call.sMember);
        return vecMembers;
    }

    void ForgeAllSignals()
    {
        for (const std::string& sSignal : forgedSignals) {
            for (const bool bStraight : {false, true})
                ASSERT_EQ(ForgeSignal(sSignal, bStraight), "");
        }
    }
};

#ifdef CORVANE_BUS_POLICY

TEST_P(Policy, KeepsForgedSignalsFromThePlugIn)
{
    ForgeAllSignals();
    EXPECT_THAT(GetQuestions(), IsEmpty());
    EXPECT_THAT(host.GetEvents(), IsEmpty());
}

TEST_P(Policy, KeepsAForgedStrengthFromThePlugIn)
{
    const int nBefore = ReadStrength();
    ASSERT_EQ(ForgeSignal(ForgedStrength(1), false), "");
    ASSERT_EQ(ForgeSignal(ForgedStrength(2), true), "");
    EXPECT_EQ(ReadStrength(), nBefore);
}

TEST_P(Policy, KeepsForgedQuestionsFromTheAgent)
{
    EXPECT_THAT(ForgeQuestion(), testing::HasSubstr("org.freedesktop.DBus.Error.AccessDenied"));
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
}

TEST_P(Policy, LetsConnMansOwnSignalsAndQuestionsThrough)
{
    ForgeAllSignals();
    pConnMan->SetState(pHome, "ready");
    EXPECT_TRUE(ReadUntil([](const DeviceConfig& config) {
        return config.mapNetworkServices.at(pHomeKey).bConnected;
    }));
    host.Edit([](DeviceConfig& config) {
        config.mapNetworkServices.at(pHomeKey).sPassphrase = "correct horse";
    });
    const Simulator::Value passphrase =
        Simulator::MakeDictionaryValue({{"Type", Simulator::MakeString("psk")},
                                        {"Requirement", Simulator::MakeString("mandatory")}});
    const Simulator::Reply reply =
        AskAgent(pHome, Simulator::MakeDictionary({{"Passphrase", passphrase}}));
    EXPECT_EQ(reply.sError, "");
    EXPECT_EQ(host.FindNetwork(pHomeKey)->sPassphrase, "");
}

#else

TEST_P(Policy, IsWhatKeepsForgedSignalsOut)
{
    for (const std::string& sSignal : forgedSignals) {
        for (const bool bStraight : {false, true}) {
            Settle();
            host.ForgetEvents();
            pConnMan->ClearCalls();
            ASSERT_EQ(ForgeSignal(sSignal, bStraight), "");
            EXPECT_TRUE(TestSupport::Eventually([&] {
                return !host.GetEvents().empty() || !GetQuestions().empty();
            })) << sSignal;
        }
    }
}

TEST_P(Policy, IsWhatKeepsAForgedStrengthOut)
{
    ASSERT_EQ(ForgeSignal(ForgedStrength(1), false), "");
    EXPECT_TRUE(TestSupport::Eventually([&] { return ReadStrength() == 1; }));
    ASSERT_EQ(ForgeSignal(ForgedStrength(2), true), "");
    EXPECT_TRUE(TestSupport::Eventually([&] { return ReadStrength() == 2; }));
}

TEST_P(Policy, IsWhatKeepsForgedQuestionsOut)
{
    ForgeQuestion();
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), Not(IsEmpty()));
}

#endif

INSTANTIATE_TEST_SUITE_P(AgainstForgeries, Policy, testing::Values(Forger::Root, Forger::Nobody),
                         [](const testing::TestParamInfo<Forger>& forger) {
                             return forger.param == Forger::Root ? "OfRoot" : "OfAnotherUser";
                         });

} // namespace Tovra

int main(int argc, char** argv)
{
    Tovra::TestSupport::EnterPrivateMounts(argv);
    std::string sConfiguration = "<policy context='default'><allow user='*'/></policy>";
#ifdef CORVANE_BUS_POLICY
    sConfiguration += "<include>" CORVANE_BUS_POLICY "</include>";
#endif
    return Tovra::TestSupport::RunTests(argc, argv, sConfiguration);
}
