#include "simulator/Scenario.h"
#include "simulator/Fields.h"
#include "simulator/Signature.h"

#include <algorithm>
#include <cctype>
#include <fstream>

namespace Tovra::Simulator
{

namespace
{

const std::vector<std::string> vecStates = {"idle",  "failure", "association", "configuration",
                                            "ready", "online",  "disconnect"};

const std::vector<std::string> vecTypes = {"wifi",     "ethernet", "bluetooth",
                                           "cellular", "gadget",   "p2p"};

void ReadOverrides(Fields& fields, Overrides& overrides)
{
    const Json* pProperties = fields.Find("properties");
    if (!pProperties)
        return;
    if (!pProperties->is_object())
        throw Problem(fields.Name("properties") + ": an object of properties is needed");
    for (const auto& [sName, value] : pProperties->items()) {
        const std::string sWhere = fields.Name("properties") + "." + sName;
        overrides[sName] =
            value.is_null() ? std::nullopt : std::optional<Value>(ReadValue(value, sWhere));
    }
}

void ReadAppearance(Fields& fields, Appearance& appearance)
{
    const std::vector<std::string> vecWords = {"at-start", "after-scan", "when-named"};
    std::string sWord = vecWords[static_cast<std::size_t>(appearance)];
    fields.Read("appears", sWord, vecWords);
    const auto word = std::find(vecWords.begin(), vecWords.end(), sWord);
    appearance = static_cast<Appearance>(word - vecWords.begin());
}

// What an access point decides.
void ReadAccess(Fields& fields, Network& network)
{
    fields.Read("security", network.vecSecurity);
    fields.Read("passphrase", network.sPassphrase);
    fields.Read("savedPassphrase", network.sSavedPassphrase);
    fields.Read("wpsPin", network.sWpsPin);
    fields.Read("waitsForButton", network.bWaitsForButton);
    fields.Read("failure", network.sFailure);
    fields.Read("online", network.bOnline);
    ReadAppearance(fields, network.appearance);
}

void ReadAddresses(Fields& fields, Network& network)
{
    fields.Read("interface", network.sInterface);
    fields.Read("macAddress", network.sMacAddress);
    fields.Read("mtu", network.nMtu, 65535);
    fields.Read("method", network.sMethod, {"dhcp", "manual", "off"});
    fields.Read("address", network.sAddress);
    fields.Read("netmask", network.sNetmask);
    fields.Read("gateway", network.sGateway);
    fields.Read("nameservers", network.vecNameservers);
    fields.Read("domains", network.vecDomains);
}

void ReadState(Fields& fields, Network& network)
{
    fields.Read("path", network.sPath);
    if (!network.sPath.empty() && !IsObjectPath(network.sPath))
        throw Problem(fields.Name("path") + ": \"" + network.sPath + "\" is no object path");
    fields.Read("type", network.sType, vecTypes);
    fields.Read("name", network.sName);
    fields.Read("strength", network.nStrength, 255);
    fields.Read("state", network.sState, vecStates);
    fields.Read("error", network.sError);
    fields.Read("saved", network.bSaved);
    fields.Read("autoConnect", network.bAutoConnect);
    fields.Read("immutable", network.bImmutable);
}

std::string ToHexadecimal(const std::string& sText)
{
    constexpr const char* pDigits = "0123456789abcdef";
    std::string sDigits;
    for (const char nCharacter : sText) {
        const auto nByte = static_cast<unsigned char>(nCharacter);
        sDigits += {pDigits[nByte >> 4U], pDigits[nByte & 15U]};
    }
    return sDigits;
}

std::string ToIdentifier(std::string sMacAddress)
{
    std::transform(sMacAddress.begin(), sMacAddress.end(), sMacAddress.begin(),
                   [](unsigned char n) { return static_cast<char>(std::tolower(n)); });
    sMacAddress.erase(std::remove(sMacAddress.begin(), sMacAddress.end(), ':'), sMacAddress.end());
    return sMacAddress;
}

// ConnMan knows one word for a group of securities: "managed_" and the word ends the path.
std::string GetSecurityGroup(const Network& network)
{
    return network.vecSecurity.empty() ? "none" : network.vecSecurity.front();
}

template <class Element, class Function>
void ReadEach(Fields& fields, const char* pName, std::vector<Element>& vecElements,
              const Function& fnRead)
{
    const Json* pList = fields.FindList(pName);
    for (std::size_t n = 0; pList && n < pList->size(); ++n)
        vecElements.push_back(
            fnRead((*pList)[n], fields.Name(pName) + "[" + std::to_string(n) + "]"));
}

} // namespace

Timing Timing::Quick()
{
    Timing timing;
    timing.servicesChanged = Duration(10);
    for (Duration* pDuration : {&timing.association, &timing.configuration, &timing.online,
                                &timing.disconnect, &timing.scan, &timing.power})
        *pDuration = Duration(5);
    return timing;
}

Network ReadNetwork(const Json& json, const std::string& sWhere, Network network)
{
    Fields fields(json, sWhere);
    ReadState(fields, network);
    if (network.sType == "ethernet" && !json.contains("interface"))
        network.sInterface = "eth0";
    ReadAccess(fields, network);
    ReadAddresses(fields, network);
    ReadOverrides(fields, network.overrides);
    fields.Finish();
    return network;
}

TechnologySettings ReadTechnology(const Json& json, const std::string& sWhere)
{
    Fields fields(json, sWhere);
    TechnologySettings technology;
    fields.Read("type", technology.sType, vecTypes);
    fields.Read("name", technology.sName);
    fields.Read("powered", technology.bPowered);
    fields.Read("tethering", technology.bTethering);
    ReadOverrides(fields, technology.overrides);
    fields.Finish();
    return technology;
}

Timing ReadTiming(const Json& json, const std::string& sWhere, Timing timing)
{
    Fields fields(json, sWhere);
    fields.Read("servicesChanged", timing.servicesChanged);
    fields.Read("association", timing.association);
    fields.Read("configuration", timing.configuration);
    fields.Read("address", timing.address);
    fields.Read("online", timing.online);
    fields.Read("disconnect", timing.disconnect);
    fields.Read("scan", timing.scan);
    fields.Read("power", timing.power);
    fields.Read("connectTimeout", timing.connectTimeout);
    fields.Read("agentTimeout", timing.agentTimeout);
    fields.Finish();
    return timing;
}

Scenario ReadScenario(const Json& json)
{
    Fields fields(json, "");
    Scenario scenario;
    std::string sVersion = "1.41";
    fields.Read("version", sVersion, {"1.29", "1.41"});
    scenario.version = sVersion == "1.29" ? Version::V1_29 : Version::V1_41;
    if (const Json* pTiming = fields.Find("timing"))
        scenario.timing = ReadTiming(*pTiming, "timing");
    fields.Read("storage", scenario.sStorage);
    fields.Read("offlineMode", scenario.bOfflineMode);
    fields.Read("announceEverySort", scenario.bAnnounceEverySort);
    fields.Read("failurePasses", scenario.bFailurePasses);
    fields.Read("freshStarts", scenario.bFreshStarts);
    fields.Read("sorted", scenario.bSorted);
    fields.Read("autoConnects", scenario.bAutoConnects);
    ReadEach(fields, "technologies", scenario.vecTechnologies, ReadTechnology);
    ReadEach(fields, "services", scenario.vecServices,
             [](const Json& service, const std::string& sWhere) {
                 return ReadNetwork(service, sWhere);
             });
    ReadEach(fields, "behaviours", scenario.vecBehaviours, ReadRule);
    fields.Finish();
    return scenario;
}

Scenario LoadScenario(const std::string& sFile)
{
    std::ifstream file(sFile);
    if (!file)
        throw Problem(sFile + ": cannot be read");
    try {
        return ReadScenario(Json::parse(file));
    } catch (const Json::parse_error& error) {
        throw Problem(sFile + ": is no JSON: " + error.what());
    } catch (const Problem& problem) {
        throw Problem(sFile + ": " + problem.what());
    }
}

std::string MakeServiceIdentifier(const Network& network)
{
    const std::string sDevice = network.sType + "_" + ToIdentifier(network.sMacAddress) + "_";
    if (network.sType == "ethernet")
        return sDevice + "cable";
    const std::string sName = network.sName ? ToHexadecimal(*network.sName) : "hidden";
    return sDevice + sName + "_managed_" + GetSecurityGroup(network);
}

} // namespace Tovra::Simulator
