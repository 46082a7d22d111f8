#include "tests/connman/ClientOnBus.h"

#include <gmock/gmock.h>
#include <thread>

namespace Tovra
{

using Simulator::Arguments;
using Simulator::Json;
using Simulator::Reply;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
namespace HostLog = TestSupport::HostLog;

namespace
{

using Answers = std::map<std::string, std::string>;

constexpr const char* pAgent = "net.connman.Agent";
constexpr const char* pUnknownMethod = "org.freedesktop.DBus.Error.UnknownMethod";

/** The arguments of "RequestInput"; `pFields` is the JSON of an a{sv}. */
Arguments Asking(const char* pFields)
{
    return {"oa{sv}", Json::array({"/net/connman/service/wifi_a", Json::parse(pFields)})};
}

constexpr const char* pPassphraseField = R"({
    "Passphrase": ["a{sv}", {"Type": ["s", "psk"], "Requirement": ["s", "mandatory"],
                             "Alternates": ["as", ["WPS"]]}],
    "WPS": ["a{sv}", {"Type": ["s", "wpspin"], "Requirement": ["s", "alternate"]}]})";

/** Answer or error, as text. */
std::string Text(const Reply& reply)
{
    if (reply.IsError())
        return reply.sError;
    return reply.arguments.sSignature + reply.arguments.values.dump();
}

} // namespace

class AgentOnBus : public ClientOnBus
{
protected:
    /** Answers with the texts; writes down what was asked. */
    void AnswerWith(const Answers& mapAnswers)
    {
        GetClient().SetOnAgentRequest(
            [this, mapAnswers](const std::string& sPath, const auto& mapRequests) {
                std::string sText = sPath;
                for (const auto& [sName, request] : mapRequests) {
                    sText += " " + sName + ":" + request.sType + ":" + request.sRequirement;
                    for (const std::string& sAlternate : request.vecAlternates)
                        sText += ":" + sAlternate;
                }
                asked.Put(sText);
                return mapAnswers;
            });
    }

    template <class Exception> void ThrowFromCallback(const Exception& exception)
    {
        GetClient().SetOnAgentRequest(
            [exception](const std::string&, const auto&) -> Answers { throw exception; });
    }

    Reply Ask(const char* pFields = pPassphraseField)
    {
        return CallClient(pAgent, "RequestInput", Asking(pFields));
    }

    /** Expects that the thread still handles calls and signals. */
    void ExpectThreadGoesOn()
    {
        AnswerWith({{"Passphrase", "x"}});
        EXPECT_EQ(Text(Ask()), R"(a{sv}[{"Passphrase":["s","x"]}])");
        daemon.AddService({});
        EXPECT_TRUE(TestSupport::Eventually([&] { return !GetClient().GetNetworks().empty(); }));
    }

    TestSupport::Mailbox<std::string> asked;
};

// --- Questions and answers ---------------------------------------------------------------------

TEST_F(AgentOnBus, AnswersWithADictionaryOfTextsInVariants)
{
    AnswerWith({{"Passphrase", "secret"}, {"Name", "Blue Net"}});
    EXPECT_EQ(Text(Ask()), R"(a{sv}[{"Name":["s","Blue Net"],"Passphrase":["s","secret"]}])");
    EXPECT_EQ(asked.Take(),
              "/net/connman/service/wifi_a Passphrase:psk:mandatory:WPS WPS:wpspin:alternate");
}

TEST_F(AgentOnBus, AnswersWithASinglePassphrase)
{
    AnswerWith({{"Passphrase", "secret"}});
    EXPECT_EQ(Text(Ask()), R"(a{sv}[{"Passphrase":["s","secret"]}])");
}

TEST_F(AgentOnBus, AnswersWithAnEmptyDictionaryWhenThereIsNoAnswer)
{
    AnswerWith({});
    EXPECT_EQ(Text(Ask()), "a{sv}[{}]");
}

TEST_F(AgentOnBus, SendsEmptyTextsAndMendsBrokenOnes)
{
    AnswerWith({{"Broken", "a\xFFz"}, {"WPS", ""}});
    EXPECT_EQ(Text(Ask()), "a{sv}[{\"Broken\":[\"s\",\"a\xEF\xBF\xBDz\"],\"WPS\":[\"s\",\"\"]}]");
}

TEST_F(AgentOnBus, AsksTheCallbackAnewEachTime)
{
    AnswerWith({});
    for (int nTime = 0; nTime < 20; ++nTime) {
        EXPECT_EQ(Text(Ask()), "a{sv}[{}]");
        EXPECT_TRUE(asked.Take());
    }
    EXPECT_TRUE(asked.IsEmpty());
}

TEST_F(AgentOnBus, LogsARetryOnceAndDoesNotAskForIt)
{
    AnswerWith({{"Passphrase", "new secret"}});
    const Reply reply = Ask(R"({
        "Passphrase": ["a{sv}", {"Type": ["s", "psk"], "Requirement": ["s", "mandatory"]}],
        "PreviousPassphrase": ["a{sv}", {"Type": ["s", "psk"], "Value": ["s", "old secret"],
                                         "Requirement": ["s", "informational"]}]})");
    EXPECT_EQ(Text(reply), R"(a{sv}[{"Passphrase":["s","new secret"]}])");
    EXPECT_EQ(asked.Take(), "/net/connman/service/wifi_a Passphrase:psk:mandatory");
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::Retry()));
    EXPECT_FALSE(HostLog::Mentions("secret"));
}

// --- What is left unhandled --------------------------------------------------------------------

TEST_F(AgentOnBus, LeavesOtherCallsToTheUnknownMethodError)
{
    AnswerWith({});
    for (const char* pMember : {"Cancel", "Release", "RequestBrowser", "requestInput"})
        EXPECT_EQ(Text(CallClient(pAgent, pMember)), pUnknownMethod) << pMember;
    const Arguments report{"os", Json::array({"/net/connman/service/wifi_a", "invalid-key"})};
    EXPECT_EQ(Text(CallClient(pAgent, "ReportError", report)), pUnknownMethod);
    EXPECT_EQ(Text(CallClient("net.connman.Manager", "RequestInput", Asking(pPassphraseField))),
              pUnknownMethod);
    EXPECT_TRUE(asked.IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(AgentOnBus, WithoutACallbackLeavesARequestUnhandledWithoutAWord)
{
    EXPECT_EQ(Text(Ask()), pUnknownMethod);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(AgentOnBus, LeavesABadRequestUnhandledAndLogsIt)
{
    AnswerWith({});
    for (const char* pFields : {
             R"({})",
             R"({"Passphrase": ["s", "psk"]})",
             R"({"Passphrase": ["a{sv}", {}]})",
             R"({"Passphrase": ["a{sv}", {"Type": ["s", "psk"]}]})",
             R"({"Passphrase": ["a{sv}", {"Requirement": ["s", "mandatory"]}]})",
             R"({"Passphrase": ["a{sv}", {"Requirement": ["s", "mandatory"], "Type": ["s", "psk"],
                                          "Alternates": ["au", [1]]}]})",
             R"({"Passphrase": ["a{sv}", {"Requirement": ["s", "mandatory"], "Type": ["i", 1]}]})",
         }) {
        HostLog::Reset();
        EXPECT_EQ(Text(Ask(pFields)), pUnknownMethod) << pFields;
        EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("Object_Agent")));
    }
    for (const Arguments& arguments :
         {Arguments{}, Arguments{"o", Json::array({"/a"})},
          Arguments{"sa{sv}", Json::array({"/a", Json::parse(pPassphraseField)})},
          Arguments{"os", Json::array({"/a", "Passphrase"})}}) {
        HostLog::Reset();
        EXPECT_EQ(Text(CallClient(pAgent, "RequestInput", arguments)), pUnknownMethod);
        EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("Object_Agent")));
    }
    EXPECT_TRUE(asked.IsEmpty());
    ExpectThreadGoesOn();
}

// --- Callbacks that throw ----------------------------------------------------------------------

TEST_F(AgentOnBus, ABadCastOfTheCallbackIsNoBadVersion)
{
    ThrowFromCallback(std::bad_cast());
    EXPECT_EQ(Text(Ask()), pUnknownMethod);
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(ClientLog::Dropped("Object_Agent", "std::bad_cast")));
    ExpectThreadGoesOn();
}

TEST_F(AgentOnBus, AnyExceptionOfTheCallbackIsLoggedAndDropped)
{
    ThrowFromCallback(std::runtime_error("no such file"));
    EXPECT_EQ(Text(Ask()), pUnknownMethod);
    ThrowFromCallback(42);
    EXPECT_EQ(Text(Ask()), pUnknownMethod);
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(ClientLog::Dropped("Object_Agent", "no such file"),
                            ClientLog::Dropped("Object_Agent", "unknown")));
    ExpectThreadGoesOn();
}

TEST_F(AgentOnBus, AnExceptionIsDroppedThoughItsLevelIsInactive)
{
    HostLog::SetActive(QelLogError, false);
    ThrowFromCallback(std::runtime_error("no such file"));
    EXPECT_EQ(Text(Ask()), pUnknownMethod);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    ExpectThreadGoesOn();
}

TEST_F(AgentOnBus, ALogThatThrowsDoesNotEndTheThread)
{
    HostLog::SetOnMessage([](const auto&) { throw std::runtime_error("the log is full"); });
    ThrowFromCallback(std::runtime_error("no such file"));
    EXPECT_EQ(Text(Ask()), pUnknownMethod);
    AnswerWith({});
    EXPECT_EQ(Text(Ask("{}")), pUnknownMethod);
    HostLog::Reset();
    ExpectThreadGoesOn();
}

// --- Callbacks and the rest --------------------------------------------------------------------

TEST_F(AgentOnBus, TheCallbackMayUseTheClient)
{
    const std::string sPath = daemon.AddService({});
    ASSERT_TRUE(TestSupport::Eventually([&] { return !GetClient().GetNetworks().empty(); }));
    GetClient().SetOnAgentRequest([&](const std::string&, const auto&) {
        const auto vecServices = GetClient().GetNetworks();
        GetClient().SetNetworkProperties(vecServices.at(0), ConnMan::Nameservers);
        return Answers{{"Name", vecServices.at(0).sPath}};
    });
    EXPECT_EQ(Text(Ask()), R"(a{sv}[{"Name":["s",")" + sPath + R"("]}])");
    EXPECT_TRUE(daemon.WaitForCall("SetProperty", TestSupport::deadline));
}

TEST_F(AgentOnBus, SignalsWaitUntilTheCallbackReturns)
{
    TestSupport::Mailbox<std::string> events;
    TestSupport::Mailbox<bool> asking;
    TestSupport::Mailbox<bool> goOn;
    GetClient().SetOnNetworksChanged([&](unsigned int) { events.Put("changed"); },
                                     ConnMan::ServicesUpdated);
    GetClient().SetOnAgentRequest([&](const std::string&, const auto&) {
        asking.Put(true);
        EXPECT_TRUE(goOn.Take());
        events.Put("answered");
        return Answers();
    });
    std::thread caller([&] { EXPECT_EQ(Text(Ask()), "a{sv}[{}]"); });
    ASSERT_TRUE(asking.Take());
    Simulator::Signal signal;
    signal.sMember = "ServicesChanged";
    signal.arguments = {"a(oa{sv})ao", Json::array({Json::array(), Json::array()})};
    daemon.EmitRaw(signal);
    goOn.Put(true);
    caller.join();
    EXPECT_EQ(events.Take(), "answered");
    EXPECT_EQ(events.Take(), "changed");
    StopClient();
}

} // namespace Tovra
