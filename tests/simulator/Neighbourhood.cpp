#include "tests/simulator/Neighbourhood.h"

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pServiceInterface = "net.connman.Service";

} // namespace

Network MakeWifi(const std::string& sName)
{
    Network network;
    network.sName = sName;
    network.sPassphrase = "correct horse";
    return network;
}

Network MakeCable(const std::string& sInterface)
{
    Network network;
    network.sType = "ethernet";
    network.sName = "Wired";
    network.sInterface = sInterface;
    network.sMacAddress = "02:00:00:00:01:0" + sInterface.substr(sInterface.size() - 1);
    return network;
}

Scenario MakeScenario(std::vector<Network> vecServices)
{
    Scenario scenario;
    scenario.vecTechnologies.resize(2);
    scenario.vecTechnologies[1].sType = "ethernet";
    scenario.vecServices = std::move(vecServices);
    return scenario;
}

std::string PathOf(const Network& network)
{
    return Service(network).sPath;
}

Neighbourhood::Neighbourhood(const Scenario& scenario) : simulation(scenario, outlet) {}

Neighbourhood::Neighbourhood(std::vector<Network> vecServices)
    : Neighbourhood(MakeScenario(std::move(vecServices)))
{
}

std::optional<Reply> Neighbourhood::Call(const std::string& sPath, const std::string& sInterface,
                                         const std::string& sMember, const Arguments& arguments,
                                         const std::string& sSender)
{
    Simulator::Call call;
    call.sSender = sSender;
    call.sPath = sPath;
    call.sInterface = sInterface;
    call.sMember = sMember;
    call.arguments = arguments;
    struct Waiting {
        std::optional<Reply> reply;
        bool bReturned = false;
    };
    const auto pWaiting = std::make_shared<Waiting>();
    simulation.Handle(call, [this, pWaiting](const Reply& reply) {
        if (pWaiting->bReturned)
            vecLate.push_back(reply);
        else
            pWaiting->reply = reply;
    });
    pWaiting->bReturned = true;
    return pWaiting->reply;
}

std::optional<Reply> Neighbourhood::Connect(const std::string& sPath, const std::string& sSender)
{
    return Call(sPath, pServiceInterface, "Connect", {}, sSender);
}

std::optional<Reply> Neighbourhood::Disconnect(const std::string& sPath)
{
    return Call(sPath, pServiceInterface, "Disconnect");
}

std::optional<Reply> Neighbourhood::SetProperty(const std::string& sPath, const std::string& sName,
                                                const Value& value)
{
    return Call(sPath, pServiceInterface, "SetProperty",
                {"sv", Json::array({sName, MakeVariant(value)})});
}

void Neighbourhood::RegisterAgent(const std::string& sOwner)
{
    Call("/", "net.connman.Manager", "RegisterAgent", {"o", Json::array({"/agent"})}, sOwner);
}

void Neighbourhood::AnswerAgent(const Json& fields)
{
    Reply reply;
    reply.arguments = {"a{sv}", Json::array({fields})};
    const Answer fnAnswer = outlet.vecAsked.back().fnAnswer;
    fnAnswer(reply);
}

void Neighbourhood::RefuseAgent(const std::string& sError)
{
    const Answer fnAnswer = outlet.vecAsked.back().fnAnswer;
    fnAnswer({{}, sError, ""});
}

Json Neighbourhood::GetProperty(const std::string& sPath, const std::string& sName) const
{
    for (const auto& [sKey, value] :
         GetProperties(simulation.GetService(sPath), simulation.GetWorld().version))
        if (sKey == sName)
            return value.contents;
    return nullptr;
}

std::string Neighbourhood::GetState(const std::string& sPath) const
{
    return simulation.GetService(sPath).sState;
}

} // namespace Tovra::Simulator
