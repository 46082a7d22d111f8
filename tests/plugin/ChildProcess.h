#pragma once

#include "tests/support/Waiting.h"

#include <map>
#include <ostream>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Tovra::TestSupport
{

/** How a process ended. */
struct ProcessEnd {
    int nExit = -1;     ///< of one that exited
    int nSignal = 0;    ///< of one that was killed
    bool bLate = false; ///< it had to be killed: the time was over

    bool IsSuccess() const { return nExit == 0 && nSignal == 0 && !bLate; }
};

std::ostream& operator<<(std::ostream& stream, const ProcessEnd& end);

/** A process that runs a program; it ends with this object at the latest. */
class ChildProcess
{
public:
    /** `vecCommand`: the program's path, then its arguments. Throws std::runtime_error. */
    explicit ChildProcess(std::vector<std::string> vecCommand,
                          const std::map<std::string, std::string>& mapEnvironment = {});
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t GetId() const { return nProcess; }

    /** Whether it is over; waits for nothing. */
    bool HasEnded();

    /** Waits for the end, and kills the process when the time is over. */
    ProcessEnd Await(std::chrono::milliseconds limit = deadline);

private:
    pid_t nProcess = -1;
    bool bEnded = false;
    int nStatus = 0;
};

/** Runs a program to its end; gives what it wrote to its standard output. */
std::string ReadOutput(const std::string& sShellCommand);

} // namespace Tovra::TestSupport
