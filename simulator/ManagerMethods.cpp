#include "simulator/Errors.h"
#include "simulator/Methods.h"

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pManager = "net.connman.Manager";

void GetManagerProperties(const Parts& parts, const Call&, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(parts.world.GetManagerProperties()));
}

void SetManagerProperty(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    const std::string sName = GetText(call, 0);
    const Value value = GetVariant(call);
    if (sName != "OfflineMode" && sName != "SessionMode")
        return fnAnswer(Errors::InvalidProperty());
    if (value.sSignature != "b")
        return fnAnswer(Errors::InvalidArguments());
    const bool bValue = value.contents.get<bool>();
    if (sName == "OfflineMode")
        parts.technologies.SetOfflineMode(bValue);
    else
        parts.announcer.ChangeManager([&] { parts.world.bSessionMode = bValue; });
    fnAnswer(MakeDone());
}

void GetTechnologies(const Parts& parts, const Call&, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(parts.announcer.ListTechnologies()));
}

void GetServices(const Parts& parts, const Call&, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(parts.announcer.ListServices()));
}

void GetPeers(const Parts&, const Call&, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(Arguments{"a(oa{sv})", Json::array({Json::array()})}));
}

void GetTetheringClients(const Parts&, const Call&, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(Arguments{"as", Json::array({Json::array()})}));
}

void RegisterAgent(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    const bool bDone = parts.agents.Register(call.sSender, GetText(call, 0));
    fnAnswer(bDone ? MakeDone() : Errors::AlreadyExists());
}

void UnregisterAgent(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    if (!parts.agents.Unregister(call.sSender))
        return fnAnswer(Errors::NotRegistered());
    parts.connections.AgentGone(call.sSender);
    fnAnswer(MakeDone());
}

} // namespace

const std::vector<Method>& GetManagerMethods()
{
    static const std::vector<Method> vecMethods = {
        {pManager, "GetProperties", "", GetManagerProperties},
        {pManager, "SetProperty", "sv", SetManagerProperty},
        {pManager, "GetTechnologies", "", GetTechnologies},
        {pManager, "GetServices", "", GetServices},
        {pManager, "GetPeers", "", GetPeers},
        {pManager, "GetTetheringClients", "", GetTetheringClients, Version::V1_41},
        {pManager, "RegisterAgent", "o", RegisterAgent},
        {pManager, "UnregisterAgent", "o", UnregisterAgent},
    };
    return vecMethods;
}

} // namespace Tovra::Simulator
