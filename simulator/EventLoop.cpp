#include "simulator/EventLoop.h"
#include "simulator/Guard.h"
#include "simulator/MessageIo.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Tovra::Simulator
{

EventLoop::EventLoop()
{
    Check(sd_event_new(&pEvent), "make an event loop");
    nWakeup = Check(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "make an eventfd");
    Check(sd_event_add_io(pEvent, nullptr, nWakeup, EPOLLIN, OnPosted, this), "watch an eventfd");
}

EventLoop::~EventLoop()
{
    while (!mapTimers.empty())
        Cancel(mapTimers.begin()->first);
    sd_event_unref(pEvent);
    close(nWakeup);
}

void EventLoop::Run()
{
    Check(sd_event_loop(pEvent), "run the event loop");
}

void EventLoop::Stop()
{
    Check(sd_event_exit(pEvent, 0), "stop the event loop");
}

void EventLoop::Post(std::function<void()> fn)
{
    const std::lock_guard<std::mutex> lock(mtxPosted);
    vecPosted.push_back(std::move(fn));
    eventfd_write(nWakeup, 1);
}

Outlet::TimerId EventLoop::After(std::chrono::milliseconds delay, std::function<void()> fn)
{
    const Outlet::TimerId nTimer = ++nLastTimer;
    Timer& timer = mapTimers[nTimer];
    timer = {this, nTimer, std::move(fn), nullptr};
    const std::chrono::microseconds microseconds = delay;
    Check(sd_event_add_time_relative(pEvent, &timer.pSource, CLOCK_MONOTONIC,
                                     static_cast<std::uint64_t>(microseconds.count()), 1, OnTimer,
                                     &timer),
          "set a timer");
    return nTimer;
}

void EventLoop::Cancel(Outlet::TimerId nTimer)
{
    const auto timer = mapTimers.find(nTimer);
    if (timer == mapTimers.end())
        return;
    sd_event_source_disable_unref(timer->second.pSource);
    mapTimers.erase(timer);
}

int EventLoop::OnPosted(sd_event_source*, int nFile, std::uint32_t, void* pLoop)
{
    auto& loop = *static_cast<EventLoop*>(pLoop);
    std::vector<std::function<void()>> vecTaken;
    {
        const std::lock_guard<std::mutex> lock(loop.mtxPosted);
        eventfd_t nCount = 0;
        eventfd_read(nFile, &nCount);
        vecTaken.swap(loop.vecPosted);
    }
    for (const auto& fn : vecTaken)
        Guard(fn);
    return 0;
}

int EventLoop::OnTimer(sd_event_source*, std::uint64_t, void* pTimer)
{
    Timer& timer = *static_cast<Timer*>(pTimer);
    EventLoop& loop = *timer.pLoop;
    const std::function<void()> fn = std::move(timer.fn);
    loop.Cancel(timer.nTimer);
    Guard(fn);
    return 0;
}

} // namespace Tovra::Simulator
