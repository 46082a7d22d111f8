#include "simulator/CallLog.h"

#include <algorithm>

namespace Tovra::Simulator
{

Json ToJson(const Call& call)
{
    return {{"sender", call.sSender},
            {"path", call.sPath},
            {"interface", call.sInterface},
            {"member", call.sMember},
            {"signature", call.arguments.sSignature},
            {"args", call.arguments.values},
            {"noReply", call.bNoReply}};
}

void CallLog::Add(const Call& call)
{
    const std::lock_guard<std::mutex> lock(mtxCalls);
    vecCalls.push_back(call);
    changed.notify_all();
}

std::vector<Call> CallLog::GetAll() const
{
    const std::lock_guard<std::mutex> lock(mtxCalls);
    return vecCalls;
}

void CallLog::Clear()
{
    const std::lock_guard<std::mutex> lock(mtxCalls);
    nCleared += vecCalls.size();
    vecCalls.clear();
}

std::optional<Call> CallLog::Wait(const std::function<bool(const Call&)>& predicate,
                                  std::chrono::milliseconds limit) const
{
    const auto end = std::chrono::steady_clock::now() + limit;
    std::unique_lock<std::mutex> lock(mtxCalls);
    for (std::size_t n = nCleared;; ++n) {
        if (!changed.wait_until(lock, end, [&] { return n < nCleared + vecCalls.size(); }))
            return std::nullopt;
        n = std::max(n, nCleared);
        if (predicate(vecCalls[n - nCleared]))
            return vecCalls[n - nCleared];
    }
}

} // namespace Tovra::Simulator
