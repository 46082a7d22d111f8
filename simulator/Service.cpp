#include "simulator/Service.h"
#include "simulator/Override.h"

namespace Tovra::Simulator
{

namespace
{

Json MakeIpv6Default()
{
    return MakeDictionary({{"Method", MakeString("auto")}, {"Privacy", MakeString("disabled")}});
}

std::optional<std::string> GetFirstPassphrase(const Network& network)
{
    if (!network.bSaved)
        return std::nullopt;
    return network.sSavedPassphrase.value_or(network.sPassphrase);
}

std::vector<std::string> GetSecurity(const Network& network)
{
    return network.sType == "wifi" ? network.vecSecurity : std::vector<std::string>{};
}

Value MakeEthernet(const Network& network)
{
    return MakeDictionaryValue({{"Method", MakeString("auto")},
                                {"Interface", MakeString(network.sInterface)},
                                {"Address", MakeString(network.sMacAddress)},
                                {"MTU", MakeUInt16(network.nMtu)}});
}

Value MakeIpv4(const Service& service)
{
    if (!service.IsConnected() || service.ipv4.sMethod == "off")
        return MakeDictionaryValue({});
    if (!service.bAddressed)
        return MakeDictionaryValue({{"Method", MakeString(service.ipv4.sMethod)}});
    if (service.ipv4.sMethod != "dhcp")
        return MakeDictionaryValue(ToProperties(service.ipv4));
    return MakeDictionaryValue(ToProperties(
        {"dhcp", service.network.sAddress, service.network.sNetmask, service.network.sGateway}));
}

Value MakeIpv4Configuration(const Service& service)
{
    if (service.ipv4.sMethod != "manual")
        return MakeDictionaryValue({{"Method", MakeString(service.ipv4.sMethod)}});
    return MakeDictionaryValue(ToProperties(service.ipv4));
}

Value MakeNameservers(const Service& service)
{
    if (!service.IsConnected())
        return MakeStrings({});
    const bool bConfigured = !service.vecNameservers.empty();
    return MakeStrings(bConfigured ? service.vecNameservers : service.network.vecNameservers);
}

Value MakeDomains(const Service& service)
{
    if (!service.vecDomains.empty())
        return MakeStrings(service.vecDomains);
    return MakeStrings(service.IsConnected() ? service.network.vecDomains
                                             : std::vector<std::string>{});
}

Value MakeTimeservers(const Service& service)
{
    return MakeStrings(service.IsConnected() ? service.vecTimeservers : std::vector<std::string>{});
}

Value MakeProxy(const Service& service)
{
    if (!service.IsConnected())
        return MakeDictionaryValue({});
    if (!service.proxy.empty())
        return {"a{sv}", service.proxy};
    return MakeDictionaryValue({{"Method", MakeString("direct")}});
}

void AddIdentity(const Service& service, Properties& properties)
{
    const Network& network = service.network;
    properties.emplace_back("Type", MakeString(network.sType));
    properties.emplace_back("Security", MakeStrings(GetSecurity(network)));
    properties.emplace_back("State", MakeString(service.sState));
    if (!service.sError.empty())
        properties.emplace_back("Error", MakeString(service.sError));
    if (network.nStrength > 0 && network.sType != "ethernet")
        properties.emplace_back("Strength", MakeByte(network.nStrength));
    properties.emplace_back("Favorite", MakeBool(service.bFavorite));
    properties.emplace_back("Immutable", MakeBool(network.bImmutable));
    properties.emplace_back("AutoConnect", MakeBool(service.bFavorite && service.bAutoConnect));
    if (network.sName)
        properties.emplace_back("Name", MakeString(*network.sName));
    properties.emplace_back("Ethernet", MakeEthernet(network));
}

void AddConfiguration(const Service& service, Properties& properties)
{
    properties.emplace_back("IPv4", MakeIpv4(service));
    properties.emplace_back("IPv4.Configuration", MakeIpv4Configuration(service));
    properties.emplace_back("IPv6", MakeDictionaryValue({}));
    properties.emplace_back("IPv6.Configuration", Value{"a{sv}", service.ipv6});
    properties.emplace_back("Nameservers", MakeNameservers(service));
    properties.emplace_back("Nameservers.Configuration", MakeStrings(service.vecNameservers));
    properties.emplace_back("Timeservers", MakeTimeservers(service));
    properties.emplace_back("Timeservers.Configuration", MakeStrings(service.vecTimeservers));
    properties.emplace_back("Domains", MakeDomains(service));
    properties.emplace_back("Domains.Configuration", MakeStrings(service.vecDomains));
    properties.emplace_back("Proxy", MakeProxy(service));
    properties.emplace_back("Proxy.Configuration", Value{"a{sv}", service.proxy});
}

} // namespace

Service::Service(Network settings)
    : network(std::move(settings)),
      sState(network.sState),
      sError(network.sError),
      bFavorite(network.bSaved),
      bAutoConnect(network.bAutoConnect),
      sPassphrase(GetFirstPassphrase(network)),
      ipv6(MakeIpv6Default())
{
    sPath = network.sPath.empty() ? "/net/connman/service/" + MakeServiceIdentifier(network)
                                  : network.sPath;
    ipv4.sMethod = network.sMethod;
    if (ipv4.sMethod == "manual")
        ipv4 = {"manual", network.sAddress, network.sNetmask, network.sGateway};
    // So is a cable from the start, and what has been connected to.
    bFavorite = bFavorite || network.sType == "ethernet" || IsConnected();
}

bool Service::IsConnected() const
{
    return sState == "ready" || sState == "online";
}

bool Service::IsConnecting() const
{
    return sState == "association" || sState == "configuration";
}

std::string Service::GetIdentifier() const
{
    return sPath.substr(sPath.rfind('/') + 1);
}

Properties GetProperties(const Service& service, Version version)
{
    Properties properties;
    AddIdentity(service, properties);
    AddConfiguration(service, properties);
    if (version >= Version::V1_41) {
        properties.emplace_back("mDNS", MakeBool(service.bMdns && service.IsConnected()));
        properties.emplace_back("mDNS.Configuration", MakeBool(service.bMdns));
    }
    properties.emplace_back("Provider", MakeDictionaryValue({}));
    Apply(service.network.overrides, properties);
    return properties;
}

} // namespace Tovra::Simulator
