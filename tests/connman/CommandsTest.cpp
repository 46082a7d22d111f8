#include "Common/Commands.h"
#include "tests/connman/CommandText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>

namespace Tovra::Commands
{

using DBus::Data;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(ConnMan::Connect == 0x01 && ConnMan::Disconnect == 0x02 &&
              ConnMan::IPv4Dhcp == 0x04 && ConnMan::IPv4Manual == 0x08 &&
              ConnMan::Nameservers == 0x10);

namespace
{

using CommandText::Describe;
using CommandText::MakeService;
using CommandText::MakeTechnology;
using Lines = std::vector<std::string>;

Lines Send(const ConnMan::NetworkService& service, unsigned int flags)
{
    Lines vecLines;
    for (const Command& command : SetNetworkProperties(service, flags))
        vecLines.push_back(Describe(command));
    return vecLines;
}

constexpr const char* pSetDhcp =
    R"(/wifi net.connman.Service SetProperty String "IPv4.Configuration" )"
    R"(<Dictionary of Variant {"Method": <String "dhcp">}>)";
constexpr const char* pSetManual =
    R"(/wifi net.connman.Service SetProperty String "IPv4.Configuration" )"
    R"(<Dictionary of Variant {"Address": <String "192.0.2.7">, "Gateway": <String "192.0.2.1">, )"
    R"("Method": <String "manual">, "Netmask": <String "255.255.255.0">}>)";
constexpr const char* pSetNameservers =
    R"(/wifi net.connman.Service SetProperty String "Nameservers.Configuration" )"
    R"(<Array of String [String "192.0.2.53", String "192.0.2.9"]>)";
constexpr const char* pConnect = "/wifi net.connman.Service Connect";
constexpr const char* pRemove = "/wifi net.connman.Service Remove";

} // namespace

// --- What each word sends ---------------------------------------------------------------------

struct Word {
    unsigned int flags;
    Lines vecExpected;
};

void PrintTo(const Word& word, std::ostream* pStream)
{
    *pStream << word.flags;
}

class CommandWord : public testing::TestWithParam<Word>
{
};

TEST_P(CommandWord, SendsItsCommandsInOrder)
{
    EXPECT_EQ(Send(MakeService("wifi"), GetParam().flags), GetParam().vecExpected);
}

std::string WordName(const testing::TestParamInfo<Word>& info)
{
    std::ostringstream name;
    name << "Word" << std::hex << std::setw(2) << std::setfill('0') << info.param.flags;
    return name.str();
}

INSTANTIATE_TEST_SUITE_P(
    OfTheHost, CommandWord,
    testing::Values(Word{0x01, {pConnect}}, Word{0x02, {pRemove}}, Word{0x08, {pSetManual}},
                    Word{0x09, {pSetManual, pConnect}}, Word{0x0A, {pSetManual, pRemove}},
                    Word{0x10, {pSetNameservers}}, Word{0x11, {pSetNameservers, pConnect}},
                    Word{0x12, {pSetNameservers, pRemove}}, Word{0x14, {pSetDhcp, pSetNameservers}},
                    Word{0x15, {pSetDhcp, pSetNameservers, pConnect}},
                    Word{0x16, {pSetDhcp, pSetNameservers, pRemove}},
                    Word{0x18, {pSetManual, pSetNameservers}},
                    Word{0x19, {pSetManual, pSetNameservers, pConnect}},
                    Word{0x1A, {pSetManual, pSetNameservers, pRemove}}),
    WordName);

INSTANTIATE_TEST_SUITE_P(ThatTheHostDoesNotUse, CommandWord,
                         testing::Values(Word{0x00, {}}, Word{0x03, {pRemove}},
                                         Word{0x04, {pSetDhcp}}, Word{0x0C, {pSetDhcp}},
                                         Word{0x0D, {pSetDhcp, pConnect}},
                                         Word{0x1F, {pSetDhcp, pSetNameservers, pRemove}},
                                         Word{0x20, {}}, Word{0x100, {}}, Word{0xFFFFFFE0, {}},
                                         Word{0xFFFFFFE1, {pConnect}},
                                         Word{0xFFFFFFFF, {pSetDhcp, pSetNameservers, pRemove}}),
                         WordName);

// --- Details ----------------------------------------------------------------------------------

TEST(ServiceCommands, NothingSelectedSendsNothing)
{
    EXPECT_THAT(Send(MakeService("wifi"), 0), IsEmpty());
}

TEST(ServiceCommands, DhcpTakesPrecedenceOverManual)
{
    EXPECT_THAT(Send(MakeService("wifi"), ConnMan::IPv4Dhcp | ConnMan::IPv4Manual),
                ElementsAre(pSetDhcp));
}

TEST(ServiceCommands, DisconnectTakesPrecedenceOverConnect)
{
    EXPECT_THAT(Send(MakeService("ethernet"), ConnMan::Disconnect | ConnMan::Connect),
                ElementsAre("/ethernet net.connman.Service Disconnect"));
    EXPECT_THAT(Send(MakeService("wifi"), ConnMan::Disconnect | ConnMan::Connect),
                ElementsAre(pRemove));
}

TEST(ServiceCommands, OnlyTheExactTypeEthernetIsDisconnectedInsteadOfForgotten)
{
    for (const char* pType :
         {"wifi", "Ethernet", "ETHERNET", "ethernet ", "ethernets", "etherne", "gadget", ""}) {
        ConnMan::NetworkService service = MakeService("wifi");
        service.sType = pType;
        EXPECT_THAT(Send(service, ConnMan::Disconnect), ElementsAre(pRemove)) << pType;
    }
    EXPECT_THAT(Send(MakeService("ethernet"), ConnMan::Disconnect),
                ElementsAre("/ethernet net.connman.Service Disconnect"));
}

TEST(ServiceCommands, TheTypeDoesNotMatterForConnecting)
{
    EXPECT_THAT(Send(MakeService("ethernet"), ConnMan::Connect),
                ElementsAre("/ethernet net.connman.Service Connect"));
}

TEST(ServiceCommands, EmptyTextsOfAStaticAddressAreSentAsTheyAre)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.sIPv4Address = service.sIPv4Netmask = service.sIPv4Gateway = "";
    EXPECT_THAT(
        Send(service, ConnMan::IPv4Manual),
        ElementsAre(R"(/wifi net.connman.Service SetProperty String "IPv4.Configuration" )"
                    R"(<Dictionary of Variant {"Address": <String "">, "Gateway": <String "">, )"
                    R"("Method": <String "manual">, "Netmask": <String "">}>)"));
}

TEST(ServiceCommands, WhatIsNoAddressIsSentAsItIs)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.sIPv4Address = "not an address";
    service.sIPv4Netmask = "::1";
    service.sIPv4Gateway = "256.1.1.1\n";
    EXPECT_THAT(Send(service, ConnMan::IPv4Manual),
                ElementsAre(R"(/wifi net.connman.Service SetProperty String "IPv4.Configuration" )"
                            R"(<Dictionary of Variant {"Address": <String "not an address">, )"
                            R"("Gateway": <String "256.1.1.1\x0A">, )"
                            R"("Method": <String "manual">, "Netmask": <String "::1">}>)"));
}

TEST(ServiceCommands, NoNameserversAreAnEmptyListOfTexts)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.vecNameservers.clear();
    EXPECT_THAT(
        Send(service, ConnMan::Nameservers),
        ElementsAre(R"(/wifi net.connman.Service SetProperty String "Nameservers.Configuration" )"
                    R"(<Array of String []>)"));
}

TEST(ServiceCommands, NameserversKeepTheirOrderAndTheirRepeats)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.vecNameservers = {"3", "1", "1", "2", ""};
    EXPECT_THAT(
        Send(service, ConnMan::Nameservers),
        ElementsAre(
            R"(/wifi net.connman.Service SetProperty String "Nameservers.Configuration" )"
            R"(<Array of String [String "3", String "1", String "1", String "2", String ""]>)"));
}

TEST(ServiceCommands, AnyPropertyGoesOutInOneVariantMarkedOrNot)
{
    const ConnMan::NetworkService service = MakeService("wifi");
    const char* pExpected = R"(/wifi net.connman.Service SetProperty String "Any" <Bool true>)";
    EXPECT_EQ(Describe(SetConProp(service, "Any", Data::MakeBool(true, false))), pExpected);
    EXPECT_EQ(Describe(SetConProp(service, "Any", Data::MakeBool(true, true))), pExpected);
}

TEST(ServiceCommands, AValueThatIsSetStaysAsTheCallerHasIt)
{
    const Data value = Data::MakeStringArray({"a"});
    SetConProp(MakeService("wifi"), "Any", value);
    EXPECT_FALSE(value.IsVariant());
}

TEST(ServiceCommands, MoreThanABusTakesIsNoMessage)
{
    const ConnMan::NetworkService service = MakeService("wifi");
    const std::string sText(31 * 1024 * 1024, 'a');
    EXPECT_TRUE(MakeMessage(SetConProp(service, "Any", Data::MakeString(sText))));
    EXPECT_FALSE(MakeMessage(SetConProp(service, "Any", Data::MakeString(sText + sText))));
}

TEST(TechnologyCommands, PowerIsAFlagInAVariant)
{
    const ConnMan::NetworkTechnology technology = MakeTechnology();
    EXPECT_EQ(Describe(SetPower(technology, true)),
              R"(/technology net.connman.Technology SetProperty String "Powered" <Bool true>)");
    EXPECT_EQ(Describe(SetPower(technology, false)),
              R"(/technology net.connman.Technology SetProperty String "Powered" <Bool false>)");
}

TEST(TechnologyCommands, AScanHasNoArguments)
{
    EXPECT_EQ(Describe(Scan(MakeTechnology())), "/technology net.connman.Technology Scan");
}

} // namespace Tovra::Commands
