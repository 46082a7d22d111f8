#pragma once

#include <string>
#include <sys/types.h>

namespace Tovra::TestSupport
{

/**
 * A dbus-daemon of type system on a socket and with a configuration of its own. It ends with this
 * object, and at the latest with the thread that made it.
 */
class PrivateBus
{
public:
    /**
     * Starts the daemon and waits until it listens; throws std::runtime_error if it does not.
     * `sMoreConfiguration`: elements to add to its <busconfig>.
     */
    explicit PrivateBus(const std::string& sMoreConfiguration = "");
    ~PrivateBus();

    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& GetAddress() const { return sAddress; }
    pid_t GetProcess() const { return nProcess; }

    /** Kills the daemon and waits until it is gone. */
    void Stop();

    /** Makes this the system bus of the process; before anything in it has asked for one. */
    void BecomeSystemBus() const;

private:
    std::string sAddress;
    pid_t nProcess = -1;
};

/** The bus that main() made this process's system bus. */
PrivateBus& GetSystemBus();

} // namespace Tovra::TestSupport
