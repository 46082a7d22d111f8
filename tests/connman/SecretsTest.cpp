#include "Common/AgentFields.h"
#include "Common/ConnManImpl.h"
#include "Include/Wipe.h"
#include "tests/connman/AgentData.h"
#include "tests/support/FreedMemory.h"
#include "tests/support/HostLog.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

/** Credentials: that their memory is overwritten before it is given back. */
namespace Tovra
{

using DBus::Data;
using DBus::Message;
namespace FreedMemory = TestSupport::FreedMemory;

namespace
{

// One fits into a string's own memory, the other does not.
constexpr const char* pShort = "abcdefghij";
constexpr const char* pLong = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";

bool IsZero(const char* pMemory, std::size_t nSize)
{
    return std::all_of(pMemory, pMemory + nSize, [](char nByte) { return nByte == 0; });
}

} // namespace

class Secret : public testing::TestWithParam<const char*>
{
protected:
    static std::size_t GetLength() { return std::strlen(GetParam()); }

    /** For its beginning: a part of a secret is worth keeping, too. */
    static void Watch() { FreedMemory::Watch(std::string(GetParam(), 8)); }
};

INSTANTIATE_TEST_SUITE_P(Of, Secret, testing::Values(pShort, pLong),
                         [](const testing::TestParamInfo<const char*>& tested) {
                             return std::strlen(tested.param) < 16 ? "FewCharacters"
                                                                   : "ManyCharacters";
                         });

// --- The watch itself --------------------------------------------------------------------------

TEST_P(Secret, IsNoticedWhereItIsFreedAsItIs)
{
    auto pText = std::make_unique<std::string>(GetParam());
    Watch();
    pText.reset();
    EXPECT_EQ(FreedMemory::Unwatch(), 1U);
}

// --- Wiping ------------------------------------------------------------------------------------

TEST_P(Secret, IsOverwrittenInAText)
{
    std::string sText = GetParam();
    const char* pMemory = sText.data();
    DBus::Wipe(sText);
    EXPECT_EQ(sText, "");
    ASSERT_EQ(sText.data(), pMemory) << "the memory must still be the text's";
    EXPECT_TRUE(IsZero(pMemory, GetLength()));
}

TEST_P(Secret, IsOverwrittenWhereALongerTextLeftIt)
{
    std::string sText = GetParam();
    const char* pMemory = sText.data();
    sText = "ab"; // keeps the memory, and the rest of the secret in it
    DBus::Wipe(sText);
    ASSERT_EQ(sText.data(), pMemory);
    EXPECT_TRUE(IsZero(pMemory, GetLength()));
}

TEST_P(Secret, IsOverwrittenInAValue)
{
    auto pData = std::make_unique<Data>(Data::MakeString(GetParam(), true));
    Watch();
    DBus::Wipe(*pData);
    EXPECT_EQ(pData->GetType(), Data::Empty);
    pData.reset();
    EXPECT_EQ(FreedMemory::Unwatch(), 0U);
}

TEST_P(Secret, IsNotLeftInAValueThatWasMovedFrom)
{
    Data source = Data::MakeString("");
    source.As<std::string>() = GetParam();
    const auto* const pBytes = reinterpret_cast<const char*>(&source);
    const Data data = std::move(source);
    EXPECT_EQ(data.As<std::string>(), GetParam());
    EXPECT_EQ(std::string(pBytes, sizeof(Data)).find(std::string(GetParam(), 8)),
              std::string::npos);
}

TEST_P(Secret, IsOverwrittenDeepInsideAValue)
{
    auto pData = std::make_unique<Data>(AgentData::Fields({{"One", {}}, {"Two", {}}}));
    auto& field = pData->As<ListData::Properties>()["Two"].As<ListData::Properties>();
    field["List"] = Data::MakeStringArray({"", ""});
    field["List"].As<std::vector<Data>>()[1].As<std::string>() = GetParam();
    field["Value"] = Data::MakeString("");
    field["Value"].As<std::string>() = GetParam();
    Watch();
    DBus::Wipe(*pData);
    pData.reset();
    EXPECT_EQ(FreedMemory::Unwatch(), 0U);
}

TEST_P(Secret, IsOverwrittenInAMapOfTexts)
{
    std::map<std::string, std::string> mapTexts;
    mapTexts["One"] = mapTexts["Two"] = GetParam();
    Watch();
    DBus::Wipe(mapTexts);
    EXPECT_EQ(FreedMemory::Unwatch(), 0U);
    EXPECT_TRUE(mapTexts.empty());
}

TEST_P(Secret, IsOverwrittenHoweverTheScopeEnds)
{
    std::string sText = GetParam();
    const char* pMemory = sText.data();
    EXPECT_THROW(
        {
            const DBus::WipedAtEnd wiped(sText);
            throw std::runtime_error("end");
        },
        std::runtime_error);
    ASSERT_EQ(sText.data(), pMemory);
    EXPECT_TRUE(IsZero(pMemory, GetLength()));
}

TEST(Wiping, BearsWhatHoldsNoText)
{
    for (Data data : {Data(), Data::MakeBool(true), Data::MakeUInt32(1), Data::MakeObjectPath("/"),
                      Data::MakeArray(Data::String), Data::MakeDictionary(Data::Variant)}) {
        DBus::Wipe(data);
        EXPECT_EQ(data.GetType(), Data::Empty);
    }
    std::string sText;
    DBus::Wipe(sText);
    EXPECT_EQ(sText, "");
}

// --- The agent's copies ------------------------------------------------------------------------

TEST_P(Secret, IsInNoMemoryThatMakingAnAnswerFrees)
{
    std::map<std::string, std::string> mapAnswer;
    mapAnswer["Name"] = "Blue Net";
    mapAnswer["Passphrase"] = GetParam();
    Watch();
    {
        Data answer = AgentFields::MakeAnswer(mapAnswer);
        DBus::Wipe(answer);
    }
    DBus::Wipe(mapAnswer);
    EXPECT_EQ(FreedMemory::Unwatch(), 0U);
}

// Each bad byte is replaced in a copy, which is longer.
TEST_P(Secret, IsInNoMemoryThatWritingItAsBadUtf8Frees)
{
    Message message("net.example.Client", "/agent", "net.connman.Agent", "RequestInput");
    Data data = Data::MakeString("");
    data.As<std::string>() = std::string(GetParam()) + "\xFF and more";
    Watch();
    message.Add(data);
    EXPECT_EQ(FreedMemory::Unwatch(), 0U);
    EXPECT_EQ(message.Contents().As<std::string>(),
              std::string(GetParam()) + "\xEF\xBF\xBD and more");
}

/** The handler alone, without a bus. */
class AgentSecret : public Secret
{
protected:
    AgentSecret() { TestSupport::HostLog::Reset(); }

    void AnswerWithSecret()
    {
        impl.SetOnAgentRequest([](const std::string&, const auto&) {
            std::map<std::string, std::string> mapAnswer;
            mapAnswer["Name"] = "Blue Net";
            mapAnswer["Passphrase"] = GetParam();
            return mapAnswer;
        });
    }

    /** How many blocks were freed that contained the secret while the call was handled. */
    unsigned CountLeaks(const Message& call)
    {
        Watch();
        try {
            impl.Object_Agent("net.connman.Agent", "RequestInput", call);
        } catch (const std::exception&) {
            // The callback's own.
        }
        return FreedMemory::Unwatch();
    }

    Message MakeCall()
    {
        ListData::Properties previous = AgentData::Field("psk", "informational");
        previous["Value"] = ListData::Text(GetParam());
        Message call("net.example.Client", "/agent", "net.connman.Agent", "RequestInput");
        call.Add(Data::MakeObjectPath("/service"))
            .Add(AgentData::Fields({{"Passphrase", AgentData::Field("psk", "mandatory")},
                                    {"PreviousPassphrase", previous},
                                    {"WPS", AgentData::Field("wpspin", "optional")}}));
        return call;
    }

    DBus::Connection connection;
    ConnMan::Impl impl{connection, {}};
};

INSTANTIATE_TEST_SUITE_P(Of, AgentSecret, testing::Values(pShort, pLong),
                         [](const testing::TestParamInfo<const char*>& tested) {
                             return std::strlen(tested.param) < 16 ? "FewCharacters"
                                                                   : "ManyCharacters";
                         });

TEST_P(AgentSecret, IsInNoMemoryThatAnAnsweredCallFrees)
{
    AnswerWithSecret();
    EXPECT_EQ(CountLeaks(MakeCall()), 0U);
    EXPECT_FALSE(TestSupport::HostLog::Mentions(GetParam()));
}

TEST_P(AgentSecret, IsInNoMemoryThatABadCallFrees)
{
    AnswerWithSecret();
    Message call("net.example.Client", "/agent", "net.connman.Agent", "RequestInput");
    ListData::Properties previous;
    previous["Value"] = ListData::Text(GetParam());
    call.Add(Data::MakeObjectPath("/service"))
        .Add(AgentData::Fields({{"PreviousPassphrase", previous}}));
    EXPECT_EQ(CountLeaks(call), 0U);
    EXPECT_EQ(TestSupport::HostLog::GetMessages().size(), 1U);
    EXPECT_FALSE(TestSupport::HostLog::Mentions(GetParam()));
}

TEST_P(AgentSecret, IsInNoMemoryThatACallFreesWhoseCallbackThrows)
{
    impl.SetOnAgentRequest(
        [](const std::string&, const auto&) -> std::map<std::string, std::string> {
            throw std::runtime_error("no");
        });
    EXPECT_EQ(CountLeaks(MakeCall()), 0U);
}

} // namespace Tovra
