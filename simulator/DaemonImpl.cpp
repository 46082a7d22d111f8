#include "simulator/DaemonImpl.h"
#include "simulator/Guard.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

// So many messages are queued before the bus has to have taken them: sd-bus's queue is bounded.
constexpr unsigned nFlushedAtOnce = 1000;

Reply MakeTimeout()
{
    return {{}, "org.freedesktop.DBus.Error.NoReply", "no answer came"};
}

} // namespace

Daemon::Impl::Impl(const Scenario& scenario, const std::string& sBusAddress)
    : bus(
          loop.Get(), sBusAddress,
          [this](const Simulator::Call& call, const Answer& fnAnswer) {
              CallArrived(call, fnAnswer);
          },
          [this](const std::string& sName) { simulation.ConnectionGone(sName); }),
      simulation(scenario, *this)
{
    for (const Rule& rule : scenario.vecBehaviours)
        rules.Add(rule);
    Return();
    thread = std::thread([this] { Guard([this] { loop.Run(); }); });
}

Daemon::Impl::~Impl()
{
    Stop();
}

void Daemon::Impl::Stop()
{
    {
        const std::lock_guard<std::mutex> lock(mtxStopping);
        if (std::exchange(bStopped, true))
            return;
        loop.Post([this] {
            bus.Close();
            loop.Stop();
        });
    }
    thread.join();
}

void Daemon::Impl::Post(std::function<void()> fn)
{
    // Held while posting: what is posted before the loop's end still runs.
    const std::lock_guard<std::mutex> lock(mtxStopping);
    if (bStopped)
        throw Problem("the simulated daemon has been stopped");
    loop.Post(std::move(fn));
}

void Daemon::Impl::CallArrived(const Simulator::Call& call, const Answer& fnAnswer)
{
    log.Add(call);
    if (fnObserver)
        fnObserver(call);
    const Behaviour behaviour = rules.Take(call);
    if (behaviour.action == Behaviour::Action::Silence)
        return;
    const Answer fnDeferred = Defer(behaviour, fnAnswer);
    if (behaviour.action == Behaviour::Action::Answer)
        fnDeferred(behaviour.reply);
    else
        simulation.Handle(call, fnDeferred);
}

Answer Daemon::Impl::Defer(const Behaviour& behaviour, const Answer& fnAnswer)
{
    if (behaviour.bHold)
        return [this, fnAnswer](const Reply& reply) { vecHeld.push_back({fnAnswer, reply}); };
    if (behaviour.delay.count() > 0)
        return [this, fnAnswer, delay = behaviour.delay](const Reply& reply) {
            loop.After(delay, [fnAnswer, reply] { fnAnswer(reply); });
        };
    return fnAnswer;
}

void Daemon::Impl::Release(bool bNewestFirst)
{
    std::vector<HeldReply> vecReleased = std::exchange(vecHeld, {});
    if (bNewestFirst)
        std::reverse(vecReleased.begin(), vecReleased.end());
    for (const HeldReply& held : vecReleased)
        held.fnAnswer(held.reply);
}

void Daemon::Impl::Storm(const Signal& signal, unsigned nCount, std::chrono::milliseconds interval)
{
    if (nCount == 0)
        return;
    bus.Emit(signal);
    if (interval.count() > 0) {
        loop.After(interval, [=] { Storm(signal, nCount - 1, interval); });
        return;
    }
    for (unsigned n = 1; n < nCount; ++n) {
        bus.Emit(signal);
        if (n % nFlushedAtOnce == 0)
            bus.Flush();
    }
}

void Daemon::Impl::Leave()
{
    vecHeld.clear();
    bus.Close();
    simulation.End();
}

void Daemon::Impl::Return()
{
    bus.Open();
    simulation.Begin();
}

Reply Daemon::Impl::CallOut(const OutgoingCall& call, std::chrono::milliseconds timeout)
{
    // Shared: the answer may come after the waiting is over.
    const auto pAnswered = std::make_shared<std::promise<Reply>>();
    auto answered = pAnswered->get_future();
    Run([&] { bus.Call(call, timeout, [=](const Reply& reply) { pAnswered->set_value(reply); }); });
    if (answered.wait_for(timeout + std::chrono::seconds(1)) != std::future_status::ready)
        return MakeTimeout();
    return answered.get();
}

void Daemon::Impl::Emit(const Signal& signal)
{
    bus.Emit(signal);
}

void Daemon::Impl::Call(const OutgoingCall& call, std::chrono::milliseconds timeout,
                        Answer fnAnswer)
{
    bus.Call(call, timeout, std::move(fnAnswer));
}

Outlet::TimerId Daemon::Impl::After(std::chrono::milliseconds delay, std::function<void()> fn)
{
    return loop.After(delay, std::move(fn));
}

void Daemon::Impl::Cancel(TimerId nTimer)
{
    loop.Cancel(nTimer);
}

} // namespace Tovra::Simulator
