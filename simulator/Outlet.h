#pragma once

#include "simulator/Behaviour.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace Tovra::Simulator
{

struct Signal {
    std::string sPath = "/";
    std::string sInterface = "net.connman.Manager";
    std::string sMember;
    Arguments arguments;
    std::string sDestination; ///< empty: to everybody
};

struct OutgoingCall {
    std::string sDestination;
    std::string sPath;
    std::string sInterface = "net.connman.Agent";
    std::string sMember;
    Arguments arguments;
};

/** Answers one call, once, at any later time. */
using Answer = std::function<void(const Reply&)>;

/** All that the simulated daemon does to the world: the bus and the clock. */
class Outlet
{
public:
    using TimerId = std::uint64_t;

    virtual ~Outlet() = default;

    virtual void Emit(const Signal& signal) = 0;

    /** `fnAnswer` is not called any more once everything has been dropped. */
    virtual void Call(const OutgoingCall& call, std::chrono::milliseconds timeout,
                      Answer fnAnswer) = 0;

    /** Calls once, unless it is cancelled. */
    virtual TimerId After(std::chrono::milliseconds delay, std::function<void()> fn) = 0;
    virtual void Cancel(TimerId nTimer) = 0;
};

} // namespace Tovra::Simulator
