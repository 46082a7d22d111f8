#include "Libraries/TargetSpecificKX22/Translation.h"
#include "tests/plugin/Records.h"

#include <gtest/gtest.h>

namespace Tovra::Translation
{

using Records::MakeService;
using Records::MakeTechnology;

TEST(TechnologyReport, OfNoTechnologiesIsEmpty)
{
    EXPECT_TRUE(ReportTechnologies({}).empty());
}

TEST(TechnologyReport, HasAnEntryForEachType)
{
    ConnMan::NetworkTechnology ethernet = MakeTechnology("ethernet", true, "Wired");
    ethernet.bConnected = true;
    const auto mapReport = ReportTechnologies({MakeTechnology("wifi", false, "WiFi"), ethernet});

    ASSERT_EQ(mapReport.size(), 2U);
    const DeviceConfig::NetworkTechnology& wifi = mapReport.at("wifi");
    EXPECT_EQ(wifi.sName, "WiFi");
    EXPECT_FALSE(wifi.bPowered);
    EXPECT_FALSE(wifi.bConnected);
    EXPECT_FALSE(wifi.bScan);
    const DeviceConfig::NetworkTechnology& wired = mapReport.at("ethernet");
    EXPECT_EQ(wired.sName, "Wired");
    EXPECT_TRUE(wired.bPowered);
    EXPECT_TRUE(wired.bConnected);
    EXPECT_FALSE(wired.bScan);
}

TEST(TechnologyReport, ShowsTheLaterOfTwoTechnologiesOfOneType)
{
    const auto mapReport = ReportTechnologies(
        {MakeTechnology("wifi", true, "First"), MakeTechnology("wifi", false, "Second")});
    ASSERT_EQ(mapReport.size(), 1U);
    EXPECT_EQ(mapReport.at("wifi").sName, "Second");
    EXPECT_FALSE(mapReport.at("wifi").bPowered);
}

TEST(ServiceReport, CarriesEveryFieldOver)
{
    ConnMan::NetworkService service = MakeService("My Net-1", "ready");
    service.sType = "ethernet";
    service.sInterface = "eth0";
    service.sMacAddress = "02:00:00:00:00:01";
    service.vecSecurity = {"psk"};
    service.nStrength = 73;
    service.sIPv4Method = "manual";
    service.sIPv4Address = "10.0.0.2";
    service.sIPv4Netmask = "255.0.0.0";
    service.sIPv4Gateway = "10.0.0.1";
    service.vecNameservers = {"10.0.0.3", "10.0.0.4"};

    const DeviceConfig::NetworkService report = ReportService(service, false);
    EXPECT_EQ(report.sType, "ethernet");
    EXPECT_EQ(report.sName, "My Net-1");
    EXPECT_EQ(report.sInterface, "eth0");
    EXPECT_EQ(report.sMacAddress, "02:00:00:00:00:01");
    EXPECT_TRUE(report.bConnected);
    EXPECT_FALSE(report.bFailed);
    EXPECT_EQ(report.sSecurity, "psk");
    EXPECT_EQ(report.nStrength, 73);
    EXPECT_FALSE(report.bDhcp);
    EXPECT_EQ(report.sIPv4Address, "10.0.0.2");
    EXPECT_EQ(report.sIPv4Netmask, "255.0.0.0");
    EXPECT_EQ(report.sIPv4Gateway, "10.0.0.1");
    EXPECT_EQ(report.vecNameservers, (std::vector<std::string>{"10.0.0.3", "10.0.0.4"}));
    EXPECT_FALSE(report.bUseWps);
    EXPECT_EQ(report.sPassphrase, "");
}

struct StateReading {
    const char* sState;
    bool bConnected;
    bool bFailed;
};

void PrintTo(const StateReading& reading, std::ostream* pStream)
{
    *pStream << reading.sState;
}

class ServiceReportOfState : public testing::TestWithParam<StateReading>
{
};

TEST_P(ServiceReportOfState, TellsConnectionAndFailure)
{
    const auto service = MakeService("Home", GetParam().sState);
    EXPECT_EQ(ReportService(service, false).bConnected, GetParam().bConnected);
    EXPECT_EQ(ReportService(service, false).bFailed, GetParam().bFailed);
}

TEST_P(ServiceReportOfState, KeepsAnEarlierFailure)
{
    const auto service = MakeService("Home", GetParam().sState);
    EXPECT_TRUE(ReportService(service, true).bFailed);
    EXPECT_EQ(ReportService(service, true).bConnected, GetParam().bConnected);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ServiceReportOfState,
    testing::Values(StateReading{"idle", false, false}, StateReading{"failure", false, true},
                    StateReading{"association", false, false},
                    StateReading{"configuration", false, false}, StateReading{"ready", true, false},
                    StateReading{"online", true, false}, StateReading{"disconnect", false, false},
                    StateReading{"Ready", false, false}, StateReading{"nonsense", false, false}),
    testing::PrintToStringParamName());

struct Joining {
    const char* sWhat;
    std::vector<std::string> vecSecurity;
    const char* sJoined;
};

void PrintTo(const Joining& joining, std::ostream* pStream)
{
    *pStream << joining.sWhat;
}

class ServiceReportOfSecurity : public testing::TestWithParam<Joining>
{
};

TEST_P(ServiceReportOfSecurity, HasOneBlankBetweenTheMethods)
{
    ConnMan::NetworkService service = MakeService();
    service.vecSecurity = GetParam().vecSecurity;
    EXPECT_EQ(ReportService(service, false).sSecurity, GetParam().sJoined);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ServiceReportOfSecurity,
    testing::Values(Joining{"None", {}, ""}, Joining{"One", {"psk"}, "psk"},
                    Joining{"Two", {"psk", "wps"}, "psk wps"},
                    Joining{"TheSameTheOtherWay", {"wps", "psk"}, "wps psk"},
                    Joining{"OneTwice", {"psk", "psk"}, "psk psk"},
                    Joining{"Three", {"psk", "wps", "wps_advertising"}, "psk wps wps_advertising"},
                    Joining{"AnEmptyOneFirst", {"", "psk"}, " psk"}),
    testing::PrintToStringParamName());

struct MethodReading {
    const char* sMethod;
    bool bDhcp;
};

void PrintTo(const MethodReading& reading, std::ostream* pStream)
{
    *pStream << '"' << reading.sMethod << '"';
}

class ServiceReportOfMethod : public testing::TestWithParam<MethodReading>
{
};

TEST_P(ServiceReportOfMethod, IsDhcpUnlessManual)
{
    ConnMan::NetworkService service = MakeService();
    service.sIPv4Method = GetParam().sMethod;
    EXPECT_EQ(ReportService(service, false).bDhcp, GetParam().bDhcp);
}

INSTANTIATE_TEST_SUITE_P(Of, ServiceReportOfMethod,
                         testing::Values(MethodReading{"dhcp", true},
                                         MethodReading{"manual", false},
                                         MethodReading{"auto", true}, MethodReading{"off", true},
                                         MethodReading{"", true}, MethodReading{"Manual", true},
                                         MethodReading{"fixed", true}));

TEST(ServiceReport, OfAnUnknownStrengthIs255)
{
    EXPECT_EQ(ReportService(MakeService(), false).nStrength, 255);
}

TEST(ServiceReport, KeepsTheBitsOfAStrengthBeyondTheHostsRange)
{
    ConnMan::NetworkService service = MakeService();
    service.nStrength = 0xFFFFFFFF;
    EXPECT_EQ(ReportService(service, false).nStrength, -1);
}

} // namespace Tovra::Translation
