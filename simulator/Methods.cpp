#include "simulator/Methods.h"

namespace Tovra::Simulator
{

namespace
{

// As libdbus answers what nobody handles.
Reply MakeUnknown(const Call& call, bool bObjectKnown)
{
    const std::string sError = bObjectKnown ? "UnknownMethod" : "UnknownObject";
    return {{},
            "org.freedesktop.DBus.Error." + sError,
            "Method \"" + call.sMember + "\" with signature \"" + call.arguments.sSignature +
                "\" on interface \"" + call.sInterface + "\" doesn't exist\n"};
}

const std::vector<Method>* FindMethods(const World& world, const std::string& sPath)
{
    if (sPath == "/")
        return &GetManagerMethods();
    if (world.FindTechnology(sPath))
        return &GetTechnologyMethods();
    return world.FindService(sPath) ? &GetServiceMethods() : nullptr;
}

} // namespace

void Handle(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    const std::vector<Method>* pMethods = FindMethods(parts.world, call.sPath);
    if (pMethods)
        for (const Method& method : *pMethods)
            if (call.sInterface == method.pInterface && call.sMember == method.pMember &&
                call.arguments.sSignature == method.pSignature &&
                parts.world.version >= method.since)
                return method.pHandler(parts, call, fnAnswer);
    fnAnswer(MakeUnknown(call, pMethods != nullptr));
}

std::string GetText(const Call& call, std::size_t nArgument)
{
    return call.arguments.values.at(nArgument).get<std::string>();
}

Value GetVariant(const Call& call)
{
    const Json& variant = call.arguments.values.at(1);
    return {variant.at(0).get<std::string>(), variant.at(1)};
}

Reply MakeReply(Arguments arguments)
{
    Reply reply;
    reply.arguments = std::move(arguments);
    return reply;
}

Reply MakeReply(const Properties& properties)
{
    return MakeReply(Arguments{"a{sv}", Json::array({MakeDictionary(properties)})});
}

} // namespace Tovra::Simulator
