#include "tests/plugin/Stage.h"

#include "tests/connman/PrivateOpt.h"

#include <sstream>
#include <stdexcept>
#include <utility>

namespace Tovra
{

namespace
{

using Simulator::Json;
using TestSupport::deadline;

constexpr const char* pAgentPath = "/tovra/corvane/connman/agent";
constexpr const char* pCommandRecord = "/opt/record";

std::string MakePath(const std::string& sIdentifier)
{
    return "/net/connman/service/" + sIdentifier;
}

bool IsCommand(const Simulator::Call& call)
{
    return call.sMember != "RegisterAgent" && call.sMember != "GetServices" &&
           call.sMember != "GetTechnologies";
}

std::string ToText(const Simulator::Call& call)
{
    std::string sText = call.sPath + " " + call.sMember;
    if (!call.arguments.values.empty())
        sText += " " + call.arguments.values.dump();
    return sText;
}

} // namespace

Simulator::Scenario Scenes::Quiet(std::vector<Simulator::Network> vecServices,
                                  std::vector<std::string> vecTechnologies)
{
    Simulator::Scenario scenario;
    scenario.version = Simulator::Version::V1_29;
    scenario.timing = Simulator::Timing::Quick();
    scenario.bSorted = false;
    scenario.bAutoConnects = false;
    scenario.vecServices = std::move(vecServices);
    for (std::string& sType : vecTechnologies) {
        scenario.vecTechnologies.emplace_back();
        scenario.vecTechnologies.back().sType = std::move(sType);
    }
    return scenario;
}

Simulator::Network Scenes::Wifi(const std::string& sName, const std::string& sState)
{
    Simulator::Network network;
    network.sPath = MakePath("wifi_" + sName);
    network.sName = sName;
    network.sState = sState;
    return network;
}

Simulator::Network Scenes::Cable(const std::string& sState)
{
    Simulator::Network network;
    network.sPath = MakePath("ethernet_cable");
    network.sType = "ethernet";
    network.sInterface = "eth0";
    network.sName = "Wired";
    network.sState = sState;
    return network;
}

Simulator::Network Scenes::WithIPv4(Simulator::Network network, const std::string& sMethod,
                                    const std::string& sAddress, const std::string& sNetmask,
                                    const std::string& sGateway)
{
    using Simulator::MakeString;
    network.overrides["IPv4"] = Simulator::MakeDictionaryValue({{"Method", MakeString(sMethod)},
                                                                {"Address", MakeString(sAddress)},
                                                                {"Netmask", MakeString(sNetmask)},
                                                                {"Gateway", MakeString(sGateway)}});
    return network;
}

Simulator::Network Scenes::WithNameservers(Simulator::Network network,
                                           const std::vector<std::string>& vecNameservers)
{
    network.overrides["Nameservers"] = Simulator::MakeStrings(vecNameservers);
    return network;
}

Stage::Stage()
{
    PrivateOpt::Clear();
    PrivateOpt::InstallHostCommand(std::string("echo \"$@\" >>") + pCommandRecord + "\n");
}

void Stage::Start(const Simulator::Scenario& scenario)
{
    StartConnMan(scenario);
    StartHost();
}

void Stage::StartConnMan(const Simulator::Scenario& scenario)
{
    pConnMan = std::make_unique<Simulator::Daemon>(scenario);
}

void Stage::StartHost()
{
    static bool bStarted = false;
    if (std::exchange(bStarted, true))
        throw std::logic_error("the plug-in is there only once: run each test by ctest");
    pLibrary = std::make_unique<TestSupport::PlugInLibrary>();
    sPlugInName = pConnMan->WaitForCall("RegisterAgent", deadline).value().sSender;
    pPlugIn = pLibrary->GetInterface(host.config);
    ASSERT_TRUE(pConnMan->WaitForCall("GetTechnologies", deadline));
    AwaitDispatched();
    ASSERT_EQ(Read(), 1);
    TestSupport::HostLog::Reset();
    host.ForgetEvents();
    pConnMan->ClearCalls();
}

bool Stage::ReadUntil(const std::function<bool(const DeviceConfig&)>& fnPredicate)
{
    return TestSupport::Eventually([&] {
        Read();
        return host.Look(fnPredicate);
    });
}

// What libdbus refuses is answered by it, in its turn: once the messages before it are dispatched.
void Stage::AwaitDispatched()
{
    const Simulator::Reply reply =
        pConnMan->CallRaw({sPlugInName, pAgentPath, "net.connman.Agent", "Fence", {}}, deadline);
    ASSERT_EQ(reply.sError, "org.freedesktop.DBus.Error.UnknownMethod");
}

void Stage::Settle()
{
    AwaitDispatched();
    AwaitDispatched();
}

std::vector<std::string> Stage::TakeCommands()
{
    AwaitDispatched();
    std::vector<std::string> vecCommands;
    for (const Simulator::Call& call : pConnMan->GetCalls()) {
        if (IsCommand(call))
            vecCommands.push_back(ToText(call));
    }
    pConnMan->ClearCalls();
    return vecCommands;
}

Simulator::Reply Stage::AskAgent(const std::string& sPath, const Json& fields)
{
    return pConnMan->CallRaw({sPlugInName,
                              pAgentPath,
                              "net.connman.Agent",
                              "RequestInput",
                              {"oa{sv}", Json::array({sPath, fields})}},
                             deadline);
}

std::string Stage::GetPlugInName() const
{
    return sPlugInName;
}

std::vector<std::string> Stage::GetHostCommands()
{
    std::istringstream record(PrivateOpt::ReadFile(pCommandRecord));
    std::vector<std::string> vecLines;
    for (std::string sLine; std::getline(record, sLine);)
        vecLines.push_back(sLine);
    return vecLines;
}

TestSupport::LogMessage PlugInMessage(const char* pFunction, int nLine, const std::string& sText)
{
    return {QelLogInfo, sText, pFunction, "Libraries/TargetSpecificKX22/TargetSpecificKX22", nLine};
}

} // namespace Tovra
