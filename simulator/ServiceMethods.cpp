#include "simulator/Errors.h"
#include "simulator/Methods.h"

#include <map>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pServiceInterface = "net.connman.Service";

using Setter = Reply (*)(const Parts& parts, const ServicePointer& pService, const Value& value);

ServicePointer FindService(const Parts& parts, const Call& call)
{
    return parts.world.FindService(call.sPath);
}

Reply SetAutoConnect(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    if (value.sSignature != "b")
        return Errors::InvalidArguments();
    if (!pService->bFavorite)
        return Errors::InvalidService();
    const bool bAutoConnect = value.contents.get<bool>();
    parts.announcer.Change(*pService, [&] { pService->bAutoConnect = bAutoConnect; });
    if (bAutoConnect)
        parts.connections.AutoConnect();
    return MakeDone();
}

Reply SetIpv4(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    const ConfigurationResult result = ReadConfiguration(value);
    if (!result.configuration)
        return result.error;
    parts.connections.Configure(pService, *result.configuration);
    return MakeDone();
}

// ConnMan takes the strings of whatever array it is, and passes over what it cannot use.
Reply SetList(const Parts& parts, Service& service, std::vector<std::string> Service::*pList,
              const Value& value, bool (*pIsUsable)(const std::string&))
{
    if (value.sSignature[0] != 'a')
        return Errors::InvalidArguments();
    std::vector<std::string> vecTexts;
    if (value.sSignature == "as")
        for (const Json& text : value.contents)
            if (pIsUsable(text.get<std::string>()))
                vecTexts.push_back(text);
    parts.announcer.Change(service, [&] { service.*pList = vecTexts; });
    return MakeDone();
}

bool IsNotEmpty(const std::string& sText)
{
    return !sText.empty();
}

Reply SetNameservers(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    return SetList(parts, *pService, &Service::vecNameservers, value, IsIpAddress);
}

Reply SetTimeservers(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    return SetList(parts, *pService, &Service::vecTimeservers, value, IsNotEmpty);
}

Reply SetDomains(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    return SetList(parts, *pService, &Service::vecDomains, value, IsNotEmpty);
}

Reply SetDictionary(const Parts& parts, Service& service, Json Service::*pDictionary,
                    const Value& value)
{
    if (value.sSignature != "a{sv}" || !value.contents.is_object())
        return Errors::InvalidArguments();
    parts.announcer.Change(service, [&] { service.*pDictionary = value.contents; });
    return MakeDone();
}

Reply SetProxy(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    return SetDictionary(parts, *pService, &Service::proxy, value);
}

Reply SetIpv6(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    return SetDictionary(parts, *pService, &Service::ipv6, value);
}

Reply SetMdns(const Parts& parts, const ServicePointer& pService, const Value& value)
{
    if (value.sSignature != "b")
        return Errors::InvalidArguments();
    parts.announcer.Change(*pService, [&] { pService->bMdns = value.contents.get<bool>(); });
    return MakeDone();
}

Reply SetProperty(const Parts& parts, const ServicePointer& pService, const std::string& sName,
                  const Value& value)
{
    static const std::map<std::string, Setter> mapSetters = {
        {"AutoConnect", SetAutoConnect},
        {"Nameservers.Configuration", SetNameservers},
        {"Timeservers.Configuration", SetTimeservers},
        {"Domains.Configuration", SetDomains},
        {"Proxy.Configuration", SetProxy},
        {"IPv4.Configuration", SetIpv4},
        {"IPv6.Configuration", SetIpv6},
        {"mDNS.Configuration", SetMdns}};
    const auto setter = mapSetters.find(sName);
    const bool bTooNew = sName == "mDNS.Configuration" && parts.world.version < Version::V1_41;
    if (setter == mapSetters.end() || bTooNew)
        return Errors::InvalidProperty();
    if (pService->network.bImmutable && sName != "AutoConnect")
        return Errors::NotSupported();
    return setter->second(parts, pService, value);
}

void GetServiceProperties(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(GetProperties(*FindService(parts, call), parts.world.version)));
}

void SetServiceProperty(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    const ServicePointer pService = FindService(parts, call);
    const Reply reply = SetProperty(parts, pService, GetText(call, 0), GetVariant(call));
    if (!reply.IsError())
        parts.storage.Save(*pService);
    fnAnswer(reply);
}

void ClearProperty(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    if (GetText(call, 0) != "Error")
        return fnAnswer(Errors::InvalidProperty());
    parts.connections.ClearError(FindService(parts, call));
    fnAnswer(MakeDone());
}

void Connect(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    parts.connections.Connect(FindService(parts, call), call.sSender, fnAnswer);
}

void Disconnect(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    fnAnswer(parts.connections.Disconnect(FindService(parts, call)));
}

void Remove(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    fnAnswer(parts.connections.Remove(FindService(parts, call)));
}

void Move(const Parts&, const Call&, const Answer& fnAnswer)
{
    fnAnswer(Errors::NotSupported());
}

void ResetCounters(const Parts&, const Call&, const Answer& fnAnswer)
{
    fnAnswer(MakeDone());
}

} // namespace

const std::vector<Method>& GetServiceMethods()
{
    static const std::vector<Method> vecMethods = {
        {pServiceInterface, "GetProperties", "", GetServiceProperties},
        {pServiceInterface, "SetProperty", "sv", SetServiceProperty},
        {pServiceInterface, "ClearProperty", "s", ClearProperty},
        {pServiceInterface, "Connect", "", Connect},
        {pServiceInterface, "Disconnect", "", Disconnect},
        {pServiceInterface, "Remove", "", Remove},
        {pServiceInterface, "MoveBefore", "o", Move},
        {pServiceInterface, "MoveAfter", "o", Move},
        {pServiceInterface, "ResetCounters", "", ResetCounters},
    };
    return vecMethods;
}

} // namespace Tovra::Simulator
