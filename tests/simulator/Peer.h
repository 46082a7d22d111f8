#pragma once

#include "simulator/Outlet.h"
#include "tests/support/Waiting.h"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>

namespace Tovra::Simulator
{

/**
 * A connection to the system bus that speaks with the simulated daemon through nothing but plain
 * sd-bus calls. It has a thread, which takes in every signal of net.connman's interfaces and every
 * method call; the calls are answered by `fnAgent`.
 */
class Peer
{
public:
    using Agent = std::function<Reply(const Call&)>;

    explicit Peer(Agent fnAgentCalled = nullptr);
    ~Peer();

    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /** A call to net.connman, on a connection of its own, and its answer. */
    Reply Ask(const std::string& sPath, const std::string& sInterface, const std::string& sMember,
              const Arguments& arguments = {});

    /** The same from the connection with the thread, which is the one that can have an agent. */
    void Start(const std::string& sPath, const std::string& sInterface, const std::string& sMember,
               const Arguments& arguments = {});

    /** As `Start`, with the flag that no reply is wanted. */
    void StartWithoutReply(const std::string& sPath, const std::string& sInterface,
                           const std::string& sMember);

    std::string GetName() const { return sName; }

    TestSupport::Mailbox<Signal> signals;
    TestSupport::Mailbox<Call> calls;    ///< to the agent
    TestSupport::Mailbox<Reply> replies; ///< to what was started

    /** The next signal of that name, passing over others. */
    std::optional<Signal> TakeSignal(const std::string& sMember);

private:
    static int OnMessage(sd_bus_message* pMessage, void* pPeer, sd_bus_error* pError);
    static int OnReply(sd_bus_message* pMessage, void* pPeer, sd_bus_error* pError);
    void Run();
    void Post(std::function<void()> fn);

    Agent fnAgent;
    sd_bus* pBus = nullptr;
    sd_bus* pAsking = nullptr;
    std::string sName;
    std::atomic<bool> bStopping{false};
    std::mutex mtxStarted;
    std::vector<std::function<void()>> vecStarted;
    std::thread thread;
};

} // namespace Tovra::Simulator
