#include "simulator/IpConfiguration.h"
#include "simulator/Errors.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <bitset>

namespace Tovra::Simulator
{

namespace
{

bool IsAddress(int nFamily, const std::string& sText)
{
    in6_addr address = {};
    return inet_pton(nFamily, sText.c_str(), &address) == 1;
}

// The dictionary's entry as text. False if it is there and is no text.
bool ReadText(const Json& dictionary, const char* pKey, std::optional<std::string>& sText)
{
    const auto entry = dictionary.find(pKey);
    if (entry == dictionary.end())
        return true;
    if (entry->at(0) != "s")
        return false;
    sText = entry->at(1).get<std::string>();
    return true;
}

bool IsAbsentOrAddress(const std::optional<std::string>& sText)
{
    return !sText || IsIpv4Address(*sText);
}

} // namespace

Properties ToProperties(const IpConfiguration& configuration)
{
    Properties properties = {{"Method", MakeString(configuration.sMethod)}};
    if (configuration.sMethod == "off")
        return properties;
    if (!configuration.sAddress.empty())
        properties.emplace_back("Address", MakeString(configuration.sAddress));
    if (!configuration.sNetmask.empty())
        properties.emplace_back("Netmask", MakeString(configuration.sNetmask));
    if (!configuration.sGateway.empty())
        properties.emplace_back("Gateway", MakeString(configuration.sGateway));
    return properties;
}

ConfigurationResult ReadConfiguration(const Value& value)
{
    const Reply invalid = Errors::InvalidArguments();
    if (value.sSignature != "a{sv}" || !value.contents.is_object())
        return {std::nullopt, invalid};

    std::optional<std::string> sMethod;
    std::optional<std::string> sAddress;
    std::optional<std::string> sNetmask;
    std::optional<std::string> sGateway;
    if (!ReadText(value.contents, "Method", sMethod) ||
        !ReadText(value.contents, "Address", sAddress) ||
        !ReadText(value.contents, "Netmask", sNetmask) ||
        !ReadText(value.contents, "Gateway", sGateway))
        return {std::nullopt, invalid};

    if (sMethod == "auto")
        return {std::nullopt, Errors::NotSupported()};
    if (sMethod == "dhcp" || sMethod == "off")
        return {IpConfiguration{*sMethod, "", "", ""}, {}};
    if (sMethod != "manual" || !IsAbsentOrAddress(sAddress) || !IsAbsentOrAddress(sNetmask) ||
        !IsAbsentOrAddress(sGateway))
        return {std::nullopt, invalid};
    return {IpConfiguration{"manual", sAddress.value_or(""), sNetmask.value_or(""),
                            sGateway.value_or("")},
            {}};
}

unsigned ToPrefixLength(const std::string& sNetmask)
{
    in_addr netmask = {};
    inet_pton(AF_INET, sNetmask.c_str(), &netmask);
    return static_cast<unsigned>(std::bitset<32>(netmask.s_addr).count());
}

std::string ToNetmask(unsigned nPrefixLength)
{
    const unsigned nLength = std::min(nPrefixLength, 32U);
    const in_addr netmask = {htonl(nLength == 0 ? 0 : ~0U << (32U - nLength))};
    std::array<char, INET_ADDRSTRLEN> text = {};
    return inet_ntop(AF_INET, &netmask, text.data(), text.size());
}

bool IsIpv4Address(const std::string& sText)
{
    return IsAddress(AF_INET, sText);
}

bool IsIpAddress(const std::string& sText)
{
    return IsIpv4Address(sText) || IsAddress(AF_INET6, sText);
}

} // namespace Tovra::Simulator
