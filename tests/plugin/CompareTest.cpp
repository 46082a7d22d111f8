#include "Libraries/TargetSpecificKX22/Translation.h"
#include "tests/plugin/Records.h"

#include <gtest/gtest.h>

namespace Tovra::Translation
{

using Records::MakeService;
using Records::MakeTechnology;

namespace
{

using Texts = std::vector<std::string>;

/** A wish that is fulfilled, but for the method, the name servers and the connection. */
DeviceConfig::NetworkService MakeWish(bool bDhcp)
{
    DeviceConfig::NetworkService wanted;
    wanted.bDhcp = bDhcp;
    wanted.sIPv4Address = "10.0.0.2";
    wanted.sIPv4Netmask = "255.0.0.0";
    wanted.sIPv4Gateway = "10.0.0.1";
    wanted.vecNameservers = {"10.0.0.3", "10.0.0.4"};
    return wanted;
}

/** What `MakeWish(false)` wants, in another state. */
ConnMan::NetworkService MakeStatic(const std::string& sState = "idle")
{
    ConnMan::NetworkService service = MakeService("Home", sState);
    service.sIPv4Method = "manual";
    service.sIPv4Address = "10.0.0.2";
    service.sIPv4Netmask = "255.0.0.0";
    service.sIPv4Gateway = "10.0.0.1";
    service.vecNameservers = {"10.0.0.3", "10.0.0.4"};
    return service;
}

ConnMan::NetworkService MakeDynamic(const std::string& sState = "idle")
{
    ConnMan::NetworkService service = MakeStatic(sState);
    service.sIPv4Method = "dhcp";
    return service;
}

struct TechnologyCase {
    const char* sWhat;
    bool bPowered;
    bool bWantPower;
    bool bWantScan;
    bool bSetPower;
    bool bScan;
};

void PrintTo(const TechnologyCase& theCase, std::ostream* pStream)
{
    *pStream << theCase.sWhat;
}

} // namespace

class TechnologyComparison : public testing::TestWithParam<TechnologyCase>
{
};

TEST_P(TechnologyComparison, GivesWhatIsToBeDone)
{
    DeviceConfig::NetworkTechnology wanted;
    wanted.bPowered = GetParam().bWantPower;
    wanted.bScan = GetParam().bWantScan;
    const auto change = Compare(MakeTechnology("wifi", GetParam().bPowered), wanted);
    EXPECT_EQ(change.bSetPower, GetParam().bSetPower);
    EXPECT_EQ(change.bScan, GetParam().bScan);
}

INSTANTIATE_TEST_SUITE_P(
    Of, TechnologyComparison,
    testing::Values(TechnologyCase{"OffThatStaysOff", false, false, false, false, false},
                    TechnologyCase{"OffThatWantsAScanOnly", false, false, true, false, false},
                    TechnologyCase{"OffThatIsToBeOn", false, true, false, true, false},
                    TechnologyCase{"OffThatIsToBeOnAndScan", false, true, true, true, true},
                    TechnologyCase{"OnThatIsToBeOff", true, false, false, true, false},
                    TechnologyCase{"OnThatIsToBeOffAndWantsAScan", true, false, true, true, false},
                    TechnologyCase{"OnThatStaysOn", true, true, false, false, false},
                    TechnologyCase{"OnThatIsToScan", true, true, true, false, true}),
    testing::PrintToStringParamName());

namespace
{

struct ServiceCase {
    const char* sWhat;
    ConnMan::NetworkService current;
    DeviceConfig::NetworkService wanted;
    unsigned nFlags;
};

void PrintTo(const ServiceCase& theCase, std::ostream* pStream)
{
    *pStream << theCase.sWhat;
}

/** A case as its maker left it, after a change. */
template <class Change>
ServiceCase Changed(const char* sWhat, ServiceCase theCase, unsigned nFlags, const Change& change)
{
    theCase.sWhat = sWhat;
    theCase.nFlags = nFlags;
    change(theCase.current, theCase.wanted);
    return theCase;
}

using Current = ConnMan::NetworkService;
using Wanted = DeviceConfig::NetworkService;

std::vector<ServiceCase> StaticCases()
{
    const ServiceCase same{"", MakeStatic(), MakeWish(false), 0};
    const auto keep = [](Current&, Wanted&) {};
    return {
        Changed("Nothing", same, 0, keep),
        Changed("TheAddress", same, 0x08, [](Current&, Wanted& w) { w.sIPv4Address = "10.0.0.9"; }),
        Changed("TheNetmask", same, 0x08, [](Current&, Wanted& w) { w.sIPv4Netmask = ""; }),
        Changed("TheGateway", same, 0x08, [](Current&, Wanted& w) { w.sIPv4Gateway = "10.0.0.8"; }),
        Changed("TheCaseOfALetter", same, 0x08,
                [](Current& c, Wanted& w) {
                    c.sIPv4Address = "host.a";
                    w.sIPv4Address = "host.A";
                }),
        Changed("TheMethod", same, 0x08, [](Current& c, Wanted&) { c.sIPv4Method = "dhcp"; }),
        Changed("AMethodThatIsNone", same, 0x08, [](Current& c, Wanted&) { c.sIPv4Method = ""; }),
        Changed("TheOrderOfTheNameServers", same, 0x10,
                [](Current&, Wanted& w) {
                    w.vecNameservers = {"10.0.0.4", "10.0.0.3"};
                }),
        Changed("ANameServerLess", same, 0x10,
                [](Current&, Wanted& w) { w.vecNameservers.pop_back(); }),
        Changed("ANameServerMore", same, 0x10,
                [](Current&, Wanted& w) { w.vecNameservers.emplace_back("10.0.0.5"); }),
        Changed("NoNameServers", same, 0x10, [](Current&, Wanted& w) { w.vecNameservers.clear(); }),
        Changed("MethodAndNameServers", same, 0x18,
                [](Current& c, Wanted&) {
                    c.sIPv4Method = "dhcp";
                    c.vecNameservers = {};
                }),
    };
}

std::vector<ServiceCase> StaticCasesWithAConnection()
{
    const ServiceCase same{"", MakeStatic(), MakeWish(false), 0};
    return {
        Changed("ConnectAlone", same, 0x01, [](Current&, Wanted& w) { w.bConnected = true; }),
        Changed("ConnectAndAddress", same, 0x09,
                [](Current&, Wanted& w) {
                    w.bConnected = true;
                    w.sIPv4Address = "10.0.0.9";
                }),
        Changed("DisconnectAndAll", same, 0x1A,
                [](Current& c, Wanted& w) {
                    c.sState = "online";
                    w.sIPv4Address = "10.0.0.9";
                    w.vecNameservers.clear();
                }),
        Changed("ConnectAndNameServers", same, 0x11,
                [](Current&, Wanted& w) {
                    w.bConnected = true;
                    w.vecNameservers.clear();
                }),
    };
}

std::vector<ServiceCase> DhcpCases()
{
    const ServiceCase same{"", MakeDynamic(), MakeWish(true), 0};
    const ServiceCase fromStatic{"", MakeStatic(), MakeWish(true), 0x14};
    const auto keep = [](Current&, Wanted&) {};
    return {
        Changed("DhcpAlready", same, 0, keep),
        Changed("DhcpAlreadyWithOtherWishes", same, 0,
                [](Current&, Wanted& w) {
                    w.sIPv4Address = "1.2.3.4";
                    w.vecNameservers = {"1.1.1.1"};
                }),
        Changed("DhcpInsteadOfAnUnknownMethod", same, 0,
                [](Current& c, Wanted&) { c.sIPv4Method = "auto"; }),
        Changed("DhcpInsteadOfNoMethod", same, 0, [](Current& c, Wanted&) { c.sIPv4Method = ""; }),
        Changed("DhcpAlreadyAndConnect", same, 0x01,
                [](Current&, Wanted& w) { w.bConnected = true; }),
        Changed("DhcpAlreadyAndDisconnect", same, 0x02,
                [](Current& c, Wanted&) { c.sState = "ready"; }),
        Changed("DhcpInsteadOfStatic", fromStatic, 0x14, keep),
        Changed("DhcpInsteadOfStaticWithoutNameServers", fromStatic, 0x14,
                [](Current& c, Wanted& w) {
                    c.vecNameservers.clear();
                    w.vecNameservers.clear();
                }),
        Changed("DhcpAndConnect", fromStatic, 0x15,
                [](Current&, Wanted& w) { w.bConnected = true; }),
        Changed("DhcpAndDisconnect", fromStatic, 0x16,
                [](Current& c, Wanted&) { c.sState = "online"; }),
    };
}

} // namespace

class ServiceComparison : public testing::TestWithParam<ServiceCase>
{
};

TEST_P(ServiceComparison, GivesTheFlags)
{
    EXPECT_EQ(Compare(GetParam().current, GetParam().wanted).nFlags, GetParam().nFlags);
}

// What is not flagged is not the plug-in's to change: the record says what ConnMan has.
TEST_P(ServiceComparison, PutsExactlyTheFlaggedWishesIntoTheRecord)
{
    const auto& [sWhat, current, wanted, nFlags] = GetParam();
    const ConnMan::NetworkService sent = Compare(current, wanted).service;
    const bool bAddress = (nFlags & ConnMan::IPv4Manual) != 0;
    EXPECT_EQ(sent.sIPv4Address, bAddress ? wanted.sIPv4Address : current.sIPv4Address);
    EXPECT_EQ(sent.sIPv4Netmask, bAddress ? wanted.sIPv4Netmask : current.sIPv4Netmask);
    EXPECT_EQ(sent.sIPv4Gateway, bAddress ? wanted.sIPv4Gateway : current.sIPv4Gateway);
    const bool bNameservers = (nFlags & ConnMan::Nameservers) != 0;
    const Texts vecWanted = wanted.bDhcp ? Texts() : wanted.vecNameservers;
    EXPECT_EQ(sent.vecNameservers, bNameservers ? vecWanted : current.vecNameservers);
}

TEST_P(ServiceComparison, LeavesTheRestOfTheRecordAlone)
{
    const ConnMan::NetworkService& current = GetParam().current;
    const ConnMan::NetworkService sent = Compare(current, GetParam().wanted).service;
    EXPECT_EQ(sent.sPath, current.sPath);
    EXPECT_EQ(sent.sName, current.sName);
    EXPECT_EQ(sent.sType, current.sType);
    EXPECT_EQ(sent.sState, current.sState);
    EXPECT_EQ(sent.sIPv4Method, current.sIPv4Method);
    EXPECT_EQ(sent.vecSecurity, current.vecSecurity);
    EXPECT_EQ(sent.nStrength, current.nStrength);
}

INSTANTIATE_TEST_SUITE_P(OfStaticWishes, ServiceComparison, testing::ValuesIn(StaticCases()),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(OfStaticWishesAndConnections, ServiceComparison,
                         testing::ValuesIn(StaticCasesWithAConnection()),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(OfDhcpWishes, ServiceComparison, testing::ValuesIn(DhcpCases()),
                         testing::PrintToStringParamName());

TEST(ServiceComparisons, FollowTheStateInWhatTheyMakeOfTheConnection)
{
    for (const char* pState :
         {"idle", "failure", "association", "configuration", "disconnect", "ready", "online"}) {
        const bool bConnected = std::string(pState) == "ready" || std::string(pState) == "online";
        DeviceConfig::NetworkService wanted = MakeWish(true);
        EXPECT_EQ(Compare(MakeDynamic(pState), wanted).nFlags, bConnected ? 0x02U : 0U) << pState;
        wanted.bConnected = true;
        EXPECT_EQ(Compare(MakeDynamic(pState), wanted).nFlags, bConnected ? 0U : 0x01U) << pState;
    }
}

} // namespace Tovra::Translation
