#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace Tovra::TestSupport
{

/** Far longer than anything takes: reaching it is a failure. Sanitizers slow everything down. */
constexpr std::chrono::seconds deadline{30};

/** Whether the predicate came true before the time was over; asks again every millisecond. */
bool Eventually(const std::function<bool()>& predicate, std::chrono::milliseconds limit = deadline);

/** What one thread hands to another; any thread may use it. */
template <class T> class Mailbox
{
public:
    void Put(T value)
    {
        const std::lock_guard<std::mutex> lock(mtxValues);
        values.push_back(std::move(value));
        changed.notify_all();
    }

    /** The oldest value not yet taken; nothing if none comes before the time is over. */
    std::optional<T> Take(std::chrono::milliseconds limit = deadline)
    {
        std::unique_lock<std::mutex> lock(mtxValues);
        if (!changed.wait_for(lock, limit, [&] { return !values.empty(); }))
            return std::nullopt;
        std::optional<T> value(std::move(values.front()));
        values.pop_front();
        return value;
    }

    bool IsEmpty() const
    {
        const std::lock_guard<std::mutex> lock(mtxValues);
        return values.empty();
    }

private:
    mutable std::mutex mtxValues;
    std::condition_variable changed;
    std::deque<T> values;
};

} // namespace Tovra::TestSupport
