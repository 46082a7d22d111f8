#include "Common/ConnManImpl.h"
#include "tests/connman/AgentData.h"
#include "tests/connman/ClientLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace Tovra
{

using AgentData::Field;
using AgentData::Fields;
using ClientLog::BadVersion;
using ClientLog::Retry;
using DBus::Data;
using DBus::Message;
using ListData::Properties;
using testing::ElementsAre;
using testing::IsEmpty;
namespace HostLog = TestSupport::HostLog;

namespace
{

constexpr const char* pAgent = "net.connman.Agent";
constexpr const char* pRequestInput = "RequestInput";
constexpr const char* pService = "/net/connman/service/wifi_a_b_managed_psk";

Message MakeRawCall(const std::vector<Data>& vecArguments)
{
    Message message("net.example.Client", "/tovra/corvane/connman/agent", pAgent, pRequestInput);
    for (const Data& argument : vecArguments)
        message.Add(argument);
    return message;
}

Message MakeCall(const std::map<std::string, Properties>& mapFields)
{
    return MakeRawCall({Data::MakeObjectPath(pService), Fields(mapFields)});
}

Message MakePassphraseCall()
{
    return MakeCall({{"Passphrase", Field("psk", "mandatory")}});
}

} // namespace

/** The handler alone, without a bus: what it asks, says and returns. */
class ObjectAgent : public testing::Test
{
protected:
    void SetUp() override
    {
        HostLog::Reset();
        impl.SetOnAgentRequest([this](const std::string& sPath, const auto& mapRequests) {
            std::string sText = sPath;
            for (const auto& [sName, request] : mapRequests)
                sText += " " + sName + ":" + request.sType;
            vecAsked.push_back(sText);
            return std::map<std::string, std::string>{{"Passphrase", "the secret"}};
        });
    }

    bool Call(const Message& message) { return impl.Object_Agent(pAgent, pRequestInput, message); }

    /** Expects that the call is left unhandled, with the line about the version and no other. */
    void ExpectBadVersion(const Message& message)
    {
        HostLog::Reset();
        EXPECT_FALSE(Call(message));
        EXPECT_THAT(HostLog::GetMessages(), ElementsAre(BadVersion("Object_Agent")));
        EXPECT_THAT(vecAsked, IsEmpty());
    }

    DBus::Connection connection;
    ConnMan::Impl impl{connection, {}};
    std::vector<std::string> vecAsked;
};

TEST_F(ObjectAgent, AsksTheCallbackWithThePathAndTheFields)
{
    EXPECT_TRUE(Call(MakeCall(
        {{"WPS", Field("wpspin", "alternate")}, {"Passphrase", Field("psk", "mandatory")}})));
    EXPECT_THAT(vecAsked, ElementsAre(std::string(pService) + " Passphrase:psk WPS:wpspin"));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, LeavesOtherMembersUnhandledWithoutAWord)
{
    for (const char* pMember : {"Cancel", "Release", "ReportError", "RequestBrowser",
                                "ReportPeerError", "requestInput", "RequestInput ", ""})
        EXPECT_FALSE(impl.Object_Agent(pAgent, pMember, MakePassphraseCall())) << pMember;
    EXPECT_THAT(vecAsked, IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, LeavesOtherInterfacesUnhandledWithoutAWord)
{
    for (const char* pInterface : {"", "net.connman.agent", "net.connman.Agent2",
                                   "net.connman.Manager", "net.connman.vpn.Agent"})
        EXPECT_FALSE(impl.Object_Agent(pInterface, pRequestInput, MakePassphraseCall()));
    EXPECT_THAT(vecAsked, IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, WithoutACallbackLeavesEvenABadCallUnhandledWithoutAWord)
{
    ConnMan::Impl other(connection, {});
    EXPECT_FALSE(other.Object_Agent(pAgent, pRequestInput, MakePassphraseCall()));
    EXPECT_FALSE(other.Object_Agent(pAgent, pRequestInput, MakeRawCall({})));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, AnEmptyCallbackIsNoCallback)
{
    impl.SetOnAgentRequest(nullptr);
    EXPECT_FALSE(Call(MakePassphraseCall()));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, AsksOnlyTheCallbackThatWasSetLast)
{
    unsigned nCalls = 0;
    impl.SetOnAgentRequest([&](const std::string&, const auto&) {
        ++nCalls;
        return std::map<std::string, std::string>();
    });
    EXPECT_TRUE(Call(MakePassphraseCall()));
    EXPECT_EQ(nCalls, 1U);
    EXPECT_THAT(vecAsked, IsEmpty());
}

TEST_F(ObjectAgent, ARetryIsLoggedOnceAndNotAskedFor)
{
    EXPECT_TRUE(Call(MakeCall({{"Passphrase", Field("psk", "mandatory")},
                               {"PreviousPassphrase", Field("psk", "informational")}})));
    EXPECT_THAT(vecAsked, ElementsAre(std::string(pService) + " Passphrase:psk"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(Retry()));
}

TEST_F(ObjectAgent, EveryRetryIsLoggedAndAskedForAnew)
{
    const Message call = MakeCall({{"Passphrase", Field("psk", "mandatory")},
                                   {"PreviousPassphrase", Field("psk", "informational")}});
    for (int nTime = 0; nTime < 5; ++nTime)
        EXPECT_TRUE(Call(call));
    EXPECT_EQ(vecAsked.size(), 5U);
    EXPECT_EQ(HostLog::GetMessagesWithText(Retry().sText).size(), 5U);
}

TEST_F(ObjectAgent, ARetryIsNotLoggedWhileItsLevelIsInactive)
{
    HostLog::SetActive(QelLogInfo, false);
    EXPECT_TRUE(Call(MakeCall({{"PreviousPassphrase", Field("psk", "informational")}})));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, AsksEvenWhenAllFieldsOnlyInform)
{
    EXPECT_TRUE(Call(MakeCall({{"VpnHost", Field("string", "informational")}})));
    EXPECT_THAT(vecAsked, ElementsAre(pService));
}

TEST_F(ObjectAgent, ABadFieldAbandonsTheCall)
{
    Properties field = Field("psk", "mandatory");
    field["Alternates"] = RecordChange::MakeValue(RecordChange::Kind::TextsAndNumber);
    ExpectBadVersion(MakeCall({{"A", Field("psk", "mandatory")}, {"Passphrase", field}}));
}

TEST_F(ObjectAgent, ARetryBeforeABadFieldIsLoggedAllTheSame)
{
    EXPECT_FALSE(Call(MakeCall({{"PreviousPassphrase", Field("psk", "informational")},
                                {"WPS", {{"Type", ListData::Text("wpspin")}}}})));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(Retry(), BadVersion("Object_Agent")));
    EXPECT_THAT(vecAsked, IsEmpty());
}

TEST_F(ObjectAgent, AFirstArgumentThatIsNoPathAbandonsTheCall)
{
    const Data fields = Fields({{"Passphrase", Field("psk", "mandatory")}});
    ExpectBadVersion(MakeRawCall({Data::MakeString(pService), fields}));
    ExpectBadVersion(MakeRawCall({Data::MakeUInt32(1), fields}));
    ExpectBadVersion(MakeRawCall({fields, Data::MakeObjectPath(pService)}));
}

TEST_F(ObjectAgent, ASecondArgumentThatIsNoDictionaryAbandonsTheCall)
{
    const Data path = Data::MakeObjectPath(pService);
    ExpectBadVersion(MakeRawCall({path, Data::MakeString("Passphrase")}));
    ExpectBadVersion(MakeRawCall({path, Data::MakeStringArray({"Passphrase"})}));
    ExpectBadVersion(MakeRawCall({path, Data::MakeDictionary(Data::Variant)}));
}

TEST_F(ObjectAgent, MissingArgumentsAbandonTheCall)
{
    ExpectBadVersion(MakeRawCall({}));
    ExpectBadVersion(MakeRawCall({Data::MakeObjectPath(pService)}));
    ExpectBadVersion(Message());
}

TEST_F(ObjectAgent, FurtherArgumentsDoNotMatter)
{
    EXPECT_TRUE(Call(MakePassphraseCall().Add(Data::MakeUInt32(1))));
    EXPECT_EQ(vecAsked.size(), 1U);
}

TEST_F(ObjectAgent, ABadCallIsNotLoggedWhileItsLevelIsInactive)
{
    HostLog::SetActive(QelLogError, false);
    EXPECT_FALSE(Call(MakeRawCall({})));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, WhatTheCallbackThrowsIsNotTakenForABadCall)
{
    impl.SetOnAgentRequest(
        [](const std::string&, const auto&) -> std::map<std::string, std::string> {
            throw std::bad_cast();
        });
    EXPECT_THROW(Call(MakePassphraseCall()), std::bad_cast);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ObjectAgent, LogsNoPassphrase)
{
    Properties previous = Field("psk", "informational");
    previous["Value"] = ListData::Text("former secret");
    EXPECT_TRUE(Call(
        MakeCall({{"Passphrase", Field("psk", "mandatory")}, {"PreviousPassphrase", previous}})));
    previous.erase("Requirement");
    EXPECT_FALSE(Call(MakeCall({{"PreviousPassphrase", previous}})));
    EXPECT_EQ(HostLog::GetMessages().size(), 2U);
    EXPECT_FALSE(HostLog::Mentions("secret"));
}

} // namespace Tovra
