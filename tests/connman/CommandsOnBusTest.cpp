#include "tests/connman/ClientOnBus.h"
#include "tests/connman/CommandText.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>
#include <thread>

namespace Tovra
{

using CommandText::MakeService;
using CommandText::MakeTechnology;
using testing::ElementsAre;
using testing::IsEmpty;

/** What ConnMan receives, as another D-Bus implementation reads it. */
class CommandsOnBus : public ClientOnBus
{
};

constexpr const char* pSetDhcp =
    R"(/wifi net.connman.Service SetProperty sv["IPv4.Configuration",["a{sv}",)"
    R"({"Method":["s","dhcp"]}]])";
constexpr const char* pSetManual =
    R"(/wifi net.connman.Service SetProperty sv["IPv4.Configuration",["a{sv}",)"
    R"({"Address":["s","192.0.2.7"],"Gateway":["s","192.0.2.1"],"Method":["s","manual"],)"
    R"("Netmask":["s","255.255.255.0"]}]])";
constexpr const char* pSetNameservers =
    R"(/wifi net.connman.Service SetProperty sv["Nameservers.Configuration",["as",)"
    R"(["192.0.2.53","192.0.2.9"]]])";

TEST_F(CommandsOnBus, SwitchToDhcp)
{
    GetClient().SetNetworkProperties(MakeService("wifi"), 0x14);
    EXPECT_THAT(GetCalls(), ElementsAre(pSetDhcp, pSetNameservers));
}

TEST_F(CommandsOnBus, SetAStaticAddressThenNameserversThenConnect)
{
    GetClient().SetNetworkProperties(MakeService("wifi"), 0x19);
    EXPECT_THAT(GetCalls(),
                ElementsAre(pSetManual, pSetNameservers, "/wifi net.connman.Service Connect"));
}

TEST_F(CommandsOnBus, SetAStaticAddressThenForgetTheNetwork)
{
    GetClient().SetNetworkProperties(MakeService("wifi"), 0x0A);
    EXPECT_THAT(GetCalls(), ElementsAre(pSetManual, "/wifi net.connman.Service Remove"));
}

TEST_F(CommandsOnBus, DisconnectAnEthernetLink)
{
    GetClient().SetNetworkProperties(MakeService("ethernet"), 0x02);
    EXPECT_THAT(GetCalls(), ElementsAre("/ethernet net.connman.Service Disconnect"));
}

TEST_F(CommandsOnBus, EveryWordOfTheHostArrives)
{
    const std::string sConnect = "/wifi net.connman.Service Connect";
    const std::string sRemove = "/wifi net.connman.Service Remove";
    std::vector<std::string> vecExpected;
    for (const unsigned int flags : {0x01U, 0x02U, 0x03U, 0x08U, 0x09U, 0x0AU, 0x0CU, 0x10U, 0x11U,
                                     0x12U, 0x14U, 0x15U, 0x16U, 0x18U, 0x19U, 0x1AU}) {
        GetClient().SetNetworkProperties(MakeService("wifi"), flags);
        if (flags & 0x0C)
            vecExpected.emplace_back(flags & 0x04 ? pSetDhcp : pSetManual);
        if (flags & 0x10)
            vecExpected.emplace_back(pSetNameservers);
        if (flags & 0x03)
            vecExpected.push_back(flags & 0x02 ? sRemove : sConnect);
    }
    EXPECT_EQ(GetCalls(), vecExpected);
}

TEST_F(CommandsOnBus, NothingSelectedSendsNothing)
{
    GetClient().SetNetworkProperties(MakeService("wifi"), 0);
    GetClient().SetNetworkProperties(MakeService("wifi"), 0xFFFFFFE0);
    EXPECT_THAT(GetCalls(), IsEmpty());
}

TEST_F(CommandsOnBus, NoNameserversAreAnEmptyListOfTexts)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.vecNameservers.clear();
    GetClient().SetNetworkProperties(service, 0x10);
    EXPECT_THAT(GetCalls(), ElementsAre(R"(/wifi net.connman.Service SetProperty )"
                                        R"(sv["Nameservers.Configuration",["as",[]]])"));
}

TEST_F(CommandsOnBus, ABrokenTextIsMendedAndLosesNothingElse)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.sIPv4Address = "a\xFF";
    service.sIPv4Netmask = service.sIPv4Gateway = "";
    GetClient().SetNetworkProperties(service, 0x08);
    EXPECT_THAT(
        GetCalls(),
        ElementsAre(R"(/wifi net.connman.Service SetProperty sv["IPv4.Configuration",)"
                    R"(["a{sv}",{"Address":["s","a)"
                    "\xEF\xBF\xBD"
                    R"("],"Gateway":["s",""],"Method":["s","manual"],"Netmask":["s",""]}]])"));
}

TEST_F(CommandsOnBus, SwitchATechnologyOnAndOff)
{
    GetClient().SetTechnologyPower(MakeTechnology(), true);
    GetClient().SetTechnologyPower(MakeTechnology(), false);
    EXPECT_THAT(
        GetCalls(),
        ElementsAre(R"(/technology net.connman.Technology SetProperty sv["Powered",["b",true]])",
                    R"(/technology net.connman.Technology SetProperty sv["Powered",["b",false]])"));
}

TEST_F(CommandsOnBus, StartAScan)
{
    GetClient().ScanTechnology(MakeTechnology());
    EXPECT_THAT(GetCalls(), ElementsAre("/technology net.connman.Technology Scan"));
}

TEST_F(CommandsOnBus, ArriveInTheOrderOfSending)
{
    std::vector<std::string> vecExpected;
    for (int nTime = 0; nTime < 50; ++nTime) {
        GetClient().SetNetworkProperties(MakeService("wifi"), 0x19);
        GetClient().ScanTechnology(MakeTechnology());
        vecExpected.insert(vecExpected.end(),
                           {pSetManual, pSetNameservers, "/wifi net.connman.Service Connect",
                            "/technology net.connman.Technology Scan"});
    }
    EXPECT_EQ(GetCalls(), vecExpected);
}

TEST_F(CommandsOnBus, OfSeveralThreadsEachArriveInItsOrder)
{
    constexpr int nTimes = 100;
    std::vector<std::thread> vecThreads;
    for (const char* pType : {"one", "two", "three"}) {
        vecThreads.emplace_back([this, pType] {
            for (int nTime = 0; nTime < nTimes; ++nTime)
                GetClient().SetNetworkProperties(MakeService(pType), 0x11);
        });
    }
    for (std::thread& thread : vecThreads)
        thread.join();

    std::map<std::string, std::string> mapMembers;
    for (const std::string& sCall : GetCalls()) {
        const bool bConnect = sCall.find(" Connect") != std::string::npos;
        mapMembers[sCall.substr(0, sCall.find(' '))] += bConnect ? "C" : "S";
    }
    std::string sExpected;
    for (int nTime = 0; nTime < nTimes; ++nTime)
        sExpected += "SC";
    EXPECT_THAT(mapMembers,
                ElementsAre(std::pair("/one", sExpected), std::pair("/three", sExpected),
                            std::pair("/two", sExpected)));
}

// --- Replies -----------------------------------------------------------------------------------

TEST_F(CommandsOnBus, ErrorsInAnswerAreDropped)
{
    daemon.OnCall(Simulator::CallPattern(), Simulator::Behaviour::Fail("net.connman.Error.Failed"));
    GetClient().SetNetworkProperties(MakeService("wifi"), 0x19);
    GetClient().ScanTechnology(MakeTechnology());
    EXPECT_EQ(GetCalls().size(), 4U);
    AwaitHandled();
    EXPECT_THAT(TestSupport::HostLog::GetMessages(), IsEmpty());
}

TEST_F(CommandsOnBus, ThreeHundredConnectsWithoutAnAnswerAllArrive)
{
    daemon.OnCall({"Connect", "", "", ""}, Simulator::Behaviour::StaySilent());
    for (int nTime = 0; nTime < 300; ++nTime)
        GetClient().SetNetworkProperties(MakeService("wifi"), 0x01);
    EXPECT_EQ(GetCalls(), std::vector<std::string>(300, "/wifi net.connman.Service Connect"));
}

TEST_F(CommandsOnBus, TheBusHoldsBackCallsThatWantAnAnswer)
{
    // What the test above relies on: such calls do not all arrive.
    daemon.OnCall({"Connect", "", "", ""}, Simulator::Behaviour::StaySilent());
    for (int nTime = 0; nTime < 300; ++nTime)
        client->thread.GetDbusConnection().Send(
            DBus::Message("net.connman", "/wifi", "net.connman.Service", "Connect"));
    EXPECT_LT(GetCalls().size(), 300U);
}

// --- Where there is no way ---------------------------------------------------------------------

TEST_F(CommandsOnBus, APathThatDBusDoesNotAllowSendsNothing)
{
    for (const char* pPath : {"", "wifi", "/wifi/", "//wifi", "/wi fi", "/wi-fi", "/w\xC3\xBC",
                              "/\xFF", "/org/freedesktop/DBus/Local"}) {
        ConnMan::NetworkService service = MakeService("wifi");
        service.sPath = pPath;
        GetClient().SetNetworkProperties(service, 0x1D);
        GetClient().SetNetworkProperties(service, 0x0A);
        ConnMan::NetworkTechnology technology = MakeTechnology();
        technology.sPath = pPath;
        GetClient().SetTechnologyPower(technology, true);
        GetClient().ScanTechnology(technology);
        EXPECT_THAT(GetCalls(), IsEmpty()) << pPath;
    }
}

TEST_F(CommandsOnBus, AStalePathIsSentAllTheSame)
{
    ConnMan::NetworkService service = MakeService("wifi");
    service.sPath = "/net/connman/service/gone";
    GetClient().SetNetworkProperties(service, 0x01);
    EXPECT_THAT(GetCalls(), ElementsAre("/net/connman/service/gone net.connman.Service Connect"));
}

TEST_F(CommandsOnBus, WithoutADaemonGoNowhere)
{
    daemon.Leave();
    GetClient().SetNetworkProperties(MakeService("wifi"), 0x19);
    GetClient().ScanTechnology(MakeTechnology());
    daemon.Return();
    EXPECT_THAT(GetCalls(), IsEmpty());
}

/** Sends one of each. */
void SendEverything(ConnMan& client)
{
    client.SetNetworkProperties(MakeService("wifi"), 0x1D);
    client.SetNetworkProperties(MakeService("ethernet"), 0x0A);
    client.SetTechnologyPower(MakeTechnology(), true);
    client.ScanTechnology(MakeTechnology());
}

TEST(CommandsWithoutABus, GoNowhere)
{
    DBus::Connection connection;
    ConnMan client(connection);
    SendEverything(client);
    EXPECT_THAT(client.GetNetworks(), IsEmpty());
}

TEST(CommandsWithoutABus, GoNowhereWhenItsBusHasDied)
{
    DBus::Connection connection = DBus::Connection::SystemBus();
    ConnMan client(connection);
    TestSupport::GetSystemBus().Stop();
    SendEverything(client);
    EXPECT_TRUE(TestSupport::Eventually([&] { return connection.Dispatch(10); }));
    SendEverything(client);
}

} // namespace Tovra
