#pragma once

#include "host/DeviceConfig.h"
#include "tests/support/Waiting.h"

#include <boost/thread/lock_types.hpp>
#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Tovra::TestSupport
{

/** What the plug-in told the host. */
struct HostEvent {
    enum Kind { NetworksChanged, RefreshIpSettings };

    Kind kind;
    unsigned nWord;              ///< of NetworksChanged
    const DeviceConfig* pConfig; ///< of RefreshIpSettings: the object that it was called on
    std::string sThread;         ///< the name of the thread that called
};

std::ostream& operator<<(std::ostream& stream, const HostEvent& event);

/**
 * The host of a test: its configuration, and an observer that keeps what it hears. A test program
 * that links this has the host's `RefreshIpSettings` too. Any thread.
 *
 * There is one, and it is never destroyed: the plug-in keeps the first configuration it is given
 * for as long as the process lives. So each test needs a process of its own.
 */
class Host final : public INetworkObserver
{
public:
    static Host& Get();

    DeviceConfig config; ///< its maps only under its lock; or see `Edit` and `Look`

    void NetworksChanged(unsigned flags) override;

    /** Has `fn` called with each word, on the plug-in's thread, once the word is recorded. */
    void SetOnChange(std::function<void(unsigned)> fn);

    std::vector<HostEvent> GetEvents() const;
    void ForgetEvents();

    /** How often the observer heard the word. */
    std::size_t CountWord(unsigned nWord) const;
    std::size_t CountRefreshes() const;

    /** Whether the observer has heard the word so often before the time is over. */
    bool AwaitWord(unsigned nWord, std::size_t nTimes = 1,
                   std::chrono::milliseconds limit = deadline) const;

    /** Calls `fn` with the configuration while the network lock is held exclusively, or shared. */
    template <class Function> auto Edit(const Function& fn)
    {
        const boost::unique_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
        return fn(config);
    }

    template <class Function> auto Look(const Function& fn)
    {
        const boost::shared_lock<boost::shared_mutex> lock(config.mtxNetworkConfig);
        return fn(static_cast<const DeviceConfig&>(config));
    }

    /** A copy of the record under a key; nothing if there is none. */
    std::optional<DeviceConfig::NetworkService> FindNetwork(const std::string& sKey);
    std::optional<DeviceConfig::NetworkTechnology> FindTechnology(const std::string& sType);

private:
    Host();
    ~Host() = default;
};

} // namespace Tovra::TestSupport
