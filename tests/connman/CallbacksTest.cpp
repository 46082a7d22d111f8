#include "tests/connman/OfflineClient.h"

#include <functional>
#include <gmock/gmock.h>

namespace Tovra
{

using DBus::Data;
using ListData::Entry;
using ListData::List;
using ListData::Paths;
using ListData::TechnologyProperties;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

constexpr unsigned int nAll = 0xFFFFFFFF;

} // namespace

class Callbacks : public OfflineClient
{
protected:
    struct Cause {
        const char* sName;
        unsigned int word;
        std::function<void()> fn;
    };

    const std::vector<Cause> vecCauses{
        {"technologies", 2, [this] { client.UpdateTechnologies(List({})); }},
        {"no technologies", 2, [this] { client.UpdateTechnologies(Data()); }},
        {"services", 4, [this] { UpdateNetworks({{"/s"}}, ConnMan::None); }},
        {"no services", 4, [this] { client.UpdateNetworks(Data(), ConnMan::None); }},
        {"services after a change of state", 5,
         [this] { UpdateNetworks({{"/s"}}, ConnMan::ServiceStateChanged); }},
        {"no services after a change of state", 5,
         [this] { client.UpdateNetworks(Data(), ConnMan::ServiceStateChanged); }},
        {"strength", 8, [this] { ChangeStrength("/s", 50); }},
        {"strength of an unknown service", 8, [this] { ChangeStrength("/unknown", 50); }},
    };
};

TEST_F(Callbacks, ReceiveTheWordOfTheCauseWhereTheirMaskSharesABit)
{
    std::vector<unsigned int> vecMasks{nAll, 0x10, 0xFFFFFFF0, 0x80000000, 0xFFFFFFF7};
    for (unsigned int mask = 0; mask < 16; ++mask)
        vecMasks.push_back(mask);
    for (const unsigned int mask : vecMasks)
        Register(mask, "mask " + std::to_string(mask) + " word ");

    for (const Cause& cause : vecCauses) {
        std::vector<std::string> vecExpected;
        for (const unsigned int mask : vecMasks) {
            if (mask & cause.word)
                vecExpected.push_back("mask " + std::to_string(mask) + " word " +
                                      std::to_string(cause.word));
        }
        vecDone.clear();
        cause.fn();
        EXPECT_EQ(vecDone, vecExpected) << cause.sName;
    }
}

TEST_F(Callbacks, OfMaskZeroAreNeverCalled)
{
    Register(0);
    for (const Cause& cause : vecCauses) {
        cause.fn();
        EXPECT_THAT(vecDone, IsEmpty()) << cause.sName;
    }
}

TEST_F(Callbacks, AreCalledInTheOrderOfRegistration)
{
    for (const char* pName : {"c", "a", "b", "a"})
        Register(nAll, pName);
    for (const Cause& cause : vecCauses) {
        const std::string sWord = std::to_string(cause.word);
        vecDone.clear();
        cause.fn();
        EXPECT_THAT(vecDone, ElementsAre("c" + sWord, "a" + sWord, "b" + sWord, "a" + sWord))
            << cause.sName;
    }
}

TEST_F(Callbacks, RegisteredByACallbackAreCalledFromTheNextChangeOn)
{
    client.SetOnNetworksChanged([this](unsigned int) { Register(nAll, "later "); }, 2);
    client.UpdateTechnologies(Data());
    EXPECT_THAT(vecDone, IsEmpty());
    UpdateNetworks({});
    EXPECT_THAT(vecDone, ElementsAre("later 4"));
}

TEST_F(Callbacks, AreCopies)
{
    ConnMan::ChangedFunction fn = [this](unsigned int) { vecDone.push_back("first"); };
    client.SetOnNetworksChanged(fn, nAll);
    fn = nullptr;
    UpdateNetworks({});
    EXPECT_THAT(vecDone, ElementsAre("first"));
}

TEST_F(Callbacks, ThatAreEmptyThrowWhenTheirTurnComes)
{
    Register(nAll, "first ");
    client.SetOnNetworksChanged(nullptr, 4);
    Register(nAll, "last ");
    EXPECT_THROW(UpdateNetworks({}), std::bad_function_call);
    EXPECT_THAT(vecDone, ElementsAre("first 4"));
    client.UpdateTechnologies(Data());
    EXPECT_THAT(vecDone, ElementsAre("first 4", "first 2", "last 2"));
}

TEST_F(Callbacks, SeeTheNewListsAndMayAskForThemUnlessTheStrengthChanged)
{
    std::vector<std::string> vecSeen;
    client.SetOnNetworksChanged(
        [&](unsigned int word) {
            vecSeen.push_back(std::to_string(word));
            for (const std::string& sPath : Paths(client.GetNetworks()))
                vecSeen.push_back(sPath);
            for (const std::string& sPath : Paths(client.GetTechnologies()))
                vecSeen.push_back(sPath);
        },
        2 | 4 | 5);
    UpdateNetworks({{"/s"}});
    client.UpdateTechnologies(List({Entry("/t", TechnologyProperties("WiFi"))}));
    UpdateNetworks({{"/r"}}, ConnMan::ServiceStateChanged);
    EXPECT_THAT(vecSeen, ElementsAre("4", "/s", "2", "/s", "/t", "5", "/r", "/t"));
}

} // namespace Tovra
