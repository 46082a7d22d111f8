#include "simulator/Storage.h"

#include <filesystem>
#include <fstream>

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
    if (!service.vecNameservers.empty())
        sText += "Nameservers=" + Join(service.vecNameservers) + "\n";
    return sText;
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

void Storage::Forget(const Service& service) const
{
    const auto directory = std::filesystem::path(sRoot) / service.GetIdentifier();
    if (!sRoot.empty() && std::filesystem::exists(directory))
        Write(directory / "settings", MakeSettings(service));
}

} // namespace Tovra::Simulator
