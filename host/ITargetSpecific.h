#pragma once

namespace Tovra
{

class DeviceConfig;

/**
 * What a target-specific plug-in does for the host. The order of the slots is part of the binary
 * interface. Any thread may call any operation until exit() is called or main() returns; after that
 * only an observer that is being told of a change. The host never deletes the object.
 */
class ITargetSpecific
{
public:
    virtual ~ITargetSpecific() = default;

    /** Returns 0. */
    virtual int TargetSpecificLoad() = 0;

    /**
     * Compares the wanted values in the host's maps with the network's state and sends the network
     * daemon the differences, without waiting for their effect: power; then either one scan, and
     * nothing after it, or connections, addresses and name servers. Returns 1. Takes the network
     * lock exclusively, then the client's list lock for a moment. std::bad_alloc leaves it, and
     * what the host's log throws.
     */
    virtual int TargetSpecificSetNetworkConfiguration() = 0;

    /**
     * Replaces the host's two maps by the network's state as it is known. What the host wanted and
     * had not yet applied is lost, stored credentials too; a network's bFailed stays. Returns 1.
     * Locks and failures as above; on a failure the maps stay as they were.
     */
    virtual int TargetSpecificGetNetworkConfiguration() = 0;
};

} // namespace Tovra

/**
 * The plug-in's one exported symbol: gives its one object. The first call builds it and starts the
 * plug-in's dispatch thread; `config` must live until the process has ended. Later calls give the
 * same object and ignore `config`. Any thread. What building throws leaves the call, and the next
 * one tries again. The plug-in stays loaded until the process ends, also after dlclose.
 *
 * Loading the library, before this can be called, waits for the network daemon to answer: 25 s at
 * most, if it hangs.
 */
extern "C" [[gnu::visibility("default")]] Tovra::ITargetSpecific*
GetTargetSpecificInterface(Tovra::DeviceConfig& config);
