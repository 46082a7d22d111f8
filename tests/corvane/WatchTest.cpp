#include "tests/corvane/Scene.h"

#include <algorithm>
#include <regex>

namespace Tovra
{

namespace
{

using testing::HasSubstr;

class Watching : public Scene
{
protected:
    void StartWatching(std::vector<std::string> vecArguments = {"watch"})
    {
        StartConnMan();
        pWatch = Start(std::move(vecArguments));
        ASSERT_TRUE(pWatch->AwaitOutput("WiredBAB49A54"));
        ASSERT_TRUE(Eventually([&] { return pConnMan->GetAgentCount() == 1; }));
    }

    void End()
    {
        pWatch->Signal(SIGINT);
        EXPECT_EQ(pWatch->AwaitExit(), 0);
    }

    std::unique_ptr<Session> pWatch;
    const std::string sHome = PathOf("wifi_home");
};

TEST_F(Watching, ShowsWhatThereIsFirst)
{
    StartConnMan();
    pWatch = Start({"watch"});
    ASSERT_TRUE(pWatch->AwaitOutput("Watching; Ctrl-C ends.\n"));
    // Which of the two lists comes first is open.
    const std::vector<std::string> vecShown = {"  + technology 'Wired' (on)\n",
                                               "  + technology 'WiFi' (on)\n",
                                               "  + network 'Café am Eck' (wifi, none)\n",
                                               "  + network 'Guests' (wifi, psk)\n",
                                               "  + network 'My Net-1' (wifi, psk wps)\n",
                                               "  + network 'Wired' (ethernet)\n"};
    const auto fnIsShown = [&](const std::string& sShown) {
        return pWatch->GetOutput().find(sShown) != std::string::npos;
    };
    while (!std::all_of(vecShown.begin(), vecShown.end(), fnIsShown))
        ASSERT_TRUE(pWatch->AwaitOutput("\n")) << pWatch->GetOutput();
    End();
    std::istringstream lines(pWatch->GetOutput());
    std::string sLine;
    std::getline(lines, sLine);
    while (std::getline(lines, sLine))
        EXPECT_TRUE(std::regex_match(sLine, std::regex(R"(\d\d:\d\d:\d\d  .*)"))) << sLine;
}

TEST_F(Watching, ShowsNetworksComeGoAndChange)
{
    StartConnMan();
    pWatch = Start({"watch"});
    ASSERT_TRUE(pWatch->AwaitOutput("+ network 'Wired'"));
    Simulator::Network network;
    network.sName = "Newcomer";
    const std::string sPath = pConnMan->AddService(network);
    EXPECT_TRUE(pWatch->AwaitOutput("  + network 'Newcomer' (wifi, psk)\n"));
    pConnMan->SetState(sHome, "ready");
    EXPECT_TRUE(pWatch->AwaitOutput("  network 'My Net-1' address: \"\" -> \"192.168.178.41\", "
                                    "connected: false -> true, "));
    pConnMan->RemoveService(sPath);
    EXPECT_TRUE(pWatch->AwaitOutput("  - network 'Newcomer'\n"));
    End();
}

TEST_F(Watching, ShowsWhatThePlugInTellsTheHost)
{
    StartConnMan();
    pWatch = Start({"watch"});
    ASSERT_TRUE(pWatch->AwaitOutput("+ network 'Wired'"));
    pConnMan->SetState(sHome, "ready");
    EXPECT_TRUE(pWatch->AwaitOutput("  ! networks changed (5: state, networks)\n"));
    EXPECT_TRUE(pWatch->AwaitOutput("  ! the device's addresses are to be refreshed\n"));
    EXPECT_TRUE(pWatch->AwaitOutput("  ! event netcfg-dhcp-address-acquired\n"));
    End();
}

// ConnMan tells of it, but the plug-in does not pass it on.
TEST_F(Watching, ShowsAStrengthThatChanges)
{
    StartConnMan();
    pWatch = Start({"watch"});
    ASSERT_TRUE(pWatch->AwaitOutput("+ network 'Wired'"));
    pConnMan->SetServiceProperty(
        sHome, "Strength", Simulator::ReadValue(Simulator::Json::array({"y", 43}), "Strength"));
    EXPECT_TRUE(pWatch->AwaitOutput("  network 'My Net-1' strength: 78 -> 43\n"));
    End();
}

TEST_F(Watching, WritesALineOfJsonForEach)
{
    StartWatching({"watch", "--json"});
    pConnMan->SetState(sHome, "ready");
    ASSERT_TRUE(pWatch->AwaitOutput("\"event\":\"ipc\""));
    pConnMan->RemoveService(sHome);
    ASSERT_TRUE(pWatch->AwaitOutput("network-removed"));
    End();
    std::map<std::string, Json> mapLast;
    std::istringstream lines(pWatch->GetOutput());
    for (std::string sLine; std::getline(lines, sLine);) {
        const Json line = Json::parse(sLine);
        mapLast[line.at("event")] = line;
    }
    EXPECT_EQ(mapLast.at("technology-added").at("technology").at("type"), "wifi");
    EXPECT_EQ(mapLast.at("network-added").at("network").at("name"), "Wired");
    EXPECT_EQ(mapLast.at("network-changed").at("network").at("connected"), true);
    EXPECT_EQ(mapLast.at("network-changed").at("before").at("name"), "My Net-1");
    EXPECT_THAT(pWatch->GetOutput(), HasSubstr("{\"event\":\"networks-changed\",\"flags\":5}\n"));
    EXPECT_EQ(mapLast.at("refresh"), Json({{"event", "refresh"}}));
    EXPECT_EQ(mapLast.at("ipc").at("name"), "netcfg-dhcp-address-acquired");
    EXPECT_EQ(mapLast.at("network-removed").at("network").at("name"), "My Net-1");
}

TEST_F(Watching, WithoutConnManItSaysSo)
{
    pWatch = Start({"watch"});
    EXPECT_TRUE(pWatch->AwaitErrors("The network daemon has told of nothing yet\n"));
    End();
}

TEST_F(Watching, EndsWhenNobodyReads)
{
    StartConnMan();
    // As some programs start others: without the signal that would end it.
    pWatch = std::make_unique<Session>(
        std::vector<std::string>{"/bin/sh", "-c", "trap '' PIPE; exec " CORVANE " watch"});
    ASSERT_TRUE(pWatch->AwaitOutput("+ network 'Wired'"));
    pWatch->CloseOutput();
    pConnMan->RemoveService(sHome);
    EXPECT_EQ(pWatch->AwaitExit(), 1);
    EXPECT_EQ(pWatch->GetErrors(), "corvane: nobody reads the output any more\n");
}

} // namespace

} // namespace Tovra
