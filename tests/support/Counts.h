#pragma once

#include <cstdio>

namespace Tovra::TestSupport
{

#if defined(__SANITIZE_THREAD__)
constexpr bool bThreadSanitizer = true;
#elif defined(__has_feature)
constexpr bool bThreadSanitizer = __has_feature(thread_sanitizer);
#else
constexpr bool bThreadSanitizer = false;
#endif

/** How much of a count to run: all of it only where minutes do not matter. */
constexpr int ReduceCount([[maybe_unused]] int nFull, [[maybe_unused]] int nPlain,
                          [[maybe_unused]] int nThreadSanitizer)
{
#ifdef CORVANE_LONG
    return nFull;
#else
    return bThreadSanitizer ? nThreadSanitizer : nPlain;
#endif
}

/** For the report of a whole run. */
inline void PrintCount(const char* pWhat, int nRan, int nFull)
{
    std::printf("[ COUNT    ] %s %d of %d\n", pWhat, nRan, nFull);
}

} // namespace Tovra::TestSupport
