#include "corvane/Checks.h"

#include "corvane/Status.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdint>
#include <fmt/format.h>

namespace Tovra::Corvane::Checks
{

namespace
{

std::uint32_t RequireIPv4(const std::string& sText, const char* pWhat)
{
    in_addr address = {};
    if (inet_pton(AF_INET, sText.c_str(), &address) != 1)
        throw Failure(Status::BadInput,
                      fmt::format("the {} '{}' is no IPv4 address; write four numbers from 0 to "
                                  "255, such as 192.168.1.20",
                                  pWhat, sText));
    return ntohl(address.s_addr);
}

std::uint32_t RequireNetmask(const std::string& sText)
{
    const std::uint32_t nMask = RequireIPv4(sText, "netmask");
    const std::uint32_t nHostPart = ~nMask;
    if (nMask == 0 || (nHostPart & (nHostPart + 1)) != 0)
        throw Failure(Status::BadInput,
                      fmt::format("'{}' is no netmask; it is ones followed by zeroes, such as "
                                  "255.255.255.0",
                                  sText));
    return nMask;
}

void RequireHost(const std::string& sText, std::uint32_t nAddress, std::uint32_t nMask)
{
    const std::uint32_t nHostPart = nAddress & ~nMask;
    if (~nMask > 1 && (nHostPart == 0 || nHostPart == ~nMask))
        throw Failure(Status::BadInput,
                      fmt::format("{} is no host's address with this netmask; take one between the "
                                  "first and the last of the network",
                                  sText));
}

void RequireNameserver(const std::string& sText)
{
    in6_addr address = {};
    if (inet_pton(AF_INET, sText.c_str(), &address) != 1 &&
        inet_pton(AF_INET6, sText.c_str(), &address) != 1)
        throw Failure(Status::BadInput,
                      fmt::format("the name server '{}' is no address; write one such as "
                                  "192.168.1.1 or fd00::1",
                                  sText));
}

} // namespace

void RequireAddresses(const StaticAddress& address)
{
    const std::uint32_t nAddress = RequireIPv4(address.sAddress, "address");
    const std::uint32_t nMask = RequireNetmask(address.sNetmask);
    const std::uint32_t nGateway = RequireIPv4(address.sGateway, "gateway");
    if ((nAddress & nMask) != (nGateway & nMask))
        throw Failure(Status::BadInput,
                      fmt::format("the gateway {} cannot be reached from {} with netmask {}; it "
                                  "must lie in the same network",
                                  address.sGateway, address.sAddress, address.sNetmask));
    if (nAddress == nGateway)
        throw Failure(Status::BadInput,
                      fmt::format("the gateway {} is the address itself; it must be another one of "
                                  "the same network",
                                  address.sGateway));
    RequireHost(address.sAddress, nAddress, nMask);
    RequireHost(address.sGateway, nGateway, nMask);
    for (const std::string& sNameserver : address.vecNameservers)
        RequireNameserver(sNameserver);
}

void RequirePskPassphrase(const std::string& sPassphrase)
{
    const bool bKey = sPassphrase.size() == 64 &&
                      std::all_of(sPassphrase.begin(), sPassphrase.end(),
                                  [](unsigned char c) { return std::isxdigit(c) != 0; });
    if (!bKey && (sPassphrase.size() < 8 || sPassphrase.size() > 63))
        throw Failure(Status::BadInput,
                      fmt::format("the passphrase has {} characters; this network takes 8 to 63 "
                                  "characters or 64 hexadecimal digits",
                                  sPassphrase.size()));
}

} // namespace Tovra::Corvane::Checks
