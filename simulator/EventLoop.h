#pragma once

#include "simulator/Outlet.h"

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <systemd/sd-event.h>
#include <vector>

namespace Tovra::Simulator
{

/** The loop that one thread runs. Everything but `Post` belongs to that thread. */
class EventLoop
{
public:
    EventLoop();
    ~EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    sd_event* Get() const { return pEvent; }

    /** Returns after `Stop`. */
    void Run();
    void Stop();

    /** Has the loop's thread call the function, in the order of posting. Any thread may. */
    void Post(std::function<void()> fn);

    Outlet::TimerId After(std::chrono::milliseconds delay, std::function<void()> fn);

    /** Of a timer that has fired or never was, nothing. */
    void Cancel(Outlet::TimerId nTimer);

private:
    struct Timer {
        EventLoop* pLoop;
        Outlet::TimerId nTimer;
        std::function<void()> fn;
        sd_event_source* pSource;
    };

    static int OnPosted(sd_event_source* pSource, int nFile, std::uint32_t nEvents, void* pLoop);
    static int OnTimer(sd_event_source* pSource, std::uint64_t nTime, void* pTimer);

    sd_event* pEvent = nullptr;
    int nWakeup = -1;
    std::map<Outlet::TimerId, Timer> mapTimers;
    Outlet::TimerId nLastTimer = 0;
    std::mutex mtxPosted;
    std::vector<std::function<void()>> vecPosted;
};

} // namespace Tovra::Simulator
