#include "simulator/Behaviour.h"
#include "simulator/Fields.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

bool MatchesText(const std::string& sPattern, const std::string& sText)
{
    return sPattern.empty() || sPattern == sText;
}

const char* const pNeeded =
    R"(the fields "error" or "signature" and "args" go with "action": "error" or "reply")";

void ReadReply(Fields& fields, const std::string& sAction, Reply& reply)
{
    reply.arguments = ReadArguments(fields);
    fields.Read("error", reply.sError);
    fields.Read("message", reply.sErrorMessage);
    const bool bError = sAction == "error";
    if (bError != reply.IsError() || (sAction != "reply" && fields.Find("args")))
        throw Problem(fields.Name("action") + ": " + pNeeded);
}

} // namespace

bool CallPattern::Matches(const Call& call) const
{
    return MatchesText(sMember, call.sMember) && MatchesText(sPath, call.sPath) &&
           MatchesText(sInterface, call.sInterface) && MatchesText(sSender, call.sSender);
}

Behaviour Behaviour::AnswerWith(Arguments arguments)
{
    Behaviour behaviour;
    behaviour.action = Action::Answer;
    behaviour.reply.arguments = std::move(arguments);
    return behaviour;
}

Behaviour Behaviour::Fail(const std::string& sError, const std::string& sMessage)
{
    Behaviour behaviour;
    behaviour.action = Action::Answer;
    behaviour.reply.sError = sError;
    behaviour.reply.sErrorMessage = sMessage;
    return behaviour;
}

Behaviour Behaviour::StaySilent()
{
    Behaviour behaviour;
    behaviour.action = Action::Silence;
    return behaviour;
}

Behaviour Behaviour::Delay(std::chrono::milliseconds delay)
{
    Behaviour behaviour;
    behaviour.delay = delay;
    return behaviour;
}

Behaviour Behaviour::Hold()
{
    Behaviour behaviour;
    behaviour.bHold = true;
    return behaviour;
}

Behaviour Rules::Take(const Call& call)
{
    const auto rule = std::find_if(vecRules.rbegin(), vecRules.rend(), [&](const Rule& candidate) {
        return candidate.pattern.Matches(call);
    });
    if (rule == vecRules.rend())
        return {};
    Behaviour behaviour = rule->behaviour;
    if (rule->behaviour.nTimes > 0 && --rule->behaviour.nTimes == 0)
        vecRules.erase(std::next(rule).base());
    return behaviour;
}

Arguments ReadArguments(Fields& fields)
{
    Arguments arguments;
    fields.Read("signature", arguments.sSignature);
    if (const Json* pValues = fields.FindList("args"))
        arguments.values = *pValues;
    CheckArguments(arguments, fields.Name("args"));
    return arguments;
}

Rule ReadRule(const Json& json, const std::string& sWhere)
{
    Fields fields(json, sWhere);
    Rule rule;
    fields.Read("member", rule.pattern.sMember);
    fields.Read("path", rule.pattern.sPath);
    fields.Read("interface", rule.pattern.sInterface);
    fields.Read("sender", rule.pattern.sSender);

    std::string sAction = "usual";
    fields.Read("action", sAction, {"usual", "reply", "error", "silence"});
    ReadReply(fields, sAction, rule.behaviour.reply);
    if (sAction == "reply" || sAction == "error")
        rule.behaviour.action = Behaviour::Action::Answer;
    else if (sAction == "silence")
        rule.behaviour.action = Behaviour::Action::Silence;

    fields.Read("delay", rule.behaviour.delay);
    fields.Read("hold", rule.behaviour.bHold);
    fields.Read("times", rule.behaviour.nTimes);
    fields.Finish();
    return rule;
}

} // namespace Tovra::Simulator
