#include "simulator/Daemon.h"
#include "tests/simulator/Neighbourhood.h"
#include "tests/simulator/Peer.h"

#include <gtest/gtest.h>

namespace Tovra::Simulator
{

namespace
{

using TestSupport::deadline;

constexpr const char* pManager = "net.connman.Manager";
constexpr const char* pServiceInterface = "net.connman.Service";
const std::string sHome = PathOf(MakeWifi("Home"));

Scenario MakeQuick()
{
    Scenario scenario = MakeScenario({MakeWifi("Home")});
    scenario.timing = Timing::Quick();
    return scenario;
}

CallPattern OfMember(const std::string& sMember)
{
    CallPattern pattern;
    pattern.sMember = sMember;
    return pattern;
}

// "GetServices" is answered with the values of the signature, whatever they are.
Arguments AskForServices(const std::string& sSignature, const char* pValues)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    const Arguments wrong = {sSignature, Json::parse(pValues)};
    daemon.OnCall(OfMember("GetServices"), Behaviour::AnswerWith(wrong));
    const Reply reply = peer.Ask("/", pManager, "GetServices");
    EXPECT_EQ(reply.arguments.sSignature, wrong.sSignature);
    EXPECT_EQ(reply.arguments.values, wrong.values);
    return reply.arguments;
}

} // namespace

TEST(SimulatedMisbehaviour, AReplyMayHaveAnyShape)
{
    AskForServices("", "[]");
    AskForServices("s", "[\"text\"]");
    AskForServices("as", "[[\"no struct\"]]");
    AskForServices("a(sa{sv})", R"([[["path", {"Name": ["s", "x"]}]]])");
    AskForServices("a(oas)", R"([[["/path", ["no dictionary"]]]])");
    AskForServices("a(oa{sv})", R"([[["/path", {"Strength": ["x", -5], "Name": ["d", 1.5]}]]])");
    AskForServices("a(oa{uv})", R"([[["/path", [[7, ["s", "x"]]]]]])");
}

TEST(SimulatedMisbehaviour, AValueThatIsNoneOfItsTypeIsRefused)
{
    Daemon daemon(MakeQuick());
    EXPECT_THROW(daemon.EmitRaw({"/", pManager, "X", {"i", Json::array({"text"})}, ""}), Problem);
    EXPECT_THROW(daemon.EmitRaw({"/", pManager, "X", {"a", Json::array()}, ""}), Problem);
    EXPECT_THROW(daemon.OnCall({}, Behaviour::AnswerWith({"s", Json::array()})), Problem);
    EXPECT_THROW(daemon.EmitRaw({"no path", pManager, "X", {}, ""}), std::runtime_error);
}

TEST(SimulatedMisbehaviour, AMethodMayFail)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    daemon.OnCall(OfMember("GetServices"), Behaviour::Fail("net.example.Error.Wrong", "no way"));
    const Reply reply = peer.Ask("/", pManager, "GetServices");
    EXPECT_EQ(reply.sError, "net.example.Error.Wrong");
    EXPECT_EQ(reply.sErrorMessage, "no way");
    daemon.ClearBehaviours();
    EXPECT_FALSE(peer.Ask("/", pManager, "GetServices").IsError());
}

TEST(SimulatedMisbehaviour, AMethodMayStaySilent)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    daemon.OnCall(OfMember("GetServices"), Behaviour::StaySilent());
    peer.Start("/", pManager, "GetServices");
    ASSERT_TRUE(daemon.WaitForCall("GetServices", deadline));
    peer.Start("/", pManager, "GetTechnologies");
    const auto reply = peer.replies.Take();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->arguments.values[0].size(), 2U) << "the technologies overtook the services";
    EXPECT_TRUE(peer.replies.IsEmpty());
}

TEST(SimulatedMisbehaviour, AnAnswerMayBeLate)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    const std::chrono::milliseconds delay(100);
    daemon.OnCall(OfMember("GetServices"), Behaviour::Delay(delay));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(peer.Ask("/", pManager, "GetServices").IsError());
    EXPECT_GE(std::chrono::steady_clock::now() - start, delay);
}

TEST(SimulatedMisbehaviour, AnswersMayComeOutOfOrder)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    daemon.OnCall({}, Behaviour::Hold());
    peer.Start("/", pManager, "GetPeers");
    peer.Start("/", pManager, "GetTechnologies");
    ASSERT_TRUE(TestSupport::Eventually([&] { return daemon.GetHeldCount() == 2; }));
    EXPECT_TRUE(peer.replies.IsEmpty());
    daemon.ReleaseReplies(true);
    EXPECT_EQ(peer.replies.Take()->arguments.values[0].size(), 2U);
    EXPECT_EQ(peer.replies.Take()->arguments.values[0].size(), 0U);
    EXPECT_EQ(daemon.GetHeldCount(), 0U);
}

TEST(SimulatedMisbehaviour, SignalsMayComeInStorms)
{
    constexpr unsigned nCount = 5000;
    Daemon daemon(MakeQuick());
    Peer peer;
    const Json values = Json::array({"Strength", Json::array({"y", 7})});
    daemon.EmitStorm({sHome, pServiceInterface, "PropertyChanged", {"sv", values}, ""}, nCount);
    for (unsigned n = 0; n < nCount; ++n)
        ASSERT_TRUE(peer.TakeSignal("PropertyChanged"));
    daemon.EmitStorm({sHome, pServiceInterface, "Slow", {}, ""}, 3, std::chrono::milliseconds(1));
    for (unsigned n = 0; n < 3; ++n)
        ASSERT_TRUE(peer.TakeSignal("Slow"));
}

TEST(SimulatedMisbehaviour, ASignalMayGoStraightToOneConnection)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    Peer other;
    daemon.EmitRaw({"/", "net.example.Unheard", "Only", {}, peer.GetName()});
    daemon.EmitRaw({"/", "net.example.Unheard", "All", {}, ""});
    EXPECT_EQ(peer.signals.Take()->sMember, "Only");
    EXPECT_EQ(other.signals.Take()->sMember, "All");
}

TEST(SimulatedMisbehaviour, AListMayBeLongAndATextMayBeBig)
{
    constexpr unsigned nServices = 10000;
    Scenario scenario = MakeQuick();
    for (unsigned n = 1; n < nServices; ++n)
        scenario.vecServices.push_back(MakeWifi("Net " + std::to_string(n)));
    Daemon daemon(scenario);
    Peer peer;
    EXPECT_EQ(peer.Ask("/", pManager, "GetServices").arguments.values[0].size(), nServices);
    const std::string sBig(1U << 20U, 'x');
    daemon.SetServiceProperty(sHome, "Name", MakeString(sBig));
    EXPECT_EQ(peer.TakeSignal("PropertyChanged")->arguments.values[1][1], sBig);
}

TEST(SimulatedMisbehaviour, AnyMethodOfAClientMayBeCalled)
{
    Daemon daemon(MakeQuick());
    Peer peer([](const Call& call) {
        Reply reply;
        if (call.sMember == "Fail")
            return Reply{{}, "net.example.Error.A", "text"};
        reply.arguments = {"s", Json::array({"heard"})};
        return reply;
    });
    const Arguments wrong = {"ox", Json::array({"/x", -7})};
    const Reply reply = daemon.CallRaw(
        {peer.GetName(), "/agent", "net.connman.Agent", "RequestInput", wrong}, deadline);
    EXPECT_EQ(reply.arguments.values, (Json::array({"heard"})));
    EXPECT_EQ(peer.calls.Take()->arguments.values, wrong.values);
    EXPECT_EQ(daemon.CallRaw({peer.GetName(), "/agent", "net.connman.Agent", "Fail", {}}, deadline)
                  .sError,
              "net.example.Error.A");
    EXPECT_EQ(
        daemon.CallRaw({":1.99999", "/agent", "net.connman.Agent", "Fail", {}}, deadline).sError,
        "org.freedesktop.DBus.Error.ServiceUnknown");
}

TEST(SimulatedMisbehaviour, AClientThatDoesNotAnswerIsATimeout)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    const Reply reply =
        daemon.CallRaw({peer.GetName(), "/agent", "net.connman.Agent", "Release", {}},
                       std::chrono::milliseconds(5));
    EXPECT_EQ(reply.sError, "org.freedesktop.DBus.Error.NoReply");
}

TEST(SimulatedMisbehaviour, TheNoReplyFlagIsRecordedAndHeeded)
{
    Daemon daemon(MakeQuick());
    Peer peer;
    peer.StartWithoutReply("/", pManager, "GetServices");
    const auto call = daemon.WaitForCall("GetServices", deadline);
    ASSERT_TRUE(call);
    EXPECT_TRUE(call->bNoReply);
    peer.Start("/", pManager, "GetPeers");
    EXPECT_EQ(peer.replies.Take()->arguments.values[0].size(), 0U);
}

} // namespace Tovra::Simulator
