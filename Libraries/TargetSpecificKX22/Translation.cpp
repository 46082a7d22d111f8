#include "Libraries/TargetSpecificKX22/Translation.h"

#include "Common/Lists.h"
#include "Include/Wipe.h"

namespace Tovra::Translation
{

namespace
{

std::string Join(const std::vector<std::string>& vecWords)
{
    std::string sJoined;
    for (const std::string& sWord : vecWords) {
        if (&sWord != &vecWords.front())
            sJoined += ' ';
        sJoined += sWord;
    }
    return sJoined;
}

bool IsManual(const ConnMan::NetworkService& service)
{
    return service.sIPv4Method == "manual";
}

unsigned CompareConnection(const ConnMan::NetworkService& current,
                           const DeviceConfig::NetworkService& wanted)
{
    if (Lists::IsConnected(current) == wanted.bConnected)
        return 0;
    return wanted.bConnected ? ConnMan::Connect : ConnMan::Disconnect;
}

bool HasWantedAddress(const ConnMan::NetworkService& current,
                      const DeviceConfig::NetworkService& wanted)
{
    return IsManual(current) && current.sIPv4Address == wanted.sIPv4Address &&
           current.sIPv4Netmask == wanted.sIPv4Netmask &&
           current.sIPv4Gateway == wanted.sIPv4Gateway;
}

void CompareStatic(ServiceChange& change, const DeviceConfig::NetworkService& wanted)
{
    ConnMan::NetworkService& service = change.service;
    if (!HasWantedAddress(service, wanted)) {
        change.nFlags |= ConnMan::IPv4Manual;
        service.sIPv4Address = wanted.sIPv4Address;
        service.sIPv4Netmask = wanted.sIPv4Netmask;
        service.sIPv4Gateway = wanted.sIPv4Gateway;
    }
    if (service.vecNameservers != wanted.vecNameservers) {
        change.nFlags |= ConnMan::Nameservers;
        service.vecNameservers = wanted.vecNameservers;
    }
}

} // namespace

std::map<std::string, DeviceConfig::NetworkTechnology>
ReportTechnologies(const std::vector<ConnMan::NetworkTechnology>& vecTechnologies)
{
    std::map<std::string, DeviceConfig::NetworkTechnology> mapReported;
    for (const ConnMan::NetworkTechnology& technology : vecTechnologies)
        mapReported[technology.sType] = {technology.sName, technology.bPowered,
                                         technology.bConnected, false};
    return mapReported;
}

DeviceConfig::NetworkService ReportService(const ConnMan::NetworkService& service,
                                           bool bFailedBefore)
{
    DeviceConfig::NetworkService reported;
    reported.sType = service.sType;
    reported.sName = service.sName;
    reported.sInterface = service.sInterface;
    reported.sMacAddress = service.sMacAddress;
    reported.bConnected = Lists::IsConnected(service);
    reported.bFailed = bFailedBefore || service.sState == "failure";
    reported.sSecurity = Join(service.vecSecurity);
    reported.nStrength = static_cast<std::int32_t>(service.nStrength);
    reported.bDhcp = !IsManual(service);
    reported.sIPv4Address = service.sIPv4Address;
    reported.sIPv4Netmask = service.sIPv4Netmask;
    reported.sIPv4Gateway = service.sIPv4Gateway;
    reported.vecNameservers = service.vecNameservers;
    return reported;
}

TechnologyChange Compare(const ConnMan::NetworkTechnology& current,
                         const DeviceConfig::NetworkTechnology& wanted)
{
    return {current.bPowered != wanted.bPowered, wanted.bPowered && wanted.bScan};
}

ServiceChange Compare(const ConnMan::NetworkService& current,
                      const DeviceConfig::NetworkService& wanted)
{
    ServiceChange change = {current, CompareConnection(current, wanted)};
    if (!wanted.bDhcp) {
        CompareStatic(change, wanted);
    } else if (IsManual(current)) {
        change.nFlags |= ConnMan::IPv4Dhcp | ConnMan::Nameservers;
        change.service.vecNameservers.clear();
    }
    return change;
}

bool AnswersByWps(const DeviceConfig::NetworkService& wanted, bool bWpsOffered)
{
    return wanted.bUseWps && bWpsOffered;
}

void TakeAnswer(DeviceConfig::NetworkService& wanted, bool bByWps,
                std::map<std::string, std::string>& mapAnswer)
{
    mapAnswer["Name"] = wanted.sName;
    if (bByWps) {
        mapAnswer["WPS"] = ""; // push button
        wanted.bUseWps = false;
    } else {
        mapAnswer["Passphrase"] = wanted.sPassphrase;
        DBus::Wipe(wanted.sPassphrase);
    }
}

} // namespace Tovra::Translation
