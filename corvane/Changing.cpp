#include "corvane/Checks.h"
#include "corvane/Commands.h"
#include "corvane/Output.h"
#include "corvane/Result.h"

#include <fmt/format.h>

namespace Tovra::Corvane::Commands
{

using nlohmann::json;

namespace
{

constexpr double nChangeSeconds = 15;
constexpr double nScanSeconds = 30;

// Without name servers of its own a network may show those that it was given.
bool IsAsWanted(const DeviceConfig::NetworkService& service, const Request& request)
{
    if (!request.address)
        return service.bDhcp && !service.sIPv4Address.empty();
    const StaticAddress& address = *request.address;
    return !service.bDhcp && service.sIPv4Address == address.sAddress &&
           service.sIPv4Netmask == address.sNetmask && service.sIPv4Gateway == address.sGateway &&
           (address.vecNameservers.empty() || service.vecNameservers == address.vecNameservers);
}

void Edit(DeviceConfig::NetworkService& wanted, const Request& request)
{
    wanted.bDhcp = !request.address;
    if (!request.address)
        return;
    wanted.sIPv4Address = request.address->sAddress;
    wanted.sIPv4Netmask = request.address->sNetmask;
    wanted.sIPv4Gateway = request.address->sGateway;
    wanted.vecNameservers = request.address->vecNameservers;
}

// The next change of the networks; changes of strength are none.
Outcome WaitForChange(Host& host, Clock::time_point until)
{
    for (;;) {
        Event event = {Event::Kind::Ipc, 0, {}};
        switch (host.WaitForEvent(until, &event)) {
        case Host::Wake::Interrupt:
            return Outcome::Interrupt;
        case Host::Wake::Deadline:
            return Outcome::Deadline;
        case Host::Wake::Event:
            if (event.kind == Event::Kind::NetworksChanged && (event.nFlags & 1u) != 0)
                return Outcome::Reached;
        }
    }
}

void DropEvents(Host& host)
{
    while (host.WaitForEvent(Clock::now()) == Host::Wake::Event) {
    }
}

} // namespace

Status Disconnect(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    const auto network = FindNetwork(picture, request.sNetwork);
    const std::string& sKey = network->first;
    const DeviceConfig::NetworkService& service = network->second;
    const bool bForgets = service.sType != "ethernet";
    json details = {{"command", "disconnect"}, {"key", sKey}, {"forgotten", false}};

    Progress progress(request.bJson);
    progress.Show("Disconnecting");
    // Also when it is not connected: another of its name may be.
    host.ChangeNetwork(sKey,
                       [](DeviceConfig::NetworkService& wanted) { wanted.bConnected = false; });
    if (!service.bConnected) {
        progress.End();
        return Report(request, Status::Done, "Not connected.", details);
    }
    const Outcome outcome =
        ReadUntil(host, GetDeadline(request, nChangeSeconds), [&](const Picture& seen) {
            const auto found = seen.mapServices.find(sKey);
            return found == seen.mapServices.end() || !found->second.bConnected;
        });
    progress.End();
    if (outcome != Outcome::Reached)
        return Report(request, ToStatus(outcome), "The network is still connected.", details);
    details["forgotten"] = bForgets;
    return Report(request, Status::Done,
                  bForgets ? "Disconnected; the network daemon has forgotten the network and its "
                             "passphrase."
                           : "Disconnected.",
                  details);
}

Status SetAddress(Host& host, const Request& request)
{
    if (request.address)
        Checks::RequireAddresses(*request.address);
    const Picture picture = ReadFirst(host, request);
    const auto network = FindNetwork(picture, request.sNetwork);
    const std::string& sKey = network->first;
    const bool bConnected = network->second.bConnected;

    Progress progress(request.bJson);
    progress.Show("Setting the address");
    host.ChangeNetwork(sKey, [&](DeviceConfig::NetworkService& wanted) { Edit(wanted, request); });
    json details = {{"command", "set"}, {"key", sKey}, {"confirmed", false}};
    if (!bConnected) {
        progress.End();
        return Report(request, Status::Done,
                      "Sent. The network is not connected; until it is, this cannot be confirmed.",
                      details);
    }

    const Outcome outcome =
        ReadUntil(host, GetDeadline(request, nChangeSeconds), [&](const Picture& seen) {
            const auto found = seen.mapServices.find(sKey);
            return found != seen.mapServices.end() && IsAsWanted(found->second, request);
        });
    progress.End();
    if (outcome != Outcome::Reached)
        return Report(request, ToStatus(outcome),
                      "Sent, but the network does not show the new settings yet.", details);
    const DeviceConfig::NetworkService seen = host.Look().mapServices[sKey];
    details["confirmed"] = true;
    details["network"] = Output::ToJson(seen, sKey);
    return Report(request, Status::Done,
                  fmt::format("Set: {} by {}.", seen.sIPv4Address,
                              seen.bDhcp ? "DHCP" : "static configuration"),
                  details);
}

Status SetPower(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    const std::string sType = FindTechnology(picture, request.sTechnology)->first;
    Progress progress(request.bJson);
    progress.Show(request.bPower ? "Switching on" : "Switching off");
    host.ChangeTechnology(
        sType, [&](DeviceConfig::NetworkTechnology& wanted) { wanted.bPowered = request.bPower; });
    bool bPowered = !request.bPower;
    const Outcome outcome =
        ReadUntil(host, GetDeadline(request, nChangeSeconds), [&](const Picture& seen) {
            const auto found = seen.mapTechnologies.find(sType);
            bPowered = found != seen.mapTechnologies.end() && found->second.bPowered;
            return bPowered == request.bPower;
        });
    progress.End();
    const char* const pState = request.bPower ? "on" : "off";
    return Report(request, ToStatus(outcome),
                  outcome == Outcome::Reached ? fmt::format("{} is {}.", sType, pState)
                                              : fmt::format("{} is not {} yet.", sType, pState),
                  {{"command", "power"}, {"technology", sType}, {"powered", bPowered}});
}

Status Scan(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    const auto wifi = picture.mapTechnologies.find("wifi");
    if (wifi == picture.mapTechnologies.end())
        throw Failure(Status::Unknown, "this device has no WiFi to scan with");
    if (!wifi->second.bPowered)
        throw Failure(Status::BadInput, "WiFi is off; 'corvane power wifi on' switches it on");

    Progress progress(request.bJson);
    progress.Show("Scanning");
    DropEvents(host);
    host.ChangeTechnology("wifi",
                          [](DeviceConfig::NetworkTechnology& wanted) { wanted.bScan = true; });
    const Outcome outcome = WaitForChange(host, GetDeadline(request, nScanSeconds));
    progress.End();
    if (outcome == Outcome::Interrupt)
        return Report(request, Status::Interrupted, "Interrupted; the scan goes on.",
                      {{"command", "scan"}});
    const Picture seen = host.Read();
    const bool bChanged = outcome == Outcome::Reached;
    if (request.bJson)
        return Report(request, Status::Done, "",
                      {{"command", "scan"},
                       {"changed", bChanged},
                       {"networks", Output::ToJson(seen.mapServices)}});
    if (!bChanged)
        fmt::print("No change was told of while waiting; the networks are:\n");
    fmt::print("{}", Output::MakeTable(seen.mapServices, HasColour()));
    return Status::Done;
}

} // namespace Tovra::Corvane::Commands
