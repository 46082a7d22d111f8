#include "tests/support/Waiting.h"

#include <thread>

namespace Tovra::TestSupport
{

bool Eventually(const std::function<bool()>& predicate, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!predicate()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace Tovra::TestSupport
