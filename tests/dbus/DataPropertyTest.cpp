#include "Include/D-Bus.h"
#include "tests/support/Counts.h"
#include "tests/support/DataExpectation.h"
#include "tests/support/DataText.h"
#include "tests/support/DataTrees.h"
#include "tests/support/Dispatching.h"
#include "tests/support/PeerTest.h"

#include <cstdlib>
#include <dbus/dbus.h>
#include <gtest/gtest.h>
#include <iostream>
#include <rapidcheck.h>

namespace Tovra::DBus
{

namespace
{

using TestSupport::Describe;
using TestSupport::Expectation;

constexpr int nFull = 100000;
constexpr int nTrees = TestSupport::ReduceCount(nFull, nFull, nFull / 10);
constexpr int nFewerTrees = TestSupport::ReduceCount(nFull, nFull / 4, nFull / 10);

// Trees go to the bus in groups, which costs far fewer changes of process; short enough a group
// for its failures to be shrunk quickly.
constexpr int nGroup = 100;

using Bytes = std::vector<std::uint8_t>;

/** Checks `fnCheck` with groups of what decides about trees, and prints how many trees that were.
 */
void CheckTrees(int nWanted, const char* pWhat,
                const std::function<void(const std::vector<Bytes>&)>& fnCheck)
{
    // rapidcheck reads it once, when the first property is checked.
    setenv("RC_PARAMS", ("max_success=" + std::to_string(nWanted / nGroup)).c_str(), 0);
    int nRan = 0;
    EXPECT_TRUE(rc::check([&] {
        const auto vecGroup = *rc::gen::container<std::vector<Bytes>>(
            nGroup, rc::gen::scale(4.0, rc::gen::arbitrary<Bytes>()));
        fnCheck(vecGroup);
        nRan += nGroup;
    }));
    TestSupport::PrintCount(pWhat, nRan, nFull);
}

std::vector<Data> MakeTrees(const std::vector<Bytes>& vecGroup,
                            Data (*fnMake)(TestSupport::Choices&))
{
    std::vector<Data> vecTrees;
    for (const Bytes& bytes : vecGroup) {
        TestSupport::Choices choices(bytes);
        vecTrees.push_back(fnMake(choices));
    }
    return vecTrees;
}

/** A connection that sends messages to itself, through the bus. */
class DataProperty : public testing::Test
{
protected:
    DataProperty()
    {
        connection.RegisterObject("/self",
                                  [this](const auto&, const auto&, const Message& message) {
                                      vecArrived.push_back(message);
                                      return true;
                                  });
    }

    ~DataProperty() override { dbus_connection_unregister_object_path(connection.Get(), "/self"); }

    Message NewCall() const
    {
        const char* const pOwn = dbus_bus_get_unique_name(connection.Get());
        return Message(pOwn, "/self", "net.example.Self", "Take").SetNoReply();
    }

    /** What arrives of these, in their order. */
    std::vector<Message> Travel(const std::vector<Message>& vecMessages)
    {
        vecArrived.clear();
        for (const Message& message : vecMessages)
            connection.Send(message);
        TestSupport::DispatchUntil(connection, [&] {
            return vecArrived.size() == vecMessages.size() ||
                   !dbus_connection_get_is_connected(connection.Get());
        });
        RC_ASSERT(dbus_connection_get_is_connected(connection.Get()));
        RC_ASSERT(vecArrived.size() == vecMessages.size());
        return vecArrived;
    }

    Connection connection = Connection::SystemBus();

private:
    std::vector<Message> vecArrived;
};

} // namespace

TEST_F(DataProperty, EveryTreeThatCanBeSentIsReadBackAsTheRulesPromise)
{
    CheckTrees(nTrees, "trees", [&](const std::vector<Bytes>& vecGroup) {
        const std::vector<Data> vecTrees = MakeTrees(vecGroup, TestSupport::MakeSendableTree);
        std::vector<Message> vecMessages;
        for (const Data& tree : vecTrees)
            vecMessages.push_back(NewCall().Add(tree));
        const std::vector<Message> vecRead = Travel(vecMessages);
        for (std::size_t nTree = 0; nTree < vecTrees.size(); ++nTree) {
            RC_LOG() << Describe(vecTrees[nTree]) << std::endl;
            RC_ASSERT(vecRead[nTree].Contents(0).size() == 1u);
            RC_ASSERT(Describe(vecRead[nTree].Contents()) ==
                      Describe(Expectation(vecTrees[nTree]).value()));
        }
    });
}

TEST_F(DataProperty, EveryTreeAtAllLeavesTheMessageAsItWasOrOneThatTheBusDelivers)
{
    int nRefused = 0;
    int nWritten = 0;
    CheckTrees(nFewerTrees, "trees at all", [&](const std::vector<Bytes>& vecGroup) {
        const std::vector<Data> vecTrees = MakeTrees(vecGroup, TestSupport::MakeAnyTree);
        std::vector<Message> vecMessages;
        std::vector<std::string> vecExpected;
        for (const Data& tree : vecTrees) {
            RC_LOG() << Describe(tree) << std::endl;
            std::vector<Data> vecArguments = {Data::MakeString("before"), Data::MakeUInt32(1)};
            Message message = NewCall().Add(vecArguments[0]);
            const std::string sBefore = TestSupport::Marshal(message);
            message.Add(tree);
            const std::optional<Data> expected = Expectation(tree);
            if (expected)
                vecArguments.insert(vecArguments.begin() + 1, *expected);
            RC_ASSERT((TestSupport::Marshal(message) == sBefore) == !expected);
            ++(expected ? nWritten : nRefused);
            vecMessages.push_back(message.Add(vecArguments.back()));
            vecExpected.push_back(Describe(vecArguments));
        }
        const std::vector<Message> vecRead = Travel(vecMessages);
        for (std::size_t nTree = 0; nTree < vecTrees.size(); ++nTree)
            RC_ASSERT(Describe(vecRead[nTree].Contents(0)) == vecExpected[nTree]);
    });
    std::cout << "[ SHARE    ] refused " << nRefused << ", written " << nWritten << std::endl;
    EXPECT_GT(10 * nRefused, nWritten) << "too few trees have a flaw";
    EXPECT_GT(10 * nWritten, nRefused) << "too few trees can be sent";
}

TEST_F(DataProperty, EveryTreeMayBeAssignedFromEveryOther)
{
    CheckTrees(nFewerTrees, "trees assigned", [&](const std::vector<Bytes>& vecGroup) {
        std::vector<Data> vecTrees = MakeTrees(vecGroup, TestSupport::MakeAnyTree);
        for (std::size_t nTree = 1; nTree < vecTrees.size(); ++nTree) {
            const Data source = vecTrees[nTree];
            Data target = vecTrees[nTree - 1];
            target = source;
            RC_ASSERT(Describe(target) == Describe(source));
            vecTrees[nTree - 1] = std::move(target);
            RC_ASSERT(Describe(vecTrees[nTree - 1]) == Describe(vecTrees[nTree]));
            RC_ASSERT(Describe(target) == "Empty");
        }
    });
}

} // namespace Tovra::DBus
