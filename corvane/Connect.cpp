#include "corvane/Checks.h"
#include "corvane/Commands.h"
#include "corvane/Output.h"
#include "corvane/Result.h"

#include <fmt/format.h>
#include <unistd.h>

namespace Tovra::Corvane::Commands
{

namespace
{

constexpr double nConnectSeconds = 60;
constexpr std::chrono::milliseconds looking{100};

bool TakesPassphrase(const DeviceConfig::NetworkService& service)
{
    return service.sSecurity.find("psk") != std::string::npos ||
           service.sSecurity.find("wep") != std::string::npos;
}

void RequireCredential(Host& host, const Request& request,
                       const DeviceConfig::NetworkService& service, Secret& secret)
{
    if (request.bWps)
        return;
    if (request.sPassphraseFile) {
        ReadPassphrase(*request.sPassphraseFile, secret);
    } else if (TakesPassphrase(service)) {
        if (!isatty(STDIN_FILENO))
            throw Failure(Status::BadInput,
                          "this network takes a passphrase; give --passphrase-file FILE (- for "
                          "standard input) or --wps");
        AskPassphrase(host, "Passphrase (empty: the one that is stored)", secret);
    }
    const bool bPsk = service.sSecurity.find("psk") != std::string::npos;
    if (bPsk && !secret.sText.empty())
        Checks::RequirePskPassphrase(secret.sText);
}

/** One attempt to connect, from the wish to its end. */
class Attempt
{
public:
    Attempt(Host& usedHost, const Request& connectRequest, std::string sNetworkKey)
        : host(usedHost),
          request(connectRequest),
          sKey(std::move(sNetworkKey)),
          progress(connectRequest.bJson),
          until(GetDeadline(connectRequest, nConnectSeconds))
    {
    }

    ~Attempt() { host.SetReadOnChange(false); }

    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    Status Run(Secret& secret)
    {
        Apply(secret);
        const bool bCredential = request.bWps || !secret.sText.empty();
        Clear(secret.sText);
        // A reading throws credentials away, so there is none before they were asked for.
        Outcome outcome = bCredential ? WaitUntilTaken() : Outcome::Reached;
        bTaken = bCredential && outcome == Outcome::Reached && !bChangedUntaken;
        if (outcome != Outcome::Interrupt)
            outcome = WaitUntilConnected();
        return Conclude(outcome);
    }

private:
    void Apply(Secret& secret)
    {
        progress.Show("Connecting");
        host.Change([&](DeviceConfig& config) {
            DeviceConfig::NetworkService& wanted = config.mapNetworkServices[sKey];
            wanted.bConnected = true;
            wanted.bFailed = false;
            wanted.bUseWps = request.bWps;
            wanted.sPassphrase = secret.sText;
        });
        progress.Show(request.bWps ? "Asked to connect; press the access point's button"
                                   : "Asked to connect");
    }

    // Also ends when the usable network changed: then the daemon knew a credential of its own.
    Outcome WaitUntilTaken()
    {
        while (host.HoldsCredential(sKey)) {
            Event event = {Event::Kind::NetworksChanged, 0, {}};
            switch (host.WaitForEvent(std::min(until, Clock::now() + looking), &event)) {
            case Host::Wake::Interrupt:
                return Outcome::Interrupt;
            case Host::Wake::Event:
                if (event.kind == Event::Kind::Ipc) {
                    bChangedUntaken = true;
                    return Outcome::Reached;
                }
                break;
            case Host::Wake::Deadline:
                if (Clock::now() >= until)
                    return Outcome::Deadline;
            }
        }
        progress.Show("The credential was taken; connecting");
        return Outcome::Reached;
    }

    Outcome WaitUntilConnected()
    {
        host.SetReadOnChange(true);
        return ReadUntil(host, until, [&](const Picture& picture) {
            const auto found = picture.mapServices.find(sKey);
            if (found == picture.mapServices.end())
                return false;
            last = found->second;
            return last.bConnected || last.bFailed;
        });
    }

    Status Conclude(Outcome outcome)
    {
        Status status = ToStatus(outcome);
        std::string sText;
        if (outcome == Outcome::Reached && last.bConnected) {
            sText = fmt::format("Connected{}",
                                last.sIPv4Address.empty() ? "" : ", address " + last.sIPv4Address);
        } else if (outcome == Outcome::Reached) {
            status = Status::Failed;
            sText = "The connection failed. The cause is not told; likely ones are a wrong "
                    "passphrase and a network out of reach.";
        } else if (outcome == Outcome::Interrupt) {
            sText = "Interrupted; the network daemon may go on connecting.";
        } else {
            sText = bTaken ? "The credential was taken, but the network is not connected yet."
                           : "The network is not connected yet, and no credential was asked for.";
        }
        return Report(request, status, sText,
                      {{"command", "connect"},
                       {"network", Output::ToJson(last, sKey)},
                       {"applied", true},
                       {"credential_taken", bTaken}});
    }

    Host& host;
    const Request& request;
    const std::string sKey;
    Progress progress;
    const Clock::time_point until;
    DeviceConfig::NetworkService last;
    bool bTaken = false;
    bool bChangedUntaken = false;
};

} // namespace

Status Connect(Host& host, const Request& request)
{
    const Picture picture = ReadFirst(host, request);
    const auto& [sKey, service] = *FindNetwork(picture, request.sNetwork);
    if (service.bConnected)
        return Report(request, Status::Done, "Connected already.",
                      {{"command", "connect"},
                       {"network", Output::ToJson(service, sKey)},
                       {"applied", false},
                       {"credential_taken", false}});
    Secret secret;
    RequireCredential(host, request, service, secret);
    return Attempt(host, request, sKey).Run(secret);
}

} // namespace Tovra::Corvane::Commands
