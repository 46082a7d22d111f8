#include "tests/connman/RecordChange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <type_traits>
#include <typeinfo>

namespace Tovra
{

using DBus::Data;
using ListData::Text;
using RecordChange::Change;
using RecordChange::Changed;
using RecordChange::Kind;
using RecordChange::MakeSection;
using RecordChange::MakeTexts;
using RecordChange::Properties;
using Service = ConnMan::NetworkService;
using testing::ElementsAre;

static_assert(std::is_copy_constructible_v<Service> && std::is_copy_assignable_v<Service>);

namespace
{

constexpr const char* pPath = "/net/connman/service/wifi_a_b_managed_psk";

/** A service that has everything that is read. */
Properties FullService()
{
    return {
        {"Ethernet",
         MakeSection({{"Interface", Text("wlan0")}, {"Address", Text("02:00:00:00:00:01")}})},
        {"Name", Text("Blue Net")},
        {"Type", Text("wifi")},
        {"State", Text("ready")},
        {"IPv4", MakeSection({{"Address", Text("192.0.2.7")},
                              {"Netmask", Text("255.255.255.0")},
                              {"Gateway", Text("192.0.2.1")},
                              {"Method", Text("dhcp")}})},
        {"Nameservers", MakeTexts({"192.0.2.53", "192.0.2.9", "192.0.2.53"})},
        {"Security", MakeTexts({"wps", "psk"})},
        {"Strength", Data::MakeUInt32(61).SetVariant(true)},
    };
}

Service Build(Properties properties)
{
    return Service(pPath, properties);
}

/** Every field, for comparing whole records. */
std::string Describe(const Service& service)
{
    std::string sText;
    for (const std::string& sField :
         {service.sPath, service.sInterface, service.sMacAddress, service.sName, service.sType,
          service.sState, service.sIPv4Address, service.sIPv4Netmask, service.sIPv4Gateway,
          service.sIPv4Method})
        sText += sField + "|";
    for (const auto& vecTexts : {service.vecNameservers, service.vecSecurity}) {
        for (const std::string& sElement : vecTexts)
            sText += sElement + ",";
        sText += "|";
    }
    return sText + std::to_string(service.nStrength);
}

constexpr const char* pFullService =
    "/net/connman/service/wifi_a_b_managed_psk|wlan0|02:00:00:00:00:01|Blue Net|wifi|ready|"
    "192.0.2.7|255.255.255.0|192.0.2.1|dhcp|192.0.2.53,192.0.2.9,192.0.2.53,|wps,psk,|61";

} // namespace

TEST(ServiceRecord, HoldsEveryPropertyInItsField)
{
    EXPECT_EQ(Describe(Build(FullService())), pFullService);
}

TEST(ServiceRecord, NeedsNoMoreThanTypeAndState)
{
    Properties properties{{"Type", Text("wifi")}, {"State", Text("idle")}};
    EXPECT_EQ(Describe(Service("/s", properties)), "/s||||wifi|idle|||||||255");
}

TEST(ServiceRecord, TakesTextsThatBearNoVariantMark)
{
    Properties properties{{"Type", Data::MakeString("a")}, {"State", Data::MakeString("b")}};
    EXPECT_EQ(Describe(Service("/s", properties)), "/s||||a|b|||||||255");
}

TEST(ServiceRecord, IgnoresWhatItDoesNotKnow)
{
    Properties properties = FullService();
    properties["Favorite"] = RecordChange::MakeValue(Kind::Flag);
    properties["LastAddressConflict"] = RecordChange::MakeValue(Kind::Invalid);
    properties["IPv6"] = MakeSection({{"Address", Text("2001:db8::1")}});
    RecordChange::At(properties, "IPv4/Broadcast") = Text("192.0.2.255");
    EXPECT_EQ(Describe(Build(properties)), pFullService);
}

TEST(ServiceRecord, TakesAnyStateWordAsItIs)
{
    for (const char* pState : {"failure", "Ready", " ready", ""}) {
        Properties properties = FullService();
        properties["State"] = Text(pState);
        EXPECT_EQ(Build(properties).sState, pState);
    }
}

TEST(ServiceRecord, TakesTheStrengthAsItIs)
{
    for (const std::uint32_t nStrength : {0U, 1U, 100U, 255U, 0xFFFFFFFFU}) {
        Properties properties = FullService();
        properties["Strength"] = Data::MakeUInt32(nStrength);
        EXPECT_EQ(Build(properties).nStrength, nStrength);
    }
}

TEST(ServiceRecord, KeepsTheOrderAndTheRepeatsOfLists)
{
    Properties properties = FullService();
    properties["Nameservers"] = MakeTexts({"3", "1", "2", "1", ""});
    properties["Security"] = MakeTexts({"wps", "psk", "psk"});
    const Service service = Build(properties);
    EXPECT_THAT(service.vecNameservers, ElementsAre("3", "1", "2", "1", ""));
    EXPECT_THAT(service.vecSecurity, ElementsAre("wps", "psk", "psk"));
}

TEST(ServiceRecord, IsIndependentOfItsDictionaryAndOfItsCopies)
{
    Properties properties = FullService();
    const Service service(pPath, properties);
    Service copy = service;
    for (auto& [sKey, value] : properties)
        value = Data();
    copy.sName = "other";
    copy.vecNameservers.clear();
    EXPECT_EQ(Describe(service), pFullService);

    copy = service;
    EXPECT_EQ(Describe(copy), pFullService);
}

// --- What is missing or of another kind -------------------------------------------------------

class BadService : public testing::TestWithParam<Change>
{
};

TEST_P(BadService, ThrowsBadCast)
{
    Properties properties = Changed(FullService(), GetParam());
    EXPECT_THROW(Service(pPath, properties), std::bad_cast);
}

INSTANTIATE_TEST_SUITE_P(
    With, BadService,
    testing::Values(
        Change{"Type", Kind::Missing}, Change{"Type", Kind::Empty}, Change{"Type", Kind::Number},
        Change{"Type", Kind::Path}, Change{"Type", Kind::Invalid}, Change{"State", Kind::Missing},
        Change{"State", Kind::Empty}, Change{"State", Kind::Flag}, Change{"State", Kind::Texts},
        Change{"Ethernet/Interface", Kind::Missing}, Change{"Ethernet/Interface", Kind::Number},
        Change{"Ethernet/Interface", Kind::Path}, Change{"Ethernet/Address", Kind::Missing},
        Change{"Ethernet/Address", Kind::Flag}, Change{"Ethernet", Kind::EmptySection},
        Change{"IPv4/Method", Kind::Missing}, Change{"IPv4/Method", Kind::Empty},
        Change{"IPv4/Method", Kind::Number}, Change{"IPv4", Kind::EmptySection},
        Change{"IPv4", Kind::Section}, Change{"Nameservers", Kind::TextsAndNumber},
        Change{"Nameservers", Kind::TextsAfterInvalid}, Change{"Nameservers", Kind::Paths},
        Change{"Security", Kind::TextsAndNumber}, Change{"Security", Kind::ListOfTexts},
        Change{"Strength", Kind::Text}, Change{"Strength", Kind::Flag},
        Change{"Strength", Kind::Empty}, Change{"Strength", Kind::Invalid}),
    RecordChange::GetTestName);

/** A change after which a part of the record has its default, and nothing else differs. */
struct Default {
    Change change;
    void (*fnApply)(Service&);
};

void PrintTo(const Default& standing, std::ostream* pStream)
{
    PrintTo(standing.change, pStream);
}

class ServiceDefault : public testing::TestWithParam<Default>
{
};

TEST_P(ServiceDefault, Stands)
{
    Service expected = Build(FullService());
    GetParam().fnApply(expected);
    EXPECT_EQ(Describe(Build(Changed(FullService(), GetParam().change))), Describe(expected));
}

std::string GetDefaultName(const testing::TestParamInfo<Default>& info)
{
    return RecordChange::GetName(info.param.change);
}

void NoEthernet(Service& service)
{
    service.sInterface = "";
    service.sMacAddress = "";
}

void NoIPv4(Service& service)
{
    service.sIPv4Address = "";
    service.sIPv4Netmask = "";
    service.sIPv4Gateway = "";
    service.sIPv4Method = "";
}

constexpr auto noName = [](Service& service) { service.sName = ""; };
constexpr auto noAddress = [](Service& service) { service.sIPv4Address = ""; };
constexpr auto noNetmask = [](Service& service) { service.sIPv4Netmask = ""; };
constexpr auto noGateway = [](Service& service) { service.sIPv4Gateway = ""; };
constexpr auto noNameservers = [](Service& service) { service.vecNameservers.clear(); };
constexpr auto noSecurity = [](Service& service) { service.vecSecurity.clear(); };
constexpr auto noStrength = [](Service& service) { service.nStrength = 255; };

INSTANTIATE_TEST_SUITE_P(
    For, ServiceDefault,
    testing::Values(Default{{"Name", Kind::Missing}, noName},
                    Default{{"Name", Kind::Empty}, noName}, Default{{"Name", Kind::Number}, noName},
                    Default{{"Name", Kind::Path}, noName}, Default{{"Name", Kind::Invalid}, noName},
                    Default{{"Ethernet", Kind::Missing}, NoEthernet},
                    Default{{"Ethernet", Kind::Empty}, NoEthernet},
                    Default{{"Ethernet", Kind::Text}, NoEthernet},
                    Default{{"Ethernet", Kind::Texts}, NoEthernet},
                    Default{{"IPv4", Kind::Missing}, NoIPv4},
                    Default{{"IPv4", Kind::Empty}, NoIPv4}, Default{{"IPv4", Kind::Texts}, NoIPv4},
                    Default{{"IPv4", Kind::Invalid}, NoIPv4},
                    Default{{"IPv4/Address", Kind::Missing}, noAddress},
                    Default{{"IPv4/Address", Kind::Number}, noAddress},
                    Default{{"IPv4/Netmask", Kind::Missing}, noNetmask},
                    Default{{"IPv4/Netmask", Kind::Flag}, noNetmask},
                    Default{{"IPv4/Gateway", Kind::Missing}, noGateway},
                    Default{{"IPv4/Gateway", Kind::Path}, noGateway},
                    Default{{"Nameservers", Kind::Missing}, noNameservers},
                    Default{{"Nameservers", Kind::Empty}, noNameservers},
                    Default{{"Nameservers", Kind::EmptyTexts}, noNameservers},
                    Default{{"Nameservers", Kind::Text}, noNameservers},
                    Default{{"Security", Kind::Missing}, noSecurity},
                    Default{{"Security", Kind::EmptyTexts}, noSecurity},
                    Default{{"Security", Kind::Section}, noSecurity},
                    Default{{"Strength", Kind::Missing}, noStrength}),
    GetDefaultName);

// --- What building a record does to the caller's dictionary ------------------------------------

class ServiceKey : public testing::TestWithParam<const char*>
{
};

TEST_P(ServiceKey, IsAddedToTheCallersDictionaryHoldingEmpty)
{
    Properties properties = Changed(FullService(), {GetParam(), Kind::Missing});
    Properties expected = Changed(FullService(), {GetParam(), Kind::Empty});
    try {
        const Service service(pPath, properties);
    } catch (const std::bad_cast&) {
        // A key that is required is added before it turns out to hold nothing.
    }
    EXPECT_EQ(RecordChange::Describe(properties), RecordChange::Describe(expected));
}

INSTANTIATE_TEST_SUITE_P(At, ServiceKey,
                         testing::Values("Ethernet", "Ethernet/Interface", "Ethernet/Address",
                                         "Name", "Type", "State", "IPv4", "IPv4/Address",
                                         "IPv4/Netmask", "IPv4/Gateway", "IPv4/Method",
                                         "Nameservers", "Security"),
                         RecordChange::GetKeyTestName);

TEST(ServiceRecord, DoesNotAddStrengthToTheCallersDictionary)
{
    Properties properties = Changed(FullService(), {"Strength", Kind::Missing});
    const std::string sBefore = RecordChange::Describe(properties);
    const Service service(pPath, properties);
    EXPECT_EQ(RecordChange::Describe(properties), sBefore);
}

TEST(ServiceRecord, LeavesADictionaryThatHasEverythingAsItIs)
{
    Properties properties = FullService();
    const Service service(pPath, properties);
    EXPECT_EQ(RecordChange::Describe(properties), RecordChange::Describe(FullService()));
}

TEST(ServiceRecord, AddsNothingInsideAnEthernetOrIPv4ThatIsNoDictionary)
{
    Properties properties = FullService();
    properties["IPv4"] = MakeTexts({"one"});
    properties["Ethernet"] = Text("eth0");
    const std::string sBefore = RecordChange::Describe(properties);
    const Service service(pPath, properties);
    EXPECT_EQ(RecordChange::Describe(properties), sBefore);
}

TEST(ServiceRecord, AddsAllItsKeysToAnAlmostEmptyDictionary)
{
    Properties properties{{"Type", Text("wifi")}, {"State", Text("idle")}};
    const Service service(pPath, properties);
    std::vector<std::string> vecKeys;
    for (const auto& [sKey, value] : properties)
        vecKeys.push_back(sKey);
    EXPECT_THAT(vecKeys, ElementsAre("Ethernet", "IPv4", "Name", "Nameservers", "Security", "State",
                                     "Type"));
}

} // namespace Tovra
