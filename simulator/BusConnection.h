#pragma once

#include "simulator/Outlet.h"

#include <functional>
#include <string>
#include <systemd/sd-bus.h>

namespace Tovra::Simulator
{

/** The simulated daemon's connection to the bus, as "net.connman". Used by one thread. */
class BusConnection
{
public:
    using OnCall = std::function<void(const Call& call, const Answer& fnAnswer)>;
    using OnGone = std::function<void(const std::string& sName)>;

    /**
     * `sBusAddress`: empty for the environment's system bus. The functions are called from the
     * event loop: for each method call, and when a connection leaves the bus.
     */
    BusConnection(sd_event* pLoop, std::string sBusAddress, OnCall fnCallArrived,
                  OnGone fnConnectionGone);
    ~BusConnection();

    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    /** Throws std::runtime_error if there is no bus, or if the name is taken. */
    void Open();

    /** The name is free from then on, calls that still wait for an answer fail. */
    void Close();

    bool IsOpen() const { return pBus != nullptr; }
    std::string GetUniqueName() const;

    /** On a closed connection nothing is sent. */
    void Emit(const Signal& signal);

    /** Without `fnAnswer` no reply is asked for. */
    void Call(const OutgoingCall& call, std::chrono::milliseconds timeout, Answer fnAnswer);

    /** Waits until everything has left. */
    void Flush();

private:
    static int OnMessage(sd_bus_message* pMessage, void* pConnection, sd_bus_error* pError);
    static int OnNameOwnerChanged(sd_bus_message* pMessage, void* pConnection,
                                  sd_bus_error* pError);
    void Connect();

    sd_event* pEvent;
    std::string sAddress;
    OnCall fnCall;
    OnGone fnGone;
    sd_bus* pBus = nullptr;
};

} // namespace Tovra::Simulator
