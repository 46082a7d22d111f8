#include "Include/D-Bus.h"
#include "tests/dbus/Allocation.h"
#include "tests/support/DataText.h"
#include "tests/support/PeerTest.h"

#include <functional>
#include <gtest/gtest.h>

namespace Tovra::DBus
{

namespace
{

using TestSupport::CountAllocations;
using TestSupport::Describe;
using TestSupport::FailEachAllocation;

const std::string sLong(100, 'x');

Data MakeTree()
{
    const Data list = Data::MakeStringArray({"short", sLong}).SetVariant(true);
    const Data inner =
        Data::MakeDictionary(Data::Variant, {{"a", list}, {sLong, Data::MakeBool(true, true)}})
            .SetVariant(true);
    return Data::MakeDictionary(Data::Variant, {{"inner", inner}, {"list", list}});
}

/** Values of several shapes to assign to and from, each of which allocates. */
std::vector<Data> MakeSamples()
{
    const Data text = Data::MakeString(sLong, true);
    return {
        text,
        Data::MakeObjectPath("/" + sLong),
        Data::MakeStringArray({"a", sLong, "c"}),
        Data::MakeArray(Data::Variant, {text, Data::MakeBool(true, true)}),
        Data::MakeDictionary(Data::String, {{"k", Data::MakeString("v")}}),
        MakeTree(),
    };
}

} // namespace

TEST(DataAllocation, FlagsNumbersAndShortTextsNeedNone)
{
    const std::string sShort = "123456789012345";
    for (const auto& fnMake : std::vector<std::function<Data()>>{
             [] { return Data(); },
             [] { return Data::MakeBool(true, true); },
             [] { return Data::MakeUInt32(7); },
             [&] { return Data::MakeString(sShort); },
             [] { return Data::MakeObjectPath("/short"); },
         }) {
        EXPECT_EQ(CountAllocations([&] {
                      Data data = fnMake();
                      Data copy(data);
                      copy = data;
                      Data moved(std::move(copy));
                      copy = std::move(moved);
                      copy = Data();
                      copy = data;
                  }),
                  0)
            << Describe(fnMake());
    }
}

TEST(DataAllocation, ACopyNeedsWhatItsAlternativesNeed)
{
    const Data text = Data::MakeString(sLong);
    EXPECT_EQ(CountAllocations([&] { const Data copy(text); }), 1);
    const Data list = Data::MakeArray(Data::UInt32, {Data::MakeUInt32(1), Data::MakeUInt32(2)});
    EXPECT_EQ(CountAllocations([&] { const Data copy(list); }), 1);
    const Data map = Data::MakeDictionary(
        Data::Bool, {{"a", Data::MakeBool(true)}, {"b", Data::MakeBool(true)}});
    EXPECT_EQ(CountAllocations([&] { const Data copy(map); }), 2);
}

TEST(DataAllocation, AMoveNeedsNone)
{
    for (Data& source : MakeSamples()) {
        const std::string sBefore = Describe(source);
        EXPECT_EQ(CountAllocations([&] {
                      Data moved(std::move(source));
                      source = std::move(moved);
                  }),
                  0);
        EXPECT_EQ(Describe(source), sBefore);
    }
}

TEST(DataAllocation, ACopyThatFailsLeavesTheSourceAndNothingElse)
{
    const Data source = MakeTree();
    const std::string sSource = Describe(source);
    const long nFailures = FailEachAllocation([&] { const Data copy(source); },
                                              [&] { EXPECT_EQ(Describe(source), sSource); });
    EXPECT_GT(nFailures, 5);
}

TEST(DataAllocation, AnAssignmentThatFailsLeavesBothValuesAsTheyWere)
{
    for (const Data& source : MakeSamples()) {
        for (Data& target : MakeSamples()) {
            const std::string sSource = Describe(source);
            const std::string sTarget = Describe(target);
            const long nFailures = FailEachAllocation([&] { target = source; },
                                                      [&] {
                                                          EXPECT_EQ(Describe(source), sSource);
                                                          EXPECT_EQ(Describe(target), sTarget);
                                                      });
            EXPECT_GT(nFailures, 0) << sTarget << " = " << sSource;
            EXPECT_EQ(Describe(target), sSource);
        }
    }
}

TEST(DataAllocation, AValueWhoseAssignmentFailedCanBeAssignedAndDestroyed)
{
    const Data source = MakeTree();
    const Data other = Data::MakeString("other");
    FailEachAllocation(
        [&] {
            Data target = Data::MakeBool(true);
            try {
                target = source;
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(target.GetType(), Data::Bool);
                target = other;
                EXPECT_EQ(target.GetType(), Data::String);
                throw;
            }
        },
        [] {});
}

TEST(DataAllocation, AnAssignmentFromAnOwnElementThatFailsLeavesTheValueAsItWas)
{
    Data array = Data::MakeArray(Data::Variant, {MakeTree()});
    const std::string sBefore = Describe(array);
    EXPECT_GT(FailEachAllocation([&] { array = array.As<std::vector<Data>>()[0]; },
                                 [&] { EXPECT_EQ(Describe(array), sBefore); }),
              0);
    EXPECT_EQ(Describe(array), Describe(MakeTree()));
}

TEST(DataAllocation, AnAssignOfTheSameTypeThatFailsLeavesTheValueAsItWas)
{
    Data target = MakeTree();
    const Data source = Data::MakeDictionary(Data::String, {{sLong, Data::MakeString(sLong)}});
    const std::string sBefore = Describe(target);
    EXPECT_GT(FailEachAllocation([&] { target.Assign(source); },
                                 [&] { EXPECT_EQ(Describe(target), sBefore); }),
              0);
}

using DataReadingAllocation = TestSupport::PeerTest;

// What had been gathered is released: the leak checker sees to that.
TEST_F(DataReadingAllocation, AReadingThatFailsLeavesTheMessageToBeReadAgain)
{
    const auto fnFill = [](sd_bus_message* pMessage) {
        return sd_bus_message_append(pMessage, "a(oa{sv})a{ss}v", 2, "/first/path/that/is/long", 2,
                                     "a", "s", sLong.c_str(), sLong.c_str(), "as", 1, "x", "/b", 0,
                                     1, "k", sLong.c_str(), "v", "ao", 1, "/a");
    };
    const Message message = Receive(fnFill);
    const std::string sWhole = Describe(message.Contents(0));
    long nFailures = FailEachAllocation([&] { message.Contents(0); },
                                        [&] { EXPECT_EQ(Describe(message.Contents(0)), sWhole); });
    EXPECT_GT(nFailures, 10);
    nFailures = FailEachAllocation([&] { message.Contents(); },
                                   [&] { EXPECT_EQ(Describe(message.Contents(0)), sWhole); });
    EXPECT_GT(nFailures, 5);
}

} // namespace Tovra::DBus
