#include "corvane/Checks.h"
#include "corvane/Commands.h"
#include "corvane/Output.h"
#include "corvane/Result.h"
#include "corvane/Waiting.h"

#include <algorithm>
#include <fmt/format.h>
#include <unistd.h>

namespace Tovra::Corvane::Commands
{

namespace
{

constexpr double nConnectSeconds = 60;
constexpr std::chrono::milliseconds looking{100};

bool HasSecurity(const DeviceConfig::NetworkService& service, const char* pMethod)
{
    return service.sSecurity.find(pMethod) != std::string::npos;
}

bool TakesPassphrase(const DeviceConfig::NetworkService& service)
{
    return HasSecurity(service, "psk") || HasSecurity(service, "wep");
}

void RequireFitting(const Request& request, const DeviceConfig::NetworkService& service)
{
    const bool bOpen = service.sSecurity.empty() || HasSecurity(service, "none");
    if (request.sPassphraseFile && bOpen)
        throw Failure(Status::BadInput,
                      "this network takes no passphrase; connect it without --passphrase-file");
    if (request.bWps && !HasSecurity(service, "wps"))
        throw Failure(Status::BadInput,
                      bOpen ? "this network needs no WPS; connect it without --wps"
                            : "this network offers no WPS; give --passphrase-file FILE (- for "
                              "standard input), or the passphrase when asked for it");
}

void RequireCredential(Host& host, const Request& request,
                       const DeviceConfig::NetworkService& service, Secret& secret)
{
    RequireFitting(request, service);
    if (request.bWps)
        return;
    if (request.sPassphraseFile) {
        ReadPassphrase(host, *request.sPassphraseFile, secret);
    } else if (TakesPassphrase(service)) {
        if (!isatty(STDIN_FILENO))
            throw Failure(Status::BadInput,
                          "this network takes a passphrase; give --passphrase-file FILE (- for "
                          "standard input) or --wps");
        AskPassphrase(host, secret);
    }
    if (HasSecurity(service, "psk") && !secret.sText.empty())
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
        bHandedOver = request.bWps || !secret.sText.empty();
        Apply(secret);
        Clear(secret.sText);
        return Conclude(Wait());
    }

private:
    void Apply(Secret& secret)
    {
        progress.Show("Connecting");
        host.SetReadOnChange(true);
        host.ChangeNetwork(sKey, [&](DeviceConfig::NetworkService& wanted) {
            wanted.bConnected = true;
            wanted.bFailed = false;
            wanted.bUseWps = request.bWps;
            wanted.sPassphrase = secret.sText;
        });
        progress.Show(request.bWps ? "Asked to connect; press the access point's button"
                                   : "Asked to connect");
    }

    Outcome Wait()
    {
        while (!HasEnded()) {
            const auto next = std::min(until, Clock::now() + looking);
            if (host.WaitForEvent(next) == Host::Wake::Interrupt)
                return Outcome::Interrupt;
            if (Clock::now() >= until)
                return HasEnded() ? Outcome::Reached : Outcome::Deadline;
        }
        return Outcome::Reached;
    }

    // A reading throws the credential away, so there is none before it was asked for; what the
    // plug-in tells meanwhile is read without that loss.
    bool HasEnded()
    {
        const bool bWaitsToBeAsked = bHandedOver && !bTaken;
        const Picture picture = bWaitsToBeAsked ? host.Look() : host.Read();
        if (bWaitsToBeAsked && !host.HoldsCredential(sKey)) {
            bTaken = true;
            progress.Show("The credential was taken; connecting");
        }
        const auto found = picture.mapServices.find(sKey);
        if (!picture.bAsRead || found == picture.mapServices.end())
            return false;
        last = found->second;
        return last.bConnected || last.bFailed;
    }

    Status Conclude(Outcome outcome)
    {
        progress.End();
        Status status = ToStatus(outcome);
        std::string sText;
        if (outcome == Outcome::Reached && last.bConnected) {
            sText = fmt::format("Connected{}",
                                last.sIPv4Address.empty() ? "" : ", address " + last.sIPv4Address);
        } else if (outcome == Outcome::Reached) {
            status = Status::Failed;
            sText = GetFailure();
        } else if (outcome == Outcome::Interrupt) {
            sText = "Interrupted; the network daemon may go on connecting.";
        } else {
            sText = GetDelay();
        }
        return Report(request, status, sText,
                      {{"command", "connect"},
                       {"network", Output::ToJson(last, sKey)},
                       {"applied", true},
                       {"credential_taken", bTaken}});
    }

    const char* GetFailure() const
    {
        if (bHandedOver && !bTaken)
            return "The connection failed, and the credential was not asked for. The cause is not "
                   "told; likely ones are a wrong passphrase that the network daemon has stored "
                   "and a network out of reach.";
        if (bHandedOver || TakesPassphrase(last))
            return "The connection failed. The cause is not told; likely ones are a wrong "
                   "passphrase and a network out of reach.";
        return "The connection failed. The cause is not told; likely ones are a network out of "
               "reach and one that gives no address.";
    }

    const char* GetDelay() const
    {
        if (!bHandedOver)
            return "The network is not connected yet.";
        if (!bTaken)
            return "The network is not connected yet, and no credential was asked for.";
        // A failure can pass before the plug-in has read it.
        return request.bWps ? "The credential was taken, but the network is not connected yet."
                            : "The credential was taken, but the network is not connected yet; a "
                              "wrong passphrase may show as no more than this.";
    }

    Host& host;
    const Request& request;
    const std::string sKey;
    Progress progress;
    const Clock::time_point until;
    DeviceConfig::NetworkService last;
    bool bHandedOver = false;
    bool bTaken = false;
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
