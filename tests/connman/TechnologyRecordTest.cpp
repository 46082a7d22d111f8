#include "tests/connman/RecordChange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <type_traits>
#include <typeinfo>

namespace Tovra
{

using DBus::Data;
using RecordChange::Change;
using RecordChange::Changed;
using RecordChange::Kind;
using RecordChange::Properties;
using Technology = ConnMan::NetworkTechnology;

static_assert(std::is_copy_constructible_v<Technology> && std::is_copy_assignable_v<Technology>);
static_assert(std::is_default_constructible_v<ConnMan::AgentRequest> &&
              std::is_copy_constructible_v<ConnMan::AgentRequest>);
static_assert(std::is_same_v<std::underlying_type_t<ConnMan::NetworkChangedFlags>, unsigned int>);
static_assert(ConnMan::None == 0 && ConnMan::ServiceStateChanged == 1 &&
              ConnMan::TechnologiesChanged == 2 && ConnMan::ServicesUpdated == 4 &&
              ConnMan::StrengthChanged == 8);

namespace
{

Properties FullTechnology()
{
    return {
        {"Name", ListData::Text("Wireless")},
        {"Type", ListData::Text("wifi")},
        {"Powered", Data::MakeBool(true, true)},
        {"Connected", Data::MakeBool(false, true)},
    };
}

} // namespace

TEST(TechnologyRecord, HoldsEveryPropertyInItsField)
{
    Properties properties = FullTechnology();
    const Technology technology("/t", properties);
    EXPECT_EQ(technology.sPath, "/t");
    EXPECT_EQ(technology.sName, "Wireless");
    EXPECT_EQ(technology.sType, "wifi");
    EXPECT_TRUE(technology.bPowered);
    EXPECT_FALSE(technology.bConnected);
}

TEST(TechnologyRecord, TellsPoweredFromConnected)
{
    Properties properties = FullTechnology();
    properties["Powered"] = Data::MakeBool(false, true);
    properties["Connected"] = Data::MakeBool(true, true);
    const Technology technology("/t", properties);
    EXPECT_FALSE(technology.bPowered);
    EXPECT_TRUE(technology.bConnected);
}

TEST(TechnologyRecord, IgnoresWhatItDoesNotKnow)
{
    Properties properties = FullTechnology();
    properties["TetheringFreq"] = RecordChange::MakeValue(Kind::Invalid);
    EXPECT_EQ(Technology("/t", properties).sName, "Wireless");
}

TEST(TechnologyRecord, IsIndependentOfItsDictionaryAndOfItsCopies)
{
    Properties properties = FullTechnology();
    const Technology technology("/t", properties);
    Technology copy = technology;
    properties["Name"] = ListData::Text("changed");
    copy.sName = "other";
    copy.bPowered = false;
    EXPECT_EQ(technology.sName, "Wireless");
    EXPECT_TRUE(technology.bPowered);
}

class BadTechnology : public testing::TestWithParam<Change>
{
};

TEST_P(BadTechnology, ThrowsBadCast)
{
    Properties properties = Changed(FullTechnology(), GetParam());
    EXPECT_THROW(Technology("/t", properties), std::bad_cast);
}

INSTANTIATE_TEST_SUITE_P(
    With, BadTechnology,
    testing::Values(Change{"Name", Kind::Missing}, Change{"Name", Kind::Number},
                    Change{"Name", Kind::Empty}, Change{"Type", Kind::Missing},
                    Change{"Type", Kind::Path}, Change{"Powered", Kind::Missing},
                    Change{"Powered", Kind::Text}, Change{"Powered", Kind::Number},
                    Change{"Powered", Kind::Empty}, Change{"Connected", Kind::Missing},
                    Change{"Connected", Kind::Number}, Change{"Connected", Kind::Invalid}),
    RecordChange::GetTestName);

class TechnologyKey : public testing::TestWithParam<const char*>
{
};

TEST_P(TechnologyKey, IsAddedToTheCallersDictionaryHoldingEmpty)
{
    Properties properties = Changed(FullTechnology(), {GetParam(), Kind::Missing});
    EXPECT_THROW(Technology("/t", properties), std::bad_cast);
    EXPECT_EQ(RecordChange::Describe(properties),
              RecordChange::Describe(Changed(FullTechnology(), {GetParam(), Kind::Empty})));
}

INSTANTIATE_TEST_SUITE_P(At, TechnologyKey, testing::Values("Name", "Type", "Powered", "Connected"),
                         RecordChange::GetKeyTestName);

TEST(AgentRequestRecord, IsEmptyAtFirst)
{
    const ConnMan::AgentRequest request;
    EXPECT_EQ(request.sType, "");
    EXPECT_EQ(request.sRequirement, "");
    EXPECT_THAT(request.vecAlternates, testing::IsEmpty());
}

} // namespace Tovra
