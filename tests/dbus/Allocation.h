#pragma once

#include <functional>

/** For a program with an operator new of its own, which Allocation.cpp gives it. Any thread. */
namespace Tovra::TestSupport
{

/** How often the action allocates on the calling thread. libdbus allocates by other means. */
long CountAllocations(const std::function<void()>& fnAction);

/**
 * Runs the action with the first allocation failing, then with the second, and so on until it
 * needs no more of them; calls `fnCheck` after each failure. How often it failed.
 */
long FailEachAllocation(const std::function<void()>& fnAction,
                        const std::function<void()>& fnCheck);

} // namespace Tovra::TestSupport
