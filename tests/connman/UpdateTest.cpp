#include "tests/connman/OfflineClient.h"

#include <gmock/gmock.h>
#include <new>

namespace Tovra
{

using DBus::Data;
using ListData::Entry;
using ListData::List;
using ListData::Paths;
using ListData::ServiceProperties;
using ListData::TechnologyProperties;
using testing::ElementsAre;
using testing::IsEmpty;

namespace HostLog = TestSupport::HostLog;

namespace
{

constexpr unsigned int nAll = 0xFFFFFFFF;

} // namespace

// --- The service list -------------------------------------------------------------------------

class NetworksUpdate : public OfflineClient
{
};

TEST_F(NetworksUpdate, ReplacesTheWholeListInConnMansOrder)
{
    UpdateNetworks({{"/b"}, {"/a"}});
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/b", "/a"));
    UpdateNetworks({{"/a"}, {"/c"}});
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/a", "/c"));
}

TEST_F(NetworksUpdate, HandsOutCopies)
{
    UpdateNetworks({{"/s", "idle"}});
    client.GetNetworks()[0].sState = "changed";
    EXPECT_EQ(client.GetNetworks()[0].sState, "idle");
}

TEST_F(NetworksUpdate, LeavesTheTechnologiesAlone)
{
    client.UpdateTechnologies(List({Entry("/t", TechnologyProperties("WiFi"))}));
    UpdateNetworks({{"/s"}});
    EXPECT_THAT(Paths(client.GetTechnologies()), ElementsAre("/t"));
}

TEST_F(NetworksUpdate, KeepsARecordOfWhichTheNewListSaysNothing)
{
    UpdateNetworks({{"/s", "ready", "10.0.0.1", "manual", "Home"}, {"/gone"}});
    client.UpdateNetworks(List({ListData::UnchangedEntry("/s")}), ConnMan::ServiceStateChanged);
    client.UpdateNetworks(List({ListData::UnchangedEntry("/s")}), ConnMan::ServiceStateChanged);
    const auto vecServices = client.GetNetworks();
    ASSERT_THAT(Paths(vecServices), ElementsAre("/s"));
    EXPECT_EQ(vecServices[0].sName, "Home");
    EXPECT_EQ(vecServices[0].sIPv4Address, "10.0.0.1");
}

TEST_F(NetworksUpdate, DropsAnUnknownServiceOfWhichTheNewListSaysNothing)
{
    UpdateNetworks({{"/s"}});
    client.UpdateNetworks(
        List({ListData::UnchangedEntry("/unknown"), ListData::UnchangedEntry("/s")}), 0);
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/s"));
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(NetworksUpdate, KeepsTheStrengthThatASignalBrought)
{
    UpdateNetworks({{"/s"}});
    ChangeStrength("/s", 42);
    client.UpdateNetworks(List({ListData::UnchangedEntry("/s")}), 0);
    EXPECT_EQ(client.GetNetworks()[0].nStrength, 42U);
}

TEST_F(NetworksUpdate, OfAPathThatComesTwiceTheLaterRecordIsTheKnownOne)
{
    UpdateNetworks({{"/s", "idle"}, {"/s", "failure"}});
    ChangeStrength("/s", 42);
    const auto vecServices = client.GetNetworks();
    ASSERT_THAT(Paths(vecServices), ElementsAre("/s", "/s"));
    EXPECT_EQ(vecServices[0].nStrength, 255U);
    EXPECT_EQ(vecServices[1].nStrength, 42U);

    client.UpdateNetworks(List({ListData::UnchangedEntry("/s")}), 0);
    ASSERT_THAT(Paths(client.GetNetworks()), ElementsAre("/s"));
    EXPECT_EQ(client.GetNetworks()[0].sState, "failure");
}

TEST_F(NetworksUpdate, ForgetsTheServicesOfThePreviousListForStrength)
{
    UpdateNetworks({{"/old"}});
    UpdateNetworks({{"/new"}});
    ChangeStrength("/old", 42);
    EXPECT_EQ(client.GetNetworks()[0].nStrength, 255U);
}

TEST_F(NetworksUpdate, ReportsAndSkipsEachEntryOfAnotherShape)
{
    auto withoutType = ServiceProperties({"/b"});
    withoutType.erase("Type");
    Register(nAll);
    client.UpdateNetworks(List({Data::MakeBool(true), Entry("/b", withoutType),
                                Entry("/c", ServiceProperties({"/c"}))}),
                          0);
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/c"));
    EXPECT_THAT(vecDone, ElementsAre("4"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("UpdateNetworks"),
                                                    ClientLog::BadVersion("UpdateNetworks")));
}

TEST_F(NetworksUpdate, ReportsNothingWhileErrorsAreNotLogged)
{
    HostLog::SetActive(QelLogError, false);
    client.UpdateNetworks(List({Data::MakeBool(true)}), 0);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(NetworksUpdate, BuildsTheRecordsWithoutTheLock)
{
    UpdateNetworks({{"/s"}});
    std::vector<std::string> vecSeen;
    HostLog::SetOnMessage([&](const auto&) { vecSeen = Paths(client.GetNetworks()); });
    client.UpdateNetworks(List({Data::MakeBool(true)}), 0);
    EXPECT_THAT(vecSeen, ElementsAre("/s")); // still the previous list
}

TEST_F(NetworksUpdate, ThatFailsLeavesTheListAndCallsNobody)
{
    UpdateNetworks({{"/s", "ready"}});
    Register(nAll);
    vecDone.clear();
    HostLog::SetOnMessage([](const auto&) { throw std::bad_alloc(); });
    EXPECT_THROW(client.UpdateNetworks(List({Data::MakeBool(true)}), 0), std::bad_alloc);
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/s"));
    EXPECT_THAT(vecDone, IsEmpty());
    ChangeStrength("/s", 42); // the index is the previous one too
    EXPECT_EQ(client.GetNetworks()[0].nStrength, 42U);
}

TEST_F(NetworksUpdate, ThatFailsWhileItComparesReleasesTheLock)
{
    UpdateNetworks({{"/s", "ready"}});
    HostLog::SetOnMessage([](const auto& message) {
        if (message.nLine == 338)
            throw std::bad_alloc();
    });
    EXPECT_THROW(UpdateNetworks({{"/t", "ready"}}), std::bad_alloc);
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/s"));
}

// --- The technology list ----------------------------------------------------------------------

class TechnologiesUpdate : public OfflineClient
{
};

TEST_F(TechnologiesUpdate, ReplacesTheWholeListInConnMansOrder)
{
    client.UpdateTechnologies(List(
        {Entry("/b", TechnologyProperties("B")), Entry("/a", TechnologyProperties("A", false))}));
    EXPECT_THAT(Paths(client.GetTechnologies()), ElementsAre("/b", "/a"));
    client.UpdateTechnologies(List({Entry("/c", TechnologyProperties("C"))}));
    EXPECT_THAT(Paths(client.GetTechnologies()), ElementsAre("/c"));
}

TEST_F(TechnologiesUpdate, LeavesTheServicesAlone)
{
    UpdateNetworks({{"/s"}});
    client.UpdateTechnologies(List({Entry("/t", TechnologyProperties("WiFi"))}));
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/s"));
}

TEST_F(TechnologiesUpdate, WhatIsNoArrayOrHasNoEntriesEmptiesTheList)
{
    Register(nAll);
    for (const Data& none : {Data(), Data::MakeString("text"), List({})}) {
        client.UpdateTechnologies(List({Entry("/t", TechnologyProperties("WiFi"))}));
        vecDone.clear();
        client.UpdateTechnologies(none);
        EXPECT_THAT(client.GetTechnologies(), IsEmpty());
        EXPECT_THAT(vecDone, ElementsAre("2"));
    }
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(TechnologiesUpdate, ReportsAndSkipsOneWithoutPowered)
{
    auto withoutPowered = TechnologyProperties("B");
    withoutPowered.erase("Powered");
    Register(nAll);
    client.UpdateTechnologies(
        List({Entry("/a", TechnologyProperties("A")), Entry("/b", withoutPowered),
              Entry("/c", TechnologyProperties("C"))}));
    EXPECT_THAT(Paths(client.GetTechnologies()), ElementsAre("/a", "/c"));
    EXPECT_THAT(vecDone, ElementsAre("2"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("UpdateTechnologies")));
}

TEST_F(TechnologiesUpdate, ReportsOneThatSaysNothing)
{
    client.UpdateTechnologies(List({Entry("/t", TechnologyProperties("WiFi"))}));
    client.UpdateTechnologies(List({ListData::UnchangedEntry("/t")}));
    EXPECT_THAT(client.GetTechnologies(), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("UpdateTechnologies")));
}

TEST_F(TechnologiesUpdate, ThatFailsLeavesTheListAndCallsNobody)
{
    client.UpdateTechnologies(List({Entry("/t", TechnologyProperties("WiFi"))}));
    Register(nAll);
    HostLog::SetOnMessage([](const auto&) { throw std::bad_alloc(); });
    EXPECT_THROW(client.UpdateTechnologies(List({Data()})), std::bad_alloc);
    EXPECT_THAT(Paths(client.GetTechnologies()), ElementsAre("/t"));
    EXPECT_THAT(vecDone, IsEmpty());
}

// --- The property signal ----------------------------------------------------------------------

class ServicePropertySignal : public OfflineClient
{
};

TEST_F(ServicePropertySignal, ChangesTheStrengthOfItsServiceAlone)
{
    UpdateNetworks({{"/a"}, {"/b"}});
    Register(nAll);
    ChangeStrength("/b", 0);
    EXPECT_EQ(client.GetNetworks()[0].nStrength, 255U);
    EXPECT_EQ(client.GetNetworks()[1].nStrength, 0U);
    EXPECT_THAT(vecDone, ElementsAre("8"));
}

TEST_F(ServicePropertySignal, OfAnUnknownServiceChangesNoRecordButCallsAllTheSame)
{
    UpdateNetworks({{"/a"}});
    Register(nAll);
    ChangeStrength("/unknown", 7);
    EXPECT_EQ(client.GetNetworks()[0].nStrength, 255U);
    EXPECT_THAT(vecDone, ElementsAre("8"));
}

TEST_F(ServicePropertySignal, OfAnotherShapeIsReportedAndDropped)
{
    const Data strength = Data::MakeString("Strength");
    const std::vector<DBus::Message> vecBad{
        PropertyChanged(Data::MakeUInt32(1), Data::MakeUInt32(2)),
        PropertyChanged(Data::MakeObjectPath("/State"), Data::MakeString("x")),
        PropertyChanged(Data::MakeBool(true), Data::MakeUInt32(2)),
        PropertyChanged(Data::MakeStringArray({"Strength"}), Data::MakeUInt32(2)),
        PropertyChanged(strength, Data::MakeString("42")),
        PropertyChanged(strength, Data::MakeBool(true)),
        PropertyChanged(strength, Data()), // one argument
        PropertyChanged(Data(), Data()),   // none
    };
    UpdateNetworks({{"/s"}});
    Register(nAll);
    for (std::size_t nCase = 0; nCase < vecBad.size(); ++nCase) {
        HostLog::Reset();
        client.Signal_Service_PropertyChanged("/s", vecBad[nCase]);
        EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("PropertyChanged")))
            << "case " << nCase;
    }
    EXPECT_EQ(client.GetNetworks()[0].nStrength, 255U);
    EXPECT_THAT(vecDone, IsEmpty());
}

TEST_F(ServicePropertySignal, ABadCastOfACallbackIsNoIncompatibleVersion)
{
    client.SetOnNetworksChanged([](unsigned int) { throw std::bad_cast(); }, nAll);
    EXPECT_THROW(ChangeStrength("/s", 1), std::bad_cast);
    EXPECT_THROW(UpdateNetworks({}), std::bad_cast);
    EXPECT_THROW(client.UpdateTechnologies(Data()), std::bad_cast);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    EXPECT_THAT(client.GetNetworks(), IsEmpty()); // the lock was released
}

} // namespace Tovra
