#include "simulator/AgentInput.h"

#include <algorithm>
#include <cctype>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pInvalidArguments = "net.connman.Error.InvalidArguments";

bool HasSecurity(const Network& network, const std::string& sSecurity)
{
    return std::count(network.vecSecurity.begin(), network.vecSecurity.end(), sSecurity) > 0;
}

bool IsOpen(const Network& network)
{
    return !HasSecurity(network, "psk") && !HasSecurity(network, "wep");
}

bool IsHexadecimal(const std::string& sText)
{
    return std::all_of(sText.begin(), sText.end(),
                       [](unsigned char nCharacter) { return std::isxdigit(nCharacter) != 0; });
}

std::string GetPassphraseType(const Network& network)
{
    if (HasSecurity(network, "psk"))
        return "psk";
    return HasSecurity(network, "wep") ? "wep" : "string";
}

Value MakeField(const std::string& sType, const std::string& sRequirement)
{
    return MakeDictionaryValue(
        {{"Type", MakeString(sType)}, {"Requirement", MakeString(sRequirement)}});
}

Value MakeField(const std::string& sType, const std::vector<std::string>& vecAlternates)
{
    return MakeDictionaryValue({{"Type", MakeString(sType)},
                                {"Requirement", MakeString("mandatory")},
                                {"Alternates", MakeStrings(vecAlternates)}});
}

Value MakePrevious(const std::string& sType, const std::string& sPrevious)
{
    return MakeDictionaryValue({{"Type", MakeString(sType)},
                                {"Requirement", MakeString("informational")},
                                {"Value", MakeString(sPrevious)}});
}

void AddPassphrase(const Service& service, Properties& fields)
{
    const Network& network = service.network;
    const std::string sType = GetPassphraseType(network);
    fields.emplace_back("Passphrase", OffersWps(network)
                                          ? MakeField(sType, std::vector<std::string>{"WPS"})
                                          : MakeField(sType, "mandatory"));
    if (service.bUseWps && !service.sWpsPin.empty())
        fields.emplace_back("PreviousPassphrase", MakePrevious("wpspin", service.sWpsPin));
    else if (service.sPassphrase)
        fields.emplace_back("PreviousPassphrase", MakePrevious(sType, *service.sPassphrase));
}

// "SSID" carries bytes.
std::optional<std::string> ReadBytes(const Value& value)
{
    if (value.sSignature != "ay" || value.contents.empty())
        return std::nullopt;
    std::string sBytes;
    for (const Json& byte : value.contents)
        sBytes += static_cast<char>(byte.get<unsigned>());
    return sBytes;
}

// False if the value has a wrong type.
bool ReadField(const std::string& sName, const Value& value, AgentInput& input)
{
    const std::optional<std::string> sText =
        value.sSignature == "s" ? std::optional(value.contents.get<std::string>()) : std::nullopt;
    if (sName == "Passphrase")
        return (input.sPassphrase = sText).has_value();
    if (sName == "WPS")
        return (input.sWps = sText).has_value();
    if (sName == "Name")
        return (input.sName = sText).has_value();
    if (sName == "SSID")
        return (input.sName = ReadBytes(value)).has_value();
    return sName != "Identity" || sText;
}

} // namespace

bool OffersWps(const Network& network)
{
    return HasSecurity(network, "wps");
}

bool NeedsInput(const Service& service)
{
    if (!service.IsWifi())
        return false;
    if (service.IsHidden())
        return true;
    if (IsOpen(service.network))
        return false;
    return service.sError == "invalid-key" || (!service.sPassphrase && !service.bUseWps);
}

Json MakeRequest(const Service& service)
{
    Properties fields;
    if (service.IsHidden()) {
        fields.emplace_back("Name", MakeField("string", std::vector<std::string>{"SSID"}));
        fields.emplace_back("SSID", MakeField("ssid", "alternate"));
    }
    if (!IsOpen(service.network))
        AddPassphrase(service, fields);
    if (OffersWps(service.network))
        fields.emplace_back("WPS", MakeField("wpspin", "alternate"));
    return MakeDictionary(fields);
}

AgentInput ReadInput(const Reply& reply)
{
    AgentInput input;
    if (reply.IsError()) {
        input.sError = reply.sError;
        return input;
    }
    if (reply.arguments.sSignature != "a{sv}" || !reply.arguments.values[0].is_object())
        return input;
    input.bValues = true;
    for (const auto& [sName, variant] : reply.arguments.values[0].items()) {
        if (!ReadField(sName, {variant[0].get<std::string>(), variant[1]}, input)) {
            input.sError = pInvalidArguments;
            break;
        }
        if (sName == "WPS")
            break;
    }
    return input;
}

Verdict JudgePassphrase(const Service& service, const std::string& sPassphrase)
{
    const std::size_t nLength = sPassphrase.size();
    bool bGood = false;
    if (HasSecurity(service.network, "psk"))
        bGood = nLength == 64 ? IsHexadecimal(sPassphrase) : nLength >= 8 && nLength <= 63;
    else if (HasSecurity(service.network, "wep"))
        bGood = nLength == 10 || nLength == 26 ? IsHexadecimal(sPassphrase)
                                               : nLength == 5 || nLength == 13;
    else
        return Verdict::NotAllowed;
    return bGood ? Verdict::Good : Verdict::InvalidKey;
}

Verdict JudgeWpsPin(const std::string& sPin)
{
    const bool bDigits =
        std::all_of(sPin.begin(), sPin.end(), [](unsigned char n) { return std::isdigit(n) != 0; });
    const bool bLength = sPin.empty() || sPin.size() == 8;
    return bDigits && bLength ? Verdict::Good : Verdict::InvalidKey;
}

bool WaitsForButton(const Service& service)
{
    return service.bUseWps && service.sWpsPin.empty() && service.network.bWaitsForButton &&
           !service.bButtonPushed;
}

bool IsAdmitted(const Service& service)
{
    if (!service.IsWifi() || IsOpen(service.network))
        return true;
    if (service.bUseWps)
        return OffersWps(service.network) &&
               (service.sWpsPin.empty() || service.sWpsPin == service.network.sWpsPin);
    return service.sPassphrase == service.network.sPassphrase;
}

} // namespace Tovra::Simulator
