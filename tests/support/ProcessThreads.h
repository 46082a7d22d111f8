#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Tovra::TestSupport
{

/** The threads of this process that bear the name, by their system ids. */
std::vector<pid_t> FindThreads(const std::string& sName);

/** The calling thread. */
pid_t GetThread();

/** Whether a thread of this process is inside the system call: SYS_poll, SYS_futex. */
bool IsInCall(pid_t nThread, long nCall);

/** How often a thread of this process has gone to sleep. */
long CountSleeps(pid_t nThread);

/** The processor time that a thread of this process has used. */
std::chrono::nanoseconds GetProcessorTime(pid_t nThread);

} // namespace Tovra::TestSupport
