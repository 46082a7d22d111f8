#include "Common/Lists.h"

#include <optional>
#include <typeinfo>

namespace Tovra::Lists
{

namespace
{

using DBus::Data;
using Properties = std::map<std::string, Data>;

/** One structure (object path, properties) of ConnMan's lists; std::bad_cast if it is none. */
class Entry
{
public:
    explicit Entry(const Data& entry)
        : vecMembers(entry.As<std::vector<Data>>()),
          sPath(Member(0).ObjectPathText())
    {
    }

    const std::string& GetPath() const { return sPath; }
    const Data& GetProperties() const { return Member(1); }

private:
    const Data& Member(std::size_t nPosition) const
    {
        if (nPosition >= vecMembers.size())
            throw std::bad_cast();
        return vecMembers[nPosition];
    }

    const std::vector<Data>& vecMembers;
    const std::string& sPath;
};

// An empty dictionary on the wire reads as Empty; one whose smallest key holds something that is
// not carried says no more.
bool SaysNothing(const Data& properties)
{
    switch (properties.GetType()) {
    case Data::Variant:
    case Data::Invalid:
    case Data::Empty:
        return true;
    case Data::Array:
    case Data::Dictionary:
        return properties.GetElementType() == Data::Invalid ||
               properties.GetElementType() == Data::Empty;
    default:
        return false;
    }
}

std::optional<ConnMan::NetworkService> ReadNetwork(const Data& data, const ServiceIndex& mapKnown)
{
    const Entry entry(data);
    if (SaysNothing(entry.GetProperties())) {
        const auto known = mapKnown.find(entry.GetPath());
        if (known == mapKnown.end())
            return std::nullopt;
        return *known->second;
    }
    Properties properties = entry.GetProperties().As<Properties>(); // a copy: the record adds keys
    return ConnMan::NetworkService(entry.GetPath(), properties);
}

ConnMan::NetworkTechnology ReadTechnology(const Data& data)
{
    const Entry entry(data);
    Properties properties = entry.GetProperties().As<Properties>(); // a copy: the record adds keys
    return ConnMan::NetworkTechnology(entry.GetPath(), properties);
}

} // namespace

std::vector<ConnMan::NetworkService> ReadNetworks(const Data& services,
                                                  const ServiceIndex& mapKnown,
                                                  const std::function<void()>& fnIncompatible)
{
    const auto& vecEntries = services.As<std::vector<Data>>();
    std::vector<ConnMan::NetworkService> vecServices;
    vecServices.reserve(vecEntries.size());
    for (const Data& entry : vecEntries) {
        try {
            if (auto service = ReadNetwork(entry, mapKnown))
                vecServices.push_back(std::move(*service));
        } catch (const std::bad_cast&) {
            fnIncompatible();
        }
    }
    return vecServices;
}

std::vector<ConnMan::NetworkTechnology>
ReadTechnologies(const Data& technologies, const std::function<void()>& fnIncompatible)
{
    const auto& vecEntries = technologies.As<std::vector<Data>>();
    std::vector<ConnMan::NetworkTechnology> vecTechnologies;
    vecTechnologies.reserve(vecEntries.size());
    for (const Data& entry : vecEntries) {
        try {
            vecTechnologies.push_back(ReadTechnology(entry));
        } catch (const std::bad_cast&) {
            fnIncompatible();
        }
    }
    return vecTechnologies;
}

ServiceIndex MakeIndex(std::vector<ConnMan::NetworkService>& vecServices)
{
    ServiceIndex mapServicesByPath;
    for (ConnMan::NetworkService& service : vecServices)
        mapServicesByPath[service.sPath] = &service;
    return mapServicesByPath;
}

bool IsConnected(const ConnMan::NetworkService& service)
{
    return service.sState == "online" || service.sState == "ready";
}

const ConnMan::NetworkService*
FindConnected(const std::vector<ConnMan::NetworkService>& vecServices)
{
    for (const ConnMan::NetworkService& service : vecServices) {
        if (IsConnected(service))
            return &service;
    }
    return nullptr;
}

bool IsConnectionChanged(const ConnMan::NetworkService* pOld, const ConnMan::NetworkService* pNew)
{
    if (!pOld || !pNew)
        return pOld != pNew;
    return pOld->sIPv4Address != pNew->sIPv4Address || pOld->sIPv4Method != pNew->sIPv4Method;
}

} // namespace Tovra::Lists
