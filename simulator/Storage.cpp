#include "simulator/Storage.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace Tovra::Simulator
{

namespace
{

const char* ToText(bool bValue)
{
    return bValue ? "true" : "false";
}

std::string Join(const std::vector<std::string>& vecTexts)
{
    std::string sText;
    for (const std::string& sPart : vecTexts)
        sText += sPart + ";";
    return sText;
}

std::vector<std::string> Split(const std::string& sText)
{
    std::vector<std::string> vecTexts;
    std::istringstream parts(sText);
    for (std::string sPart; std::getline(parts, sPart, ';');)
        vecTexts.push_back(sPart);
    return vecTexts;
}

std::string MakeAddresses(const IpConfiguration& ipv4)
{
    return "IPv4.netmask_prefixlen=" + std::to_string(ToPrefixLength(ipv4.sNetmask)) +
           "\nIPv4.local_address=" + ipv4.sAddress + "\nIPv4.gateway=" + ipv4.sGateway + "\n";
}

void ReadSetting(const std::string& sKey, const std::string& sValue, Service& service)
{
    if (sKey == "Favorite")
        service.bFavorite = sValue == "true";
    else if (sKey == "AutoConnect")
        service.bAutoConnect = sValue == "true";
    else if (sKey == "Passphrase")
        service.sPassphrase = sValue;
    else if (sKey == "IPv4.method")
        service.ipv4.sMethod = sValue;
    else if (sKey == "IPv4.netmask_prefixlen")
        service.ipv4.sNetmask = ToNetmask(static_cast<unsigned>(std::atoi(sValue.c_str())));
    else if (sKey == "IPv4.local_address")
        service.ipv4.sAddress = sValue;
    else if (sKey == "IPv4.gateway")
        service.ipv4.sGateway = sValue;
    else if (sKey == "Nameservers")
        service.vecNameservers = Split(sValue);
}

void Write(const std::filesystem::path& file, const std::string& sText)
{
    std::ofstream(file, std::ios::binary) << sText;
}

} // namespace

std::string MakeSettings(const Service& service)
{
    std::string sText = "[" + service.GetIdentifier() + "]\n";
    if (service.network.sName)
        sText += "Name=" + *service.network.sName + "\n";
    if (service.IsWifi())
        sText += std::string("Favorite=") + ToText(service.bFavorite) + "\n";
    if (service.bFavorite)
        sText += std::string("AutoConnect=") + ToText(service.bAutoConnect) + "\n";
    if (service.sPassphrase && !service.sPassphrase->empty())
        sText += "Passphrase=" + *service.sPassphrase + "\n";
    sText += "IPv4.method=" + service.ipv4.sMethod + "\n";
    if (service.ipv4.sMethod == "manual")
        sText += MakeAddresses(service.ipv4);
    if (!service.vecNameservers.empty())
        sText += "Nameservers=" + Join(service.vecNameservers) + "\n";
    return sText;
}

void ReadSettings(std::istream& settings, Service& service)
{
    for (std::string sLine; std::getline(settings, sLine);) {
        const std::size_t nEnd = sLine.find('=');
        if (nEnd != std::string::npos)
            ReadSetting(sLine.substr(0, nEnd), sLine.substr(nEnd + 1), service);
    }
}

void Storage::Save(const Service& service) const
{
    if (sRoot.empty() || !service.bFavorite)
        return;
    const auto directory = std::filesystem::path(sRoot) / service.GetIdentifier();
    std::filesystem::create_directories(directory);
    Write(directory / "settings", MakeSettings(service));
    Write(directory / "data", "");
}

bool Storage::Load(Service& service) const
{
    if (sRoot.empty())
        return false;
    std::ifstream settings(std::filesystem::path(sRoot) / service.GetIdentifier() / "settings");
    if (!settings)
        return false;
    ReadSettings(settings, service);
    return true;
}

void Storage::Forget(const Service& service) const
{
    const auto directory = std::filesystem::path(sRoot) / service.GetIdentifier();
    if (!sRoot.empty() && std::filesystem::exists(directory))
        Write(directory / "settings", MakeSettings(service));
}

} // namespace Tovra::Simulator
