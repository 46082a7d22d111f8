#include "tests/dbus/Allocation.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local long nAllocations = 0;
thread_local long nUntilFailure = -1; ///< how many more succeed; negative: all

} // namespace

// In a file of their own: a compiler that sees only one of a pair where it is used takes the two
// for a mismatch.

void* operator new(std::size_t nSize)
{
    ++nAllocations;
    if (nUntilFailure == 0)
        throw std::bad_alloc();
    if (nUntilFailure > 0)
        --nUntilFailure;
    void* const pBytes = std::malloc(nSize);
    if (!pBytes)
        throw std::bad_alloc();
    return pBytes;
}

void operator delete(void* pBytes) noexcept
{
    std::free(pBytes);
}

void operator delete(void* pBytes, std::size_t) noexcept
{
    std::free(pBytes);
}

namespace Tovra::TestSupport
{

long CountAllocations(const std::function<void()>& fnAction)
{
    const long nBefore = nAllocations;
    fnAction();
    return nAllocations - nBefore;
}

long FailEachAllocation(const std::function<void()>& fnAction, const std::function<void()>& fnCheck)
{
    for (long nFailure = 0;; ++nFailure) {
        bool bFailed = false;
        nUntilFailure = nFailure;
        try {
            fnAction();
        } catch (const std::bad_alloc&) {
            bFailed = true;
        }
        nUntilFailure = -1;
        if (!bFailed)
            return nFailure;
        fnCheck();
    }
}

} // namespace Tovra::TestSupport
