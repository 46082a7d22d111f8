#pragma once

#include "simulator/Behaviour.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace Tovra::Simulator
{

/** {"sender", "path", "interface", "member", "signature", "args", "noReply"} */
Json ToJson(const Call& call);

/** The calls that came in, in order. Any thread may use it. */
class CallLog
{
public:
    void Add(const Call& call);
    std::vector<Call> GetAll() const;
    void Clear();

    /** The first matching call, those that came already included; waits for one until the end. */
    std::optional<Call> Wait(const std::function<bool(const Call&)>& predicate,
                             std::chrono::milliseconds limit) const;

private:
    mutable std::mutex mtxCalls;
    mutable std::condition_variable changed;
    std::vector<Call> vecCalls;
    std::size_t nCleared = 0; ///< how many came before the first one kept
};

} // namespace Tovra::Simulator
