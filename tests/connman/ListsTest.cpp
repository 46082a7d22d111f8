#include "Common/Lists.h"
#include "tests/connman/ListData.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <typeinfo>

namespace Tovra::Lists
{

using DBus::Data;
using ListData::Entry;
using ListData::List;
using ListData::Paths;
using ListData::Service;
using ListData::ServiceProperties;
using ListData::TechnologyProperties;
using ListData::Text;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/** What a list reads as, and how many of its entries were reported. */
template <class Record> struct Result {
    std::vector<Record> vecRecords;
    unsigned nReported = 0;
};

Result<ConnMan::NetworkService> Networks(const Data& services, const ServiceIndex& mapKnown = {})
{
    Result<ConnMan::NetworkService> result;
    result.vecRecords = ReadNetworks(services, mapKnown, [&] { ++result.nReported; });
    return result;
}

Result<ConnMan::NetworkTechnology> Technologies(const Data& technologies)
{
    Result<ConnMan::NetworkTechnology> result;
    result.vecRecords = ReadTechnologies(technologies, [&] { ++result.nReported; });
    return result;
}

ConnMan::NetworkService Record(const Service& service)
{
    auto properties = ServiceProperties(service);
    return ConnMan::NetworkService(service.sPath, properties);
}

/** An array of the element type, empty but for what its tag says. */
Data ArrayOf(Data::Type elementType)
{
    return Data::MakeArray(elementType, {Data()});
}

Data DictionaryOf(Data::Type elementType)
{
    return Data::MakeDictionary(elementType, ServiceProperties({"/kept"}));
}

/** A value that is Invalid, as one of a type that is not carried. */
Data MakeOfType(Data::Type type)
{
    switch (type) {
    case Data::Bool:
        return Data::MakeBool(true);
    case Data::UInt32:
        return Data::MakeUInt32(7);
    case Data::String:
        return Data::MakeString("text");
    case Data::ObjectPath:
        return Data::MakeObjectPath("/path");
    case Data::Dictionary:
        return DictionaryOf(Data::String);
    case Data::Array:
        return Data::MakeStringArray({"text"});
    default:
        return Data();
    }
}

} // namespace

// --- Reading services -------------------------------------------------------------------------

TEST(ReadingNetworks, RecordsStandInConnMansOrder)
{
    const auto result = Networks(ListData::Services({{"/c"}, {"/a"}, {"/b"}}));
    EXPECT_THAT(Paths(result.vecRecords), ElementsAre("/c", "/a", "/b"));
    EXPECT_EQ(result.nReported, 0U);
}

TEST(ReadingNetworks, ARecordHasThePropertiesOfItsEntry)
{
    const auto result =
        Networks(ListData::Services({{"/s", "ready", "10.0.0.1", "manual", "Home"}}));
    ASSERT_EQ(result.vecRecords.size(), 1U);
    const ConnMan::NetworkService& service = result.vecRecords.front();
    EXPECT_EQ(service.sPath, "/s");
    EXPECT_EQ(service.sState, "ready");
    EXPECT_EQ(service.sIPv4Address, "10.0.0.1");
    EXPECT_EQ(service.sIPv4Method, "manual");
    EXPECT_EQ(service.sName, "Home");
}

TEST(ReadingNetworks, AnArrayWithoutEntriesReadsAsAnEmptyList)
{
    const auto result = Networks(List({}));
    EXPECT_THAT(result.vecRecords, IsEmpty());
    EXPECT_EQ(result.nReported, 0U);
}

TEST(ReadingNetworks, RoomIsMadeForAllEntriesAtOnce)
{
    const auto result = Networks(ListData::Services({{"/a"}, {"/b"}, {"/c"}, {"/d"}, {"/e"}}));
    EXPECT_EQ(result.vecRecords.capacity(), 5U);
}

TEST(ReadingNetworks, WhatIsNoArrayThrowsABadCast)
{
    for (const Data::Type type :
         {Data::Empty, Data::Bool, Data::UInt32, Data::String, Data::ObjectPath, Data::Dictionary})
        EXPECT_THROW(Networks(MakeOfType(type)), std::bad_cast) << "type " << type;
}

TEST(ReadingNetworks, TheValueReadStaysAsItWas)
{
    const Data services = ListData::Services({{"/s"}});
    Networks(services);
    const Data& properties = services.As<std::vector<Data>>()[0].As<std::vector<Data>>()[1];
    const auto& mapProperties = properties.As<std::map<std::string, Data>>();
    EXPECT_EQ(mapProperties.size(), 3U);
    EXPECT_EQ(mapProperties.at("IPv4").As<ListData::Properties>().size(), 1U);
}

TEST(ReadingNetworks, AnEntryThatIsNoStructureIsReported)
{
    for (const Data::Type type : {Data::Empty, Data::Bool, Data::UInt32, Data::String,
                                  Data::ObjectPath, Data::Dictionary}) {
        const auto result = Networks(List({MakeOfType(type)}));
        EXPECT_EQ(result.nReported, 1U) << "type " << type;
        EXPECT_THAT(result.vecRecords, IsEmpty()) << "type " << type;
    }
}

TEST(ReadingNetworks, AnEntryWithoutMembersIsReported)
{
    EXPECT_EQ(Networks(List({Data::MakeArray(Data::ObjectPath)})).nReported, 1U);
}

TEST(ReadingNetworks, AnEntryOfAPathAloneIsReportedEvenIfThePathIsKnown)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/s"})};
    const Data entry = Data::MakeArray(Data::ObjectPath, {Data::MakeObjectPath("/s")});
    const auto result = Networks(List({entry}), MakeIndex(vecKnown));
    EXPECT_EQ(result.nReported, 1U);
    EXPECT_THAT(result.vecRecords, IsEmpty());
}

TEST(ReadingNetworks, AnEntryWhosePathIsAStringIsReported)
{
    const Data properties = Data::MakeDictionary(Data::String, ServiceProperties({"/s"}));
    const Data entry = Data::MakeArray(Data::String, {Data::MakeString("/s"), properties});
    EXPECT_EQ(Networks(List({entry})).nReported, 1U);
}

TEST(ReadingNetworks, PropertiesThatAreNoDictionaryAreReported)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/s"})};
    for (const Data::Type type :
         {Data::Bool, Data::UInt32, Data::String, Data::ObjectPath, Data::Array}) {
        const auto result = Networks(List({Entry("/s", MakeOfType(type))}), MakeIndex(vecKnown));
        EXPECT_EQ(result.nReported, 1U) << "type " << type;
        EXPECT_THAT(result.vecRecords, IsEmpty()) << "type " << type;
    }
}

TEST(ReadingNetworks, PropertiesThatAreAnArrayOfVariantsAreReported)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/s"})};
    const Data variants = Data::MakeArray(Data::Variant, {Text("text")});
    EXPECT_EQ(Networks(List({Entry("/s", variants)}), MakeIndex(vecKnown)).nReported, 1U);
}

TEST(ReadingNetworks, PropertiesThatAreADictionaryOfVariantsAreRead)
{
    const auto result = Networks(List({Entry("/s", DictionaryOf(Data::Variant))}));
    EXPECT_EQ(result.nReported, 0U);
    EXPECT_THAT(Paths(result.vecRecords), ElementsAre("/s"));
}

TEST(ReadingNetworks, AnEntryThatSaysNothingKeepsTheKnownRecord)
{
    const std::vector<Data> vecNothings{Data(), ArrayOf(Data::Empty), ArrayOf(Data::Invalid),
                                        DictionaryOf(Data::Empty), DictionaryOf(Data::Invalid)};
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/s", "ready", "10.0.0.1"})};
    for (std::size_t nCase = 0; nCase < vecNothings.size(); ++nCase) {
        const auto result = Networks(List({Entry("/s", vecNothings[nCase])}), MakeIndex(vecKnown));
        EXPECT_EQ(result.nReported, 0U) << "case " << nCase;
        ASSERT_THAT(Paths(result.vecRecords), ElementsAre("/s")) << "case " << nCase;
        EXPECT_EQ(result.vecRecords[0].sState, "ready") << "case " << nCase;
        EXPECT_EQ(result.vecRecords[0].sIPv4Address, "10.0.0.1") << "case " << nCase;
    }
}

TEST(ReadingNetworks, ARecordThatIsKeptIsACopyOfItsOwn)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/s"})};
    auto result = Networks(List({ListData::UnchangedEntry("/s")}), MakeIndex(vecKnown));
    ASSERT_EQ(result.vecRecords.size(), 1U);
    result.vecRecords[0].sState = "changed";
    EXPECT_EQ(vecKnown[0].sState, "idle");
}

TEST(ReadingNetworks, AnEntryThatSaysNothingOfAnUnknownPathIsDroppedSilently)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/known"})};
    const auto result =
        Networks(List({ListData::UnchangedEntry("/unknown"), ListData::UnchangedEntry("/known")}),
                 MakeIndex(vecKnown));
    EXPECT_THAT(Paths(result.vecRecords), ElementsAre("/known"));
    EXPECT_EQ(result.nReported, 0U);
}

TEST(ReadingNetworks, AnEntryWithPropertiesReplacesTheKnownRecord)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/s", "idle"})};
    const auto result = Networks(ListData::Services({{"/s", "ready"}}), MakeIndex(vecKnown));
    ASSERT_EQ(result.vecRecords.size(), 1U);
    EXPECT_EQ(result.vecRecords[0].sState, "ready");
}

TEST(ReadingNetworks, AKnownServiceThatIsNotSentIsDropped)
{
    std::vector<ConnMan::NetworkService> vecKnown{Record({"/kept"}), Record({"/gone"})};
    const auto result = Networks(List({ListData::UnchangedEntry("/kept")}), MakeIndex(vecKnown));
    EXPECT_THAT(Paths(result.vecRecords), ElementsAre("/kept"));
}

TEST(ReadingNetworks, TheSamePathTwiceGivesTwoRecords)
{
    const auto result = Networks(ListData::Services({{"/s", "idle"}, {"/s", "ready"}}));
    ASSERT_THAT(Paths(result.vecRecords), ElementsAre("/s", "/s"));
    EXPECT_EQ(result.vecRecords[0].sState, "idle");
    EXPECT_EQ(result.vecRecords[1].sState, "ready");
}

TEST(ReadingNetworks, EachEntryOfAnotherShapeIsReportedAndTheOthersStand)
{
    auto withoutState = ServiceProperties({"/b"});
    withoutState.erase("State");
    const Data services = List({Entry("/a", ServiceProperties({"/a"})), Entry("/b", withoutState),
                                Data::MakeBool(true), Entry("/c", ServiceProperties({"/c"}))});
    const auto result = Networks(services);
    EXPECT_THAT(Paths(result.vecRecords), ElementsAre("/a", "/c"));
    EXPECT_EQ(result.nReported, 2U);
}

TEST(ReadingNetworks, WhatTheReportThrowsEndsTheReading)
{
    const auto fnThrow = [] { throw std::bad_alloc(); };
    EXPECT_THROW(ReadNetworks(List({Data()}), {}, fnThrow), std::bad_alloc);
}

// --- Reading technologies ---------------------------------------------------------------------

TEST(ReadingTechnologies, RecordsStandInConnMansOrder)
{
    const auto result = Technologies(List({Entry("/b", TechnologyProperties("WiFi", false)),
                                           Entry("/a", TechnologyProperties("Wired", true))}));
    ASSERT_THAT(Paths(result.vecRecords), ElementsAre("/b", "/a"));
    EXPECT_EQ(result.vecRecords[0].sName, "WiFi");
    EXPECT_FALSE(result.vecRecords[0].bPowered);
    EXPECT_TRUE(result.vecRecords[1].bPowered);
    EXPECT_EQ(result.nReported, 0U);
}

TEST(ReadingTechnologies, RoomIsMadeForAllEntriesAtOnce)
{
    std::vector<Data> vecEntries(5, Entry("/t", TechnologyProperties("WiFi")));
    EXPECT_EQ(Technologies(List(vecEntries)).vecRecords.capacity(), 5U);
}

TEST(ReadingTechnologies, WhatIsNoArrayThrowsABadCast)
{
    for (const Data::Type type :
         {Data::Empty, Data::Bool, Data::UInt32, Data::String, Data::ObjectPath, Data::Dictionary})
        EXPECT_THROW(Technologies(MakeOfType(type)), std::bad_cast) << "type " << type;
}

TEST(ReadingTechnologies, PropertiesThatAreNoDictionaryAreReportedEvenIfTheySayNothing)
{
    for (const Data::Type type :
         {Data::Empty, Data::Bool, Data::UInt32, Data::String, Data::ObjectPath, Data::Array}) {
        const auto result = Technologies(List({Entry("/t", MakeOfType(type))}));
        EXPECT_EQ(result.nReported, 1U) << "type " << type;
        EXPECT_THAT(result.vecRecords, IsEmpty()) << "type " << type;
    }
}

TEST(ReadingTechnologies, AnEntryOfAnotherShapeIsReported)
{
    const Data properties = Data::MakeDictionary(Data::String, TechnologyProperties("WiFi"));
    const std::vector<Data> vecBad{
        Data(),
        Data::MakeString("/t"),
        Data::MakeArray(Data::ObjectPath),
        Data::MakeArray(Data::ObjectPath, {Data::MakeObjectPath("/t")}),
        Data::MakeArray(Data::String, {Data::MakeString("/t"), properties}),
    };
    for (std::size_t nCase = 0; nCase < vecBad.size(); ++nCase) {
        const auto result = Technologies(List({vecBad[nCase]}));
        EXPECT_EQ(result.nReported, 1U) << "case " << nCase;
        EXPECT_THAT(result.vecRecords, IsEmpty()) << "case " << nCase;
    }
}

TEST(ReadingTechnologies, ADictionaryWhoseSmallestKeyHoldsNothingIsReadAllTheSame)
{
    auto properties = TechnologyProperties("WiFi");
    properties["Aaa"] = Data();
    const Data dictionary = Data::MakeDictionary(Data::Empty, properties);
    EXPECT_THAT(Paths(Technologies(List({Entry("/t", dictionary)})).vecRecords), ElementsAre("/t"));
}

TEST(ReadingTechnologies, OneWithoutPoweredIsReportedAndTheOthersStand)
{
    auto withoutPowered = TechnologyProperties("WiFi");
    withoutPowered.erase("Powered");
    const auto result =
        Technologies(List({Entry("/a", TechnologyProperties("A")), Entry("/b", withoutPowered),
                           Entry("/c", TechnologyProperties("C"))}));
    EXPECT_THAT(Paths(result.vecRecords), ElementsAre("/a", "/c"));
    EXPECT_EQ(result.nReported, 1U);
}

// --- The index --------------------------------------------------------------------------------

TEST(Index, PointsIntoTheListByPath)
{
    std::vector<ConnMan::NetworkService> vecServices{Record({"/b"}), Record({"/a"})};
    const ServiceIndex mapIndex = MakeIndex(vecServices);
    ASSERT_EQ(mapIndex.size(), 2U);
    EXPECT_EQ(mapIndex.at("/b"), &vecServices[0]);
    EXPECT_EQ(mapIndex.at("/a"), &vecServices[1]);
}

TEST(Index, OfTwoRecordsWithOnePathTheLaterStands)
{
    std::vector<ConnMan::NetworkService> vecServices{Record({"/s"}), Record({"/s"})};
    const ServiceIndex mapIndex = MakeIndex(vecServices);
    ASSERT_EQ(mapIndex.size(), 1U);
    EXPECT_EQ(mapIndex.at("/s"), &vecServices[1]);
}

TEST(Index, OfAnEmptyListIsEmpty)
{
    std::vector<ConnMan::NetworkService> vecServices;
    EXPECT_THAT(MakeIndex(vecServices), IsEmpty());
}

// --- The connected service --------------------------------------------------------------------

TEST(ConnectedService, OnlyOnlineAndReadyAreConnected)
{
    for (const char* pState : {"online", "ready"})
        EXPECT_TRUE(IsConnected(Record({"/s", pState}))) << pState;
    for (const char* pState :
         {"idle", "failure", "association", "configuration", "disconnect", "", "Online", "ready "})
        EXPECT_FALSE(IsConnected(Record({"/s", pState}))) << pState;
}

TEST(ConnectedService, TheFirstInTheListIsTakenWhicheverOfTheTwoStatesItHas)
{
    const std::vector<ConnMan::NetworkService> vecReadyFirst{
        Record({"/idle"}), Record({"/ready", "ready"}), Record({"/online", "online"})};
    EXPECT_EQ(FindConnected(vecReadyFirst), &vecReadyFirst[1]);

    const std::vector<ConnMan::NetworkService> vecOnlineFirst{Record({"/online", "online"}),
                                                              Record({"/ready", "ready"})};
    EXPECT_EQ(FindConnected(vecOnlineFirst), &vecOnlineFirst[0]);
}

TEST(ConnectedService, ThereMayBeNone)
{
    EXPECT_EQ(FindConnected({}), nullptr);
    EXPECT_EQ(FindConnected({Record({"/idle"}), Record({"/failure", "failure"})}), nullptr);
}

TEST(ConnectionChange, IsToldByPresenceAddressAndMethodAlone)
{
    const auto old = Record({"/s", "ready", "10.0.0.1", "dhcp", "Home"});
    const auto otherName = Record({"/s", "ready", "10.0.0.1", "dhcp", "Away"});
    const auto otherState = Record({"/s", "online", "10.0.0.1", "dhcp", "Home"});
    const auto otherPath = Record({"/t", "ready", "10.0.0.1", "dhcp", "Home"});
    const auto otherAddress = Record({"/s", "ready", "10.0.0.2", "dhcp", "Home"});
    const auto otherMethod = Record({"/s", "ready", "10.0.0.1", "manual", "Home"});

    EXPECT_FALSE(IsConnectionChanged(nullptr, nullptr));
    EXPECT_TRUE(IsConnectionChanged(&old, nullptr));
    EXPECT_TRUE(IsConnectionChanged(nullptr, &old));
    EXPECT_FALSE(IsConnectionChanged(&old, &old));
    EXPECT_FALSE(IsConnectionChanged(&old, &otherName));
    EXPECT_FALSE(IsConnectionChanged(&old, &otherState));
    EXPECT_FALSE(IsConnectionChanged(&old, &otherPath));
    EXPECT_TRUE(IsConnectionChanged(&old, &otherAddress));
    EXPECT_TRUE(IsConnectionChanged(&old, &otherMethod));
}

} // namespace Tovra::Lists
