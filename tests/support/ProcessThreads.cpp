#include "tests/support/ProcessThreads.h"

#include <filesystem>
#include <fstream>
#include <sys/syscall.h>
#include <unistd.h>

namespace Tovra::TestSupport
{

namespace
{

const std::filesystem::path tasks = "/proc/self/task";

// A thread may end at any time: its files are then empty or gone.
std::string ReadFirstLine(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    std::string sLine;
    std::getline(stream, sLine);
    return sLine;
}

} // namespace

std::vector<pid_t> FindThreads(const std::string& sName)
{
    std::vector<pid_t> vecThreads;
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
        if (ReadFirstLine(task.path() / "comm") == sName)
            vecThreads.push_back(std::stoi(task.path().filename()));
    }
    return vecThreads;
}

pid_t GetThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

bool IsInCall(pid_t nThread, long nCall)
{
    const std::string sCall = ReadFirstLine(tasks / std::to_string(nThread) / "syscall");
    return sCall.rfind(std::to_string(nCall) + " ", 0) == 0;
}

long CountSleeps(pid_t nThread)
{
    const std::string sKey = "voluntary_ctxt_switches:";
    std::ifstream stream(tasks / std::to_string(nThread) / "status");
    for (std::string sLine; std::getline(stream, sLine);) {
        if (sLine.rfind(sKey, 0) == 0)
            return std::stol(sLine.substr(sKey.size()));
    }
    return 0;
}

std::chrono::nanoseconds GetProcessorTime(pid_t nThread)
{
    const std::string sTimes = ReadFirstLine(tasks / std::to_string(nThread) / "schedstat");
    return std::chrono::nanoseconds(sTimes.empty() ? 0 : std::stoll(sTimes));
}

} // namespace Tovra::TestSupport
