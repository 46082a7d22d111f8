#include "tests/corvane/Scene.h"

#include "tests/connman/PrivateOpt.h"

#include <filesystem>

namespace Tovra
{

namespace
{

constexpr const char* pRuntimeDirectory = "/opt/run";

Simulator::Network MakeNetwork(const std::string& sIdentifier, const std::string& sName,
                               std::vector<std::string> vecSecurity)
{
    Simulator::Network network;
    network.sPath = "/net/connman/service/" + sIdentifier;
    network.sName = sName;
    network.vecSecurity = std::move(vecSecurity);
    return network;
}

Simulator::Network MakeCable()
{
    Simulator::Network cable = MakeNetwork("ethernet_cable", "Wired", {});
    cable.sType = "ethernet";
    cable.sInterface = "eth0";
    cable.sAddress = "10.20.0.15";
    cable.sGateway = "10.20.0.1";
    cable.vecNameservers = {"10.20.0.1"};
    return cable;
}

} // namespace

Scene::Scene()
{
    PrivateOpt::Clear();
    PrivateOpt::InstallHostCommand("exec " CORVANE " \"$@\"\n");
    std::filesystem::create_directory(pRuntimeDirectory);
    setenv("XDG_RUNTIME_DIR", pRuntimeDirectory, 1);
    setenv("TERM", "xterm", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("TSAN_OPTIONS", "atexit_sleep_ms=0", 0); // else each run ends a second late
    unsetenv("NO_COLOR");
    unsetenv("FUNDRA_LOG_LEVEL");
}

Simulator::Scenario Scene::Neighbourhood()
{
    Simulator::Scenario scenario;
    scenario.version = Simulator::Version::V1_29;
    scenario.timing = Simulator::Timing::Quick();
    scenario.bSorted = false;
    scenario.vecTechnologies.resize(2);
    scenario.vecTechnologies[1].sType = "ethernet";
    Simulator::Network home = MakeNetwork("wifi_home", "My Net-1", {"psk", "wps"});
    home.nStrength = 78;
    home.sPassphrase = pPassphrase;
    home.sAddress = "192.168.178.41";
    home.sGateway = "192.168.178.1";
    home.vecNameservers = {"192.168.178.1"};
    Simulator::Network guests = MakeNetwork("wifi_guests", "Guests", {"psk"});
    guests.nStrength = 20;
    guests.sPassphrase = "welcome guests";
    Simulator::Network cafe = MakeNetwork("wifi_cafe", "Café am Eck", {"none"});
    cafe.nStrength = 52;
    scenario.vecServices = {MakeCable(), home, guests, cafe};
    return scenario;
}

Simulator::Scenario Scene::WithAnotherCable()
{
    Simulator::Scenario scenario = Neighbourhood();
    Simulator::Network other = scenario.vecServices[0];
    other.sPath = PathOf("ethernet_other_cable");
    scenario.vecServices[0].sState = "online";
    scenario.vecServices.push_back(other);
    return scenario;
}

void Scene::StartConnMan(const Simulator::Scenario& scenario)
{
    pConnMan = std::make_unique<Simulator::Daemon>(scenario);
}

std::unique_ptr<Session> Scene::Start(std::vector<std::string> vecArguments, Session::Ends ends,
                                      std::map<std::string, std::string> mapEnvironment)
{
    vecArguments.insert(vecArguments.begin(), CORVANE);
    return std::make_unique<Session>(std::move(vecArguments), ends, mapEnvironment);
}

std::unique_ptr<Session> Scene::StartInTerminal(std::vector<std::string> vecArguments,
                                                std::map<std::string, std::string> mapEnvironment)
{
    return Start(std::move(vecArguments), Session::Ends::Terminal, std::move(mapEnvironment));
}

Outcome Scene::Run(std::vector<std::string> vecArguments, const std::string& sInput)
{
    const auto pSession = Start(std::move(vecArguments));
    pSession->Write(sInput);
    pSession->CloseInput();
    const int nExit = pSession->AwaitExit();
    return {nExit, pSession->GetOutput(), pSession->GetErrors()};
}

Json Scene::RunForJson(std::vector<std::string> vecArguments, int nExit, const std::string& sInput)
{
    vecArguments.insert(vecArguments.begin(), "--json");
    const Outcome outcome = Run(std::move(vecArguments), sInput);
    EXPECT_EQ(outcome.nExit, nExit) << outcome;
    EXPECT_EQ(outcome.sOutput.find('\n') + 1, outcome.sOutput.size()) << "more than a line";
    return Json::parse(outcome.sOutput);
}

// ConnMan forgets the agent of a connection that is gone, after all that came from it.
std::vector<std::string> Scene::TakeCommands()
{
    EXPECT_TRUE(Eventually([&] { return pConnMan->GetAgentCount() == 0; }));
    std::vector<std::string> vecCommands;
    for (const Simulator::Call& call : pConnMan->GetCalls()) {
        if (call.sMember == "RegisterAgent" || call.sMember.rfind("Get", 0) == 0)
            continue;
        std::string sCommand = call.sPath.substr(call.sPath.rfind('/') + 1) + " " + call.sMember;
        if (!call.arguments.values.empty())
            sCommand += " " + call.arguments.values.dump();
        vecCommands.push_back(sCommand);
    }
    pConnMan->ClearCalls();
    return vecCommands;
}

std::string Scene::AskForPassphrase(const std::string& sPath)
{
    using namespace Simulator;
    const Value passphrase = MakeDictionaryValue(
        {{"Type", MakeString("psk")}, {"Requirement", MakeString("mandatory")}});
    const Reply reply = pConnMan->CallRaw(
        {pConnMan->GetCalls("Connect").front().sSender,
         "/tovra/corvane/connman/agent",
         "net.connman.Agent",
         "RequestInput",
         {"oa{sv}", Simulator::Json::array({sPath, MakeDictionary({{"Passphrase", passphrase}})})}},
        deadline);
    return reply.arguments.values.dump();
}

bool Scene::AwaitState(const std::string& sPath, const std::string& sState)
{
    return Eventually([&] { return pConnMan->GetState(sPath) == sState; });
}

std::string Scene::MakeFile(const std::string& sText)
{
    const std::string sPath = "/opt/file";
    PrivateOpt::WriteFile(sPath, sText);
    return sPath;
}

std::string Scene::PathOf(const std::string& sIdentifier)
{
    return "/net/connman/service/" + sIdentifier;
}

std::string Scene::GetEventDirectory()
{
    return std::string(pRuntimeDirectory) + "/corvane";
}

} // namespace Tovra
