#include "tests/plugin/StackDump.h"

#include "tests/support/ProcessThreads.h"
#include "tests/support/Waiting.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <filesystem>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace Tovra::TestSupport
{

namespace
{

constexpr int nSignal = SIGUSR2;

std::atomic<bool> bDumped;

void DumpStack(int)
{
    std::array<void*, 64> frames = {};
    const int nFrames = backtrace(frames.data(), static_cast<int>(frames.size()));
    backtrace_symbols_fd(frames.data(), nFrames, STDERR_FILENO);
    bDumped = true;
}

void AskThread(pid_t nThread)
{
    std::fprintf(stderr, "thread %d:\n", static_cast<int>(nThread));
    bDumped = false;
    if (syscall(SYS_tgkill, getpid(), nThread, nSignal) == 0 &&
        !Eventually([] { return bDumped.load(); }, std::chrono::seconds(2)))
        std::fprintf(stderr, "does not answer\n");
}

} // namespace

void PrepareStackDump()
{
    std::array<void*, 1> frame = {};
    backtrace(frame.data(), 1); // loads what it needs, which a signal handler must not
    std::signal(nSignal, DumpStack);
}

void DumpStacksAndAbort(const char* pReason)
{
    std::fprintf(stderr, "%s; where the threads are:\n", pReason);
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
        AskThread(std::stoi(task.path().filename()));
    std::abort();
}

} // namespace Tovra::TestSupport
