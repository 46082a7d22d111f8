#pragma once

#include <cstdio>

namespace Tovra::TestSupport
{

// Where every count is dear: under the thread sanitizer, and where lines and branches are counted,
// which after a few rounds are the same ones.
#if defined(__SANITIZE_THREAD__) || defined(CORVANE_COUNTING)
constexpr bool bSlow = true;
#elif defined(__has_feature)
constexpr bool bSlow = __has_feature(thread_sanitizer);
#else
constexpr bool bSlow = false;
#endif

/** How much of a count to run: all of it only where minutes do not matter. */
constexpr int ReduceCount([[maybe_unused]] int nFull, [[maybe_unused]] int nPlain,
                          [[maybe_unused]] int nSlow)
{
#ifdef CORVANE_LONG
    return nFull;
#else
    return bSlow ? nSlow : nPlain;
#endif
}

/** For the report of a whole run. */
inline void PrintCount(const char* pWhat, int nRan, int nFull)
{
    std::printf("[ COUNT    ] %s %d of %d\n", pWhat, nRan, nFull);
}

} // namespace Tovra::TestSupport
