#pragma once

#include "simulator/Outlet.h"

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Tovra::Simulator
{

/** Keeps what is sent, and has a clock that stands still until it is told to go on. */
class FakeOutlet : public Outlet
{
public:
    struct Asked {
        OutgoingCall call;
        Answer fnAnswer;
    };

    void Emit(const Signal& signal) override { vecSignals.push_back(signal); }

    void Call(const OutgoingCall& call, std::chrono::milliseconds limit, Answer fnAnswer) override
    {
        vecAsked.push_back({call, fnAnswer});
        timeout = limit;
    }

    TimerId After(std::chrono::milliseconds delay, std::function<void()> fn) override
    {
        mapTimers[{now + delay, ++nLast}] = std::move(fn);
        return nLast;
    }

    void Cancel(TimerId nTimer) override
    {
        for (auto timer = mapTimers.begin(); timer != mapTimers.end(); ++timer)
            if (timer->first.second == nTimer) {
                mapTimers.erase(timer);
                return;
            }
    }

    /** Lets so much time go by. */
    void Pass(std::chrono::milliseconds duration)
    {
        const auto end = now + duration;
        while (!mapTimers.empty() && mapTimers.begin()->first.first <= end) {
            const auto node = mapTimers.extract(mapTimers.begin());
            now = node.key().first;
            node.mapped()();
        }
        now = end;
    }

    std::vector<Signal> TakeSignals() { return std::exchange(vecSignals, {}); }

    /** The values of the property that were announced for the object since the last `Take`. */
    std::vector<Json> GetAnnounced(const std::string& sPath, const std::string& sProperty) const
    {
        std::vector<Json> vecValues;
        for (const Signal& signal : vecSignals)
            if (signal.sMember == "PropertyChanged" && signal.sPath == sPath &&
                signal.arguments.values[0] == sProperty)
                vecValues.push_back(signal.arguments.values[1][1]);
        return vecValues;
    }

    std::vector<Signal> GetSignals(const std::string& sMember) const
    {
        std::vector<Signal> vecFound;
        for (const Signal& signal : vecSignals)
            if (signal.sMember == sMember)
                vecFound.push_back(signal);
        return vecFound;
    }

    std::vector<Signal> vecSignals;
    std::vector<Asked> vecAsked;
    std::chrono::milliseconds timeout{0};

private:
    std::map<std::pair<std::chrono::milliseconds, TimerId>, std::function<void()>> mapTimers;
    std::chrono::milliseconds now{0};
    TimerId nLast = 0;
};

} // namespace Tovra::Simulator
