#include "Common/ConnMan.h"

namespace Tovra
{

namespace
{

using DBus::Data;
using Properties = std::map<std::string, Data>;

std::string OptionalText(Properties& properties, const char* pKey)
{
    const Data& value = properties[pKey];
    return value.GetType() == Data::String ? value.As<std::string>() : std::string();
}

std::string RequiredText(Properties& properties, const char* pKey)
{
    return properties[pKey].As<std::string>();
}

bool RequiredFlag(Properties& properties, const char* pKey)
{
    return properties[pKey].As<bool>();
}

std::vector<std::string> Texts(Properties& properties, const char* pKey)
{
    std::vector<std::string> vecTexts;
    const Data& value = properties[pKey];
    if (value.GetType() != Data::Array)
        return vecTexts;
    for (const Data& element : value.As<std::vector<Data>>())
        vecTexts.push_back(element.As<std::string>());
    return vecTexts;
}

// Null when the property is missing or no dictionary.
Properties* Section(Properties& properties, const char* pKey)
{
    Data& value = properties[pKey];
    return value.GetType() == Data::Dictionary ? &value.As<Properties>() : nullptr;
}

std::uint32_t Strength(const Properties& properties)
{
    const auto found = properties.find("Strength");
    return found == properties.end() ? 255 : found->second.As<std::uint32_t>();
}

} // namespace

ConnMan::NetworkService::NetworkService(const std::string& path,
                                        std::map<std::string, DBus::Data>& properties)
    : sPath(path)
{
    if (Properties* pEthernet = Section(properties, "Ethernet")) {
        sInterface = RequiredText(*pEthernet, "Interface");
        sMacAddress = RequiredText(*pEthernet, "Address");
    }
    sName = OptionalText(properties, "Name");
    sType = RequiredText(properties, "Type");
    sState = RequiredText(properties, "State");
    if (Properties* pIPv4 = Section(properties, "IPv4")) {
        sIPv4Address = OptionalText(*pIPv4, "Address");
        sIPv4Netmask = OptionalText(*pIPv4, "Netmask");
        sIPv4Gateway = OptionalText(*pIPv4, "Gateway");
        sIPv4Method = RequiredText(*pIPv4, "Method");
    }
    vecNameservers = Texts(properties, "Nameservers");
    vecSecurity = Texts(properties, "Security");
    nStrength = Strength(properties);
}

ConnMan::NetworkTechnology::NetworkTechnology(const std::string& path,
                                              std::map<std::string, DBus::Data>& properties)
    : sPath(path),
      sName(RequiredText(properties, "Name")),
      sType(RequiredText(properties, "Type")),
      bPowered(RequiredFlag(properties, "Powered")),
      bConnected(RequiredFlag(properties, "Connected"))
{
}

} // namespace Tovra
