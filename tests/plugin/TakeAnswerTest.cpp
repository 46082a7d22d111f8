#include "Libraries/TargetSpecificKX22/Translation.h"

#include <gtest/gtest.h>

namespace Tovra::Translation
{

namespace
{

using Answer = std::map<std::string, std::string>;

struct AnswerCase {
    const char* sWhat;
    bool bUseWps;
    const char* sPassphrase;
    bool bWpsOffered;
    Answer mapAnswer;
    bool bUseWpsAfter;
    const char* sPassphraseAfter;
};

void PrintTo(const AnswerCase& theCase, std::ostream* pStream)
{
    *pStream << theCase.sWhat;
}

DeviceConfig::NetworkService MakeRecord(const AnswerCase& theCase)
{
    DeviceConfig::NetworkService record;
    record.sName = "My Net-1";
    record.bUseWps = theCase.bUseWps;
    record.sPassphrase = theCase.sPassphrase;
    return record;
}

} // namespace

class AgentAnswer : public testing::TestWithParam<AnswerCase>
{
};

TEST_P(AgentAnswer, IsAsInTheTableAndTakesItsCredential)
{
    DeviceConfig::NetworkService record = MakeRecord(GetParam());
    Answer mapAnswer;
    const bool bByWps = AnswersByWps(record, GetParam().bWpsOffered);
    EXPECT_EQ(bByWps, GetParam().mapAnswer.count("WPS") == 1);
    TakeAnswer(record, bByWps, mapAnswer);
    EXPECT_EQ(mapAnswer, GetParam().mapAnswer);
    EXPECT_EQ(record.bUseWps, GetParam().bUseWpsAfter);
    EXPECT_EQ(record.sPassphrase, GetParam().sPassphraseAfter);
}

TEST_P(AgentAnswer, IsThePassphraseThatIsLeftOrNoneTheSecondTime)
{
    DeviceConfig::NetworkService record = MakeRecord(GetParam());
    Answer mapFirst;
    TakeAnswer(record, AnswersByWps(record, GetParam().bWpsOffered), mapFirst);
    const Answer mapExpected{{"Name", "My Net-1"}, {"Passphrase", record.sPassphrase}};
    Answer mapSecond;
    ASSERT_FALSE(AnswersByWps(record, false));
    TakeAnswer(record, false, mapSecond);
    EXPECT_EQ(mapSecond, mapExpected);
    EXPECT_EQ(record.sPassphrase, "");
}

TEST(AgentAnswerCredential, IsOverwrittenInTheHostsRecord)
{
    for (const std::string& sSecret : {std::string("secret!!"), std::string(63, 's')}) {
        DeviceConfig::NetworkService record;
        record.sPassphrase = sSecret;
        const char* const pMemory = record.sPassphrase.data();
        Answer mapAnswer;
        TakeAnswer(record, false, mapAnswer);
        ASSERT_EQ(record.sPassphrase.data(), pMemory) << "the memory must still be the record's";
        EXPECT_EQ(std::string(pMemory, sSecret.size()), std::string(sSecret.size(), '\0'));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, AgentAnswer,
    testing::Values(
        AnswerCase{"APassphrase",
                   false,
                   "secret!!",
                   false,
                   {{"Name", "My Net-1"}, {"Passphrase", "secret!!"}},
                   false,
                   ""},
        AnswerCase{"APassphraseBesideAnOfferOfWps",
                   false,
                   "secret!!",
                   true,
                   {{"Name", "My Net-1"}, {"Passphrase", "secret!!"}},
                   false,
                   ""},
        AnswerCase{"NoPassphrase",
                   false,
                   "",
                   false,
                   {{"Name", "My Net-1"}, {"Passphrase", ""}},
                   false,
                   ""},
        AnswerCase{
            "WpsThatIsOffered", true, "", true, {{"Name", "My Net-1"}, {"WPS", ""}}, false, ""},
        AnswerCase{"WpsThatIsOfferedBesideAPassphrase",
                   true,
                   "secret!!",
                   true,
                   {{"Name", "My Net-1"}, {"WPS", ""}},
                   false,
                   "secret!!"},
        AnswerCase{"WpsThatIsNotOffered",
                   true,
                   "secret!!",
                   false,
                   {{"Name", "My Net-1"}, {"Passphrase", "secret!!"}},
                   true,
                   ""}),
    testing::PrintToStringParamName());

} // namespace Tovra::Translation
