#include "simulator/Errors.h"
#include "simulator/Methods.h"

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pTechnologyInterface = "net.connman.Technology";

TechnologyPointer FindTechnology(const Parts& parts, const Call& call)
{
    return parts.world.FindTechnology(call.sPath);
}

void GetTechnologyProperties(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    fnAnswer(MakeReply(GetProperties(*FindTechnology(parts, call), parts.world.version)));
}

void SetTetheringText(const Parts& parts, Technology& technology, std::string Technology::*pText,
                      const Value& value, const Answer& fnAnswer)
{
    if (value.sSignature != "s")
        return fnAnswer(Errors::InvalidArguments());
    if (technology.settings.sType != "wifi")
        return fnAnswer(Errors::NotSupported());
    parts.announcer.Change(technology,
                           [&] { technology.*pText = value.contents.get<std::string>(); });
    fnAnswer(MakeDone());
}

void SetTechnologyProperty(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    const TechnologyPointer pTechnology = FindTechnology(parts, call);
    const std::string sName = GetText(call, 0);
    const Value value = GetVariant(call);
    const bool bIsBool = value.sSignature == "b";
    if (sName == "Powered" && bIsBool)
        return parts.technologies.SetPowered(pTechnology, value.contents.get<bool>(), fnAnswer);
    if (sName == "Powered" || sName == "Tethering")
        return fnAnswer(bIsBool ? Errors::NotSupported() : Errors::InvalidArguments());
    if (sName == "TetheringIdentifier")
        return SetTetheringText(parts, *pTechnology, &Technology::sTetheringIdentifier, value,
                                fnAnswer);
    if (sName == "TetheringPassphrase")
        return SetTetheringText(parts, *pTechnology, &Technology::sTetheringPassphrase, value,
                                fnAnswer);
    fnAnswer(Errors::InvalidProperty());
}

void Scan(const Parts& parts, const Call& call, const Answer& fnAnswer)
{
    parts.technologies.Scan(FindTechnology(parts, call), fnAnswer);
}

} // namespace

const std::vector<Method>& GetTechnologyMethods()
{
    static const std::vector<Method> vecMethods = {
        {pTechnologyInterface, "GetProperties", "", GetTechnologyProperties},
        {pTechnologyInterface, "SetProperty", "sv", SetTechnologyProperty},
        {pTechnologyInterface, "Scan", "", Scan},
    };
    return vecMethods;
}

} // namespace Tovra::Simulator
