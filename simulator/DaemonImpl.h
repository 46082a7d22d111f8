#pragma once

#include "simulator/BusConnection.h"
#include "simulator/CallLog.h"
#include "simulator/Daemon.h"
#include "simulator/EventLoop.h"
#include "simulator/Simulation.h"

#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace Tovra::Simulator
{

/** The simulation, the bus and the loop that drives both. All but `log` is the loop thread's. */
class Daemon::Impl : private Outlet
{
public:
    Impl(const Scenario& scenario, const std::string& sBusAddress);
    ~Impl() override;

    /** Runs the function on the daemon's thread and returns, or throws, what it does. */
    template <class Function> auto Run(const Function& fn) -> decltype(fn());

    void Release(bool bNewestFirst);
    void Storm(const Signal& signal, unsigned nCount, std::chrono::milliseconds interval);
    void Leave();
    void Return();

    // From any thread
    Reply CallOut(const OutgoingCall& call, std::chrono::milliseconds timeout);
    void Stop();

private:
    struct HeldReply {
        Answer fnAnswer;
        Reply reply;
    };

    void Emit(const Signal& signal) override;
    void Call(const OutgoingCall& call, std::chrono::milliseconds timeout,
              Answer fnAnswer) override;
    TimerId After(std::chrono::milliseconds delay, std::function<void()> fn) override;
    void Cancel(TimerId nTimer) override;

    void CallArrived(const Simulator::Call& call, const Answer& fnAnswer);
    Answer Defer(const Behaviour& behaviour, const Answer& fnAnswer);
    void Post(std::function<void()> fn);

    EventLoop loop;

public:
    BusConnection bus;
    Simulation simulation;
    CallLog log;
    Rules rules;
    std::vector<HeldReply> vecHeld;
    std::function<void(const Simulator::Call&)> fnObserver;

private:
    std::mutex mtxStopping;
    bool bStopped = false;
    std::thread thread;
};

template <class Function> auto Daemon::Impl::Run(const Function& fn) -> decltype(fn())
{
    if (std::this_thread::get_id() == thread.get_id())
        return fn();
    // Shared: if the loop never runs it, the queue still holds it when this throws.
    const auto pTask = std::make_shared<std::packaged_task<decltype(fn())()>>(fn);
    auto result = pTask->get_future();
    Post([pTask] { (*pTask)(); });
    return result.get();
}

} // namespace Tovra::Simulator
