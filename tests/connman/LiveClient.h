#pragma once

#include "Common/ConnManImpl.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/DaemonData.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Waiting.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace Tovra
{

/**
 * The client on its dispatch thread, and the simulated daemon, on the private bus. libdbus shares
 * its connection within the process: one client a process.
 *
 * What the client does to the system is only written down.
 */
class LiveClient : public testing::Test
{
protected:
    LiveClient();
    ~LiveClient() override;

    /** Makes the client, as the load of the library does; it returns when the agent is answered. */
    void MakeClient();

    /** Registers a callback for all words and starts dispatching. */
    void StartDispatching();

    /** Both, with the daemon's two lists in place; the calls of it are forgotten. */
    void Start();

    /** As at process exit: the client, then the thread. */
    void StopClient();

    void Emit(const Simulator::Signal& signal) { daemon.EmitRaw(signal); }
    void OnCall(const std::string& sMember, const Simulator::Behaviour& behaviour);

    /** What "GetServices", or "GetTechnologies", answers from now on. */
    void Answer(const std::string& sMember, const Simulator::Arguments& arguments);

    /** The next word that the callbacks received; nothing if none comes. */
    std::optional<unsigned int> NextWord() { return words.Take(); }

    /** Expects that the client has dealt with all that was sent, and called back no more. */
    void ExpectNoMoreWords();

    /** The members that the daemon was called with since the start, in order. */
    std::vector<std::string> GetCallsSinceStart() const;

    static inline const std::string sHome = "/net/connman/service/wifi_home";
    static inline const std::string sAway = "/net/connman/service/wifi_away";

    Simulator::Daemon daemon{MakeScenario(), TestSupport::GetSystemBus().GetAddress()};
    TestSupport::Mailbox<unsigned int> words;
    TestSupport::Mailbox<std::string> actions; // "run", "remove <identifier>"
    /** Called after the removal is written down, if it is set before the client is made. */
    decltype(ConnMan::Impl::SystemActions::fnRemoveOldSettings) fnRemoveOldSettings;
    std::unique_ptr<DBus::Thread> pThread;
    std::shared_ptr<ConnMan::Impl> pClient;

private:
    static Simulator::Scenario MakeScenario();
};

} // namespace Tovra
