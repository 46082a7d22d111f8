#include "tests/plugin/Host.h"
#include "tests/plugin/PlugInLibrary.h"

#include <atomic>
#include <cstdio>
#include <iostream>

/**
 * A host that hands the plug-in any passphrase, also one that corvane would refuse:
 *
 *     plugin_raw_host NETWORK-KEY
 *
 * connects the network for each line of its input, with that line as the passphrase, and writes how
 * it ended: "connected", "failed", or "nothing" if neither came in time.
 */

namespace Tovra
{

namespace
{

using TestSupport::Eventually;

constexpr std::chrono::seconds limit{30};

class RawHost
{
public:
    explicit RawHost(std::string sNetworkKey)
        : sKey(std::move(sNetworkKey)),
          plugIn(*library.GetInterface(host.config))
    {
        host.SetOnChange([this](unsigned) {
            if (bTaken)
                plugIn.TargetSpecificGetNetworkConfiguration();
        });
    }

    bool AwaitNetwork()
    {
        return Eventually([this] { return Read().has_value(); }, limit);
    }

    const char* Connect(const std::string& sPassphrase)
    {
        Read();
        bTaken = false;
        host.Edit([&](DeviceConfig& config) {
            auto& wanted = config.mapNetworkServices.at(sKey);
            wanted.bConnected = true;
            wanted.bFailed = false;
            wanted.sPassphrase = sPassphrase;
        });
        plugIn.TargetSpecificSetNetworkConfiguration();
        if (!Eventually([this] { return host.FindNetwork(sKey)->sPassphrase.empty(); }, limit))
            return "nothing";
        // Until then it reads as wanted; and a reading would have thrown the passphrase away.
        bTaken = true;
        const bool bEnded = Eventually(
            [this] {
                const auto network = Read();
                return network && (network->bConnected || network->bFailed);
            },
            limit);
        return !bEnded ? "nothing" : host.FindNetwork(sKey)->bFailed ? "failed" : "connected";
    }

private:
    std::optional<DeviceConfig::NetworkService> Read()
    {
        plugIn.TargetSpecificGetNetworkConfiguration();
        return host.FindNetwork(sKey);
    }

    TestSupport::Host& host = TestSupport::Host::Get();
    const TestSupport::PlugInLibrary library;
    const std::string sKey;
    ITargetSpecific& plugIn;
    std::atomic<bool> bTaken = false;
};

} // namespace

} // namespace Tovra

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: plugin_raw_host NETWORK-KEY, with passphrases as input\n");
        return 2;
    }
    auto& host = *new Tovra::RawHost(argv[1]); // the plug-in calls it until the process ends
    if (!host.AwaitNetwork()) {
        std::fprintf(stderr, "there is no network with the key %s\n", argv[1]);
        return 3;
    }
    for (std::string sPassphrase; std::getline(std::cin, sPassphrase);)
        std::cout << host.Connect(sPassphrase) << std::endl;
    return 0;
}
