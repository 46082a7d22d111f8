#pragma once

#include "simulator/Outlet.h"
#include "simulator/Scenario.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tovra::Simulator
{

/**
 * A simulated ConnMan on a bus, from its construction to its destruction, on a thread of its own.
 *
 * Any thread may use it. Each operation runs on the daemon's thread and returns when it is done:
 * what it emits has been handed to the bus by then, before anything that is emitted later. What
 * cannot be done (a path that is not there, a value that is none) throws Problem, what the bus
 * refuses std::runtime_error; after `Stop` everything throws Problem.
 */
class Daemon
{
public:
    /** Owns "net.connman" when it returns. `sBusAddress`: empty for the system bus. */
    explicit Daemon(const Scenario& scenario = {}, const std::string& sBusAddress = "");
    ~Daemon();

    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    // The world

    /** Returns the service's path. */
    std::string AddService(const Network& network);
    void RemoveService(const std::string& sPath);

    /** The WPS button of the network's access point: who waits for it is let in. */
    void PushButton(const std::string& sPath);
    void SetState(const std::string& sPath, const std::string& sState);

    /** Changes what the scenario said of the network, and announces what that changes. */
    void ChangeNetwork(const std::string& sPath, const std::function<void(Network&)>& fnChange);

    /** Any value, of any type; without one the property is left out from now on. */
    void SetServiceProperty(const std::string& sPath, const std::string& sName,
                            const std::optional<Value>& value);

    std::string AddTechnology(const TechnologySettings& settings);
    void RemoveTechnology(const std::string& sPath);
    void SetTechnologyProperty(const std::string& sPath, const std::string& sName,
                               const std::optional<Value>& value);

    /** In order. */
    std::vector<std::string> GetServicePaths() const;

    /** What "GetProperties" of the service answers: the JSON of an a{sv}. */
    Json GetServiceProperties(const std::string& sPath) const;
    std::string GetState(const std::string& sPath) const;

    /** How many agents are registered. */
    std::size_t GetAgentCount() const;

    /** The bus name of the daemon's connection; empty while it is off the bus. */
    std::string GetUniqueName() const;

    // Calls

    std::vector<Call> GetCalls() const;
    std::vector<Call> GetCalls(const std::string& sMember) const;
    void ClearCalls();

    /** The first matching call, those that came already included. Does not stop at `Stop`. */
    std::optional<Call> WaitForCall(const std::function<bool(const Call&)>& predicate,
                                    std::chrono::milliseconds limit) const;
    std::optional<Call> WaitForCall(const std::string& sMember,
                                    std::chrono::milliseconds limit) const;

    /** Is told each call, on the daemon's thread. */
    void SetObserver(std::function<void(const Call&)> fnObserver);

    // Misbehaving

    /** From now on, calls that match are treated so; the latest of several rules applies. */
    void OnCall(const CallPattern& pattern, const Behaviour& behaviour);
    void ClearBehaviours();

    std::size_t GetHeldCount() const;

    /** Sends the answers that are held, oldest or newest first. */
    void ReleaseReplies(bool bNewestFirst = false);

    void EmitRaw(const Signal& signal);

    /** The signal so many times: at once, or one each interval, and then in the background. */
    void EmitStorm(const Signal& signal, unsigned nCount, std::chrono::milliseconds interval = {});

    /** Calls anybody's method and waits for the answer; a time-out is an error reply. */
    Reply CallRaw(const OutgoingCall& call, std::chrono::milliseconds timeout);

    /**
     * Off the bus, and on again: it knows no agents then and owes nobody an answer, and where the
     * scenario wants fresh starts it is as ConnMan is when it starts.
     */
    void Leave();
    void Return();
    void Restart();

    /** Off the bus for good. */
    void Stop();

private:
    class Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace Tovra::Simulator
