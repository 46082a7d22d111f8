#include "simulator/Control.h"
#include "simulator/CallLog.h"
#include "simulator/Fields.h"

#include <map>

namespace Tovra::Simulator
{

namespace
{

using Command = Json (*)(Daemon& daemon, Fields& fields);

const Json& GetObject(Fields& fields, const char* pName)
{
    const Json* pObject = fields.Find(pName);
    if (!pObject)
        throw Problem(std::string(pName) + ": is needed and absent");
    return *pObject;
}

std::optional<Value> GetValue(Fields& fields)
{
    const Json& value = GetObject(fields, "value");
    return value.is_null() ? std::nullopt : std::optional<Value>(ReadValue(value, "value"));
}

Json ToJson(const Reply& reply)
{
    if (reply.IsError())
        return {{"error", reply.sError}, {"message", reply.sErrorMessage}};
    return {{"signature", reply.arguments.sSignature}, {"args", reply.arguments.values}};
}

Json AddService(Daemon& daemon, Fields& fields)
{
    const Network network = ReadNetwork(GetObject(fields, "service"), "service");
    fields.Finish();
    return {{"path", daemon.AddService(network)}};
}

Json ChangeService(Daemon& daemon, Fields& fields)
{
    const std::string sPath = fields.ReadRequired("path");
    const Json& changes = GetObject(fields, "service");
    for (const char* pFixed : {"path", "type", "state", "error", "saved", "appears"})
        if (changes.contains(pFixed))
            throw Problem(std::string("service.") + pFixed +
                          ": cannot be changed; there are set-state and set-service-property");
    fields.Finish();
    daemon.ChangeNetwork(
        sPath, [&](Network& network) { network = ReadNetwork(changes, "service", network); });
    return Json::object();
}

// For a command whose only field is a path.
template <void (Daemon::*Operation)(const std::string& sPath)>
Json RunOn(Daemon& daemon, Fields& fields)
{
    const std::string sPath = fields.ReadRequired("path");
    fields.Finish();
    (daemon.*Operation)(sPath);
    return Json::object();
}

Json SetState(Daemon& daemon, Fields& fields)
{
    const std::string sPath = fields.ReadRequired("path");
    const std::string sState = fields.ReadRequired("state");
    fields.Finish();
    daemon.SetState(sPath, sState);
    return Json::object();
}

Json SetServiceProperty(Daemon& daemon, Fields& fields)
{
    const std::string sPath = fields.ReadRequired("path");
    const std::string sName = fields.ReadRequired("name");
    const auto value = GetValue(fields);
    fields.Finish();
    daemon.SetServiceProperty(sPath, sName, value);
    return Json::object();
}

Json AddTechnology(Daemon& daemon, Fields& fields)
{
    const auto technology = ReadTechnology(GetObject(fields, "technology"), "technology");
    fields.Finish();
    return {{"path", daemon.AddTechnology(technology)}};
}

Json SetTechnologyProperty(Daemon& daemon, Fields& fields)
{
    const std::string sPath = fields.ReadRequired("path");
    const std::string sName = fields.ReadRequired("name");
    const auto value = GetValue(fields);
    fields.Finish();
    daemon.SetTechnologyProperty(sPath, sName, value);
    return Json::object();
}

Json Emit(Daemon& daemon, Fields& fields)
{
    Signal signal;
    fields.Read("path", signal.sPath);
    fields.Read("interface", signal.sInterface);
    signal.sMember = fields.ReadRequired("member");
    signal.arguments = ReadArguments(fields);
    fields.Read("destination", signal.sDestination);
    unsigned nCount = 1;
    fields.Read("count", nCount);
    std::chrono::milliseconds interval(0);
    fields.Read("interval", interval);
    fields.Finish();
    daemon.EmitStorm(signal, nCount, interval);
    return Json::object();
}

Json CallOut(Daemon& daemon, Fields& fields)
{
    OutgoingCall call;
    call.sDestination = fields.ReadRequired("destination");
    call.sPath = fields.ReadRequired("path");
    fields.Read("interface", call.sInterface);
    call.sMember = fields.ReadRequired("member");
    call.arguments = ReadArguments(fields);
    std::chrono::milliseconds timeout(5000);
    fields.Read("timeout", timeout);
    fields.Finish();
    return {{"reply", ToJson(daemon.CallRaw(call, timeout))}};
}

Json OnCall(Daemon& daemon, Fields& fields)
{
    const Rule rule = ReadRule(GetObject(fields, "rule"), "rule");
    fields.Finish();
    daemon.OnCall(rule.pattern, rule.behaviour);
    return Json::object();
}

Json ClearBehaviours(Daemon& daemon, Fields& fields)
{
    fields.Finish();
    daemon.ClearBehaviours();
    return Json::object();
}

Json Release(Daemon& daemon, Fields& fields)
{
    bool bNewestFirst = false;
    fields.Read("newestFirst", bNewestFirst);
    fields.Finish();
    daemon.ReleaseReplies(bNewestFirst);
    return Json::object();
}

Json GetCalls(Daemon& daemon, Fields& fields)
{
    std::string sMember;
    fields.Read("member", sMember);
    fields.Finish();
    Json calls = Json::array();
    for (const Call& call : sMember.empty() ? daemon.GetCalls() : daemon.GetCalls(sMember))
        calls.push_back(ToJson(call));
    return {{"calls", std::move(calls)}};
}

Json ClearCalls(Daemon& daemon, Fields& fields)
{
    fields.Finish();
    daemon.ClearCalls();
    return Json::object();
}

Json WaitForCall(Daemon& daemon, Fields& fields)
{
    const std::string sMember = fields.ReadRequired("member");
    std::chrono::milliseconds timeout(5000);
    fields.Read("timeout", timeout);
    fields.Finish();
    const auto call = daemon.WaitForCall(sMember, timeout);
    if (!call)
        throw Problem("no call of " + sMember + " came");
    return {{"call", ToJson(*call)}};
}

Json GetServices(Daemon& daemon, Fields& fields)
{
    fields.Finish();
    Json services = Json::array();
    for (const std::string& sPath : daemon.GetServicePaths())
        services.push_back(Json::array({sPath, daemon.GetServiceProperties(sPath)}));
    return {{"services", std::move(services)}};
}

template <void (Daemon::*Operation)()> Json Run(Daemon& daemon, Fields& fields)
{
    fields.Finish();
    (daemon.*Operation)();
    return Json::object();
}

const std::map<std::string, Command>& GetCommands()
{
    static const std::map<std::string, Command> mapCommands = {
        {"add-service", AddService},
        {"change-service", ChangeService},
        {"remove-service", RunOn<&Daemon::RemoveService>},
        {"push-button", RunOn<&Daemon::PushButton>},
        {"set-state", SetState},
        {"set-service-property", SetServiceProperty},
        {"add-technology", AddTechnology},
        {"remove-technology", RunOn<&Daemon::RemoveTechnology>},
        {"set-technology-property", SetTechnologyProperty},
        {"emit", Emit},
        {"call", CallOut},
        {"on-call", OnCall},
        {"clear-behaviours", ClearBehaviours},
        {"release", Release},
        {"calls", GetCalls},
        {"clear-calls", ClearCalls},
        {"wait-for-call", WaitForCall},
        {"services", GetServices},
        {"leave", Run<&Daemon::Leave>},
        {"return", Run<&Daemon::Return>},
        {"restart", Run<&Daemon::Restart>}};
    return mapCommands;
}

std::string EnumerateCommands()
{
    std::vector<std::string> vecNames;
    for (const auto& [sName, pCommand] : GetCommands())
        vecNames.push_back(sName);
    vecNames.emplace_back("quit");
    return Enumerate(vecNames);
}

} // namespace

Json RunCommand(Daemon& daemon, const Json& json)
{
    Fields fields(json, "");
    const std::string sName = fields.ReadRequired("command");
    const auto command = GetCommands().find(sName);
    if (command == GetCommands().end())
        throw Problem("command: there is no \"" + sName + "\"; there is " + EnumerateCommands());
    return command->second(daemon, fields);
}

std::string RunCommandLine(Daemon& daemon, const std::string& sLine)
{
    Json answer = {{"ok", true}};
    try {
        answer.update(RunCommand(daemon, Json::parse(sLine)));
    } catch (const Json::parse_error&) {
        answer = {{"ok", false}, {"error", "the line is no JSON"}};
    } catch (const std::exception& exception) {
        answer = {{"ok", false}, {"error", exception.what()}};
    }
    return answer.dump();
}

bool IsQuit(const std::string& sLine)
{
    const Json json = Json::parse(sLine, nullptr, false);
    return json.is_object() && json.value("command", Json()) == "quit";
}

} // namespace Tovra::Simulator
