#include "Common/AgentFields.h"
#include "tests/connman/AgentData.h"
#include "tests/support/DataText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <typeinfo>

namespace Tovra::AgentFields
{

using AgentData::Field;
using AgentData::Fields;
using DBus::Data;
using ListData::Properties;
using ListData::Text;
using RecordChange::Change;
using RecordChange::Kind;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

struct Reading {
    std::vector<std::string> vecRequests; ///< "field: type, requirement (alternates)"
    unsigned nRetries = 0;
};

Reading ReadFields(const Data& fields)
{
    Reading reading;
    for (const auto& [sName, request] : Read(fields, [&] { ++reading.nRetries; })) {
        std::string sText = sName + ": " + request.sType + ", " + request.sRequirement + " (";
        for (const std::string& sAlternate : request.vecAlternates)
            sText += sAlternate + ",";
        reading.vecRequests.push_back(sText + ")");
    }
    return reading;
}

Reading ReadOne(const Properties& properties, const std::string& sName = "Passphrase")
{
    return ReadFields(Fields({{sName, properties}}));
}

Properties Passphrase()
{
    Properties properties = Field("psk", "mandatory");
    properties["Alternates"] = RecordChange::MakeTexts({"WPS"});
    return properties;
}

} // namespace

// --- Reading ----------------------------------------------------------------------------------

TEST(AgentFieldsReading, AFieldIsItsTypeItsRequirementAndItsAlternates)
{
    EXPECT_THAT(ReadOne(Passphrase()).vecRequests,
                ElementsAre("Passphrase: psk, mandatory (WPS,)"));
}

TEST(AgentFieldsReading, FieldsAreReadByTheirName)
{
    const Data fields = Fields({{"WPS", Field("wpspin", "alternate")},
                                {"Passphrase", Passphrase()},
                                {"Name", Field("string", "optional")}});
    EXPECT_THAT(ReadFields(fields).vecRequests,
                ElementsAre("Name: string, optional ()", "Passphrase: psk, mandatory (WPS,)",
                            "WPS: wpspin, alternate ()"));
}

TEST(AgentFieldsReading, AlternatesKeepTheirOrder)
{
    Properties properties = Passphrase();
    properties["Alternates"] = RecordChange::MakeTexts({"Z", "A", "Z", ""});
    EXPECT_THAT(ReadOne(properties).vecRequests,
                ElementsAre("Passphrase: psk, mandatory (Z,A,Z,,)"));
}

TEST(AgentFieldsReading, ARetryTellsThePreviousPassphraseAndDoesNotAskForIt)
{
    const Data fields = Fields({{"Passphrase", Field("psk", "mandatory")},
                                {"PreviousPassphrase", Field("psk", "informational")}});
    const Reading reading = ReadFields(fields);
    EXPECT_THAT(reading.vecRequests, ElementsAre("Passphrase: psk, mandatory ()"));
    EXPECT_EQ(reading.nRetries, 1U);
}

TEST(AgentFieldsReading, OtherInformationIsNeitherARetryNorAskedFor)
{
    for (const char* pName :
         {"VpnHost", "previouspassphrase", "PreviousPassphrase2", "Passphrase"}) {
        const Reading reading = ReadOne(Field("string", "informational"), pName);
        EXPECT_THAT(reading.vecRequests, IsEmpty()) << pName;
        EXPECT_EQ(reading.nRetries, 0U) << pName;
    }
}

TEST(AgentFieldsReading, APreviousPassphraseThatDoesNotOnlyInformIsAskedFor)
{
    const Reading reading = ReadOne(Field("psk", "mandatory"), "PreviousPassphrase");
    EXPECT_THAT(reading.vecRequests, ElementsAre("PreviousPassphrase: psk, mandatory ()"));
    EXPECT_EQ(reading.nRetries, 0U);
}

TEST(AgentFieldsReading, OnlyTheExactWordInformationalInforms)
{
    for (const char* pRequirement : {"Informational", "informational ", "information", ""}) {
        const Reading reading = ReadOne(Field("psk", pRequirement), "PreviousPassphrase");
        EXPECT_EQ(reading.vecRequests.size(), 1U) << pRequirement;
        EXPECT_EQ(reading.nRetries, 0U) << pRequirement;
    }
}

TEST(AgentFieldsReading, AFieldThatOnlyInformsNeedsNoType)
{
    Properties properties = Field("psk", "informational");
    properties.erase("Type");
    EXPECT_THAT(ReadOne(properties).vecRequests, IsEmpty());
    properties["Type"] = Data::MakeUInt32(1);
    EXPECT_THAT(ReadOne(properties).vecRequests, IsEmpty());
}

TEST(AgentFieldsReading, OtherEntriesOfAFieldDoNotMatter)
{
    Properties properties = Passphrase();
    properties["Value"] = Data::MakeUInt32(7);
    properties["Requirements"] = Text("informational");
    EXPECT_THAT(ReadOne(properties).vecRequests, ElementsAre("Passphrase: psk, mandatory (WPS,)"));
}

class MissingAlternates : public testing::TestWithParam<Kind>
{
};

TEST_P(MissingAlternates, AreNone)
{
    const Properties properties = RecordChange::Changed(Passphrase(), {"Alternates", GetParam()});
    EXPECT_THAT(ReadOne(properties).vecRequests, ElementsAre("Passphrase: psk, mandatory ()"));
}

INSTANTIATE_TEST_SUITE_P(When, MissingAlternates,
                         testing::Values(Kind::Missing, Kind::Empty, Kind::Invalid, Kind::Text,
                                         Kind::Number, Kind::Flag, Kind::Path, Kind::EmptyTexts,
                                         Kind::Section),
                         RecordChange::GetKindTestName);

class BadField : public testing::TestWithParam<Change>
{
};

TEST_P(BadField, ThrowsBadCast)
{
    const Properties properties = RecordChange::Changed(Passphrase(), GetParam());
    EXPECT_THROW(ReadOne(properties), std::bad_cast);
}

INSTANTIATE_TEST_SUITE_P(
    With, BadField,
    testing::Values(Change{"Requirement", Kind::Missing}, Change{"Requirement", Kind::Empty},
                    Change{"Requirement", Kind::Number}, Change{"Requirement", Kind::Path},
                    Change{"Type", Kind::Missing}, Change{"Type", Kind::Flag},
                    Change{"Type", Kind::Path}, Change{"Type", Kind::Invalid},
                    Change{"Alternates", Kind::TextsAndNumber},
                    Change{"Alternates", Kind::TextsAfterInvalid},
                    Change{"Alternates", Kind::Paths}, Change{"Alternates", Kind::ListOfTexts}),
    RecordChange::GetTestName);

TEST(AgentFieldsReading, AFieldThatIsNoDictionaryThrowsBadCast)
{
    for (const Kind kind : {Kind::Empty, Kind::Text, Kind::Texts, Kind::Number, Kind::Invalid}) {
        const Data fields =
            Data::MakeDictionary(Data::Variant, {{"Passphrase", RecordChange::MakeValue(kind)}});
        EXPECT_THROW(ReadFields(fields), std::bad_cast);
    }
}

TEST(AgentFieldsReading, WhatIsNoDictionaryOfFieldsThrowsBadCast)
{
    for (const Kind kind : {Kind::Empty, Kind::Text, Kind::Texts, Kind::Number, Kind::Invalid})
        EXPECT_THROW(ReadFields(RecordChange::MakeValue(kind)), std::bad_cast);
}

// --- Answering --------------------------------------------------------------------------------

TEST(AgentAnswer, IsADictionaryOfTextsInVariants)
{
    EXPECT_EQ(TestSupport::Describe(MakeAnswer({{"Passphrase", "secret"}, {"Name", "Blue Net"}})),
              R"(Dictionary of Variant {"Name": <String "Blue Net">, )"
              R"("Passphrase": <String "secret">})");
}

TEST(AgentAnswer, MayBeEmpty)
{
    EXPECT_EQ(TestSupport::Describe(MakeAnswer({})), "Dictionary of Variant {}");
}

TEST(AgentAnswer, KeepsEmptyTexts)
{
    EXPECT_EQ(TestSupport::Describe(MakeAnswer({{"WPS", ""}})),
              R"(Dictionary of Variant {"WPS": <String "">})");
}

} // namespace Tovra::AgentFields
