#include "benchmarks/Rounds.h"

#include <algorithm>
#include <cstdlib>

namespace Tovra::Benchmarks
{

bool IsSmoke()
{
    return std::getenv("CORVANE_SMOKE") != nullptr;
}

bool IsHeld()
{
#ifdef NDEBUG
    return !IsSmoke();
#else
    return false;
#endif
}

std::size_t Rounds(std::size_t nRounds)
{
    return IsSmoke() ? 2 : nRounds;
}

double GetMedian(std::vector<double> vecTimes)
{
    const auto middle = vecTimes.begin() + static_cast<std::ptrdiff_t>(vecTimes.size() / 2);
    std::nth_element(vecTimes.begin(), middle, vecTimes.end());
    return *middle;
}

double GetWorst(const std::vector<double>& vecTimes)
{
    return *std::max_element(vecTimes.begin(), vecTimes.end());
}

} // namespace Tovra::Benchmarks
