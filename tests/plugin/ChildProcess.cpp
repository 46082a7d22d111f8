#include "tests/plugin/ChildProcess.h"

#include "tests/support/ProgramStart.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tovra::TestSupport
{

std::ostream& operator<<(std::ostream& stream, const ProcessEnd& end)
{
    if (end.bLate)
        return stream << "did not end in time";
    if (end.nSignal != 0)
        return stream << "killed by signal " << end.nSignal;
    return stream << "exit status " << end.nExit;
}

ChildProcess::ChildProcess(std::vector<std::string> vecCommand,
                           const std::map<std::string, std::string>& mapEnvironment)
{
    std::vector<std::string> vecVariables = MakeEnvironment(mapEnvironment);
    const std::vector<char*> vecArguments = Pointers(vecCommand);
    const std::vector<char*> vecEnvironment = Pointers(vecVariables);
    nProcess = fork(); // from here to the exec nothing may allocate
    if (nProcess < 0)
        throw std::runtime_error("cannot fork");
    if (nProcess == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        execve(vecArguments.front(), vecArguments.data(), vecEnvironment.data());
        _exit(127);
    }
}

ChildProcess::~ChildProcess()
{
    if (HasEnded())
        return;
    kill(nProcess, SIGKILL);
    waitpid(nProcess, nullptr, 0);
}

bool ChildProcess::HasEnded()
{
    if (!bEnded)
        bEnded = waitpid(nProcess, &nStatus, WNOHANG) == nProcess;
    return bEnded;
}

ProcessEnd ChildProcess::Await(std::chrono::milliseconds limit)
{
    ProcessEnd end;
    if (!Eventually([this] { return HasEnded(); }, limit)) {
        end.bLate = true;
        return end;
    }
    if (WIFEXITED(nStatus))
        end.nExit = WEXITSTATUS(nStatus);
    else
        end.nSignal = WTERMSIG(nStatus);
    return end;
}

std::string ReadOutput(const std::string& sShellCommand)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pPipe(popen(sShellCommand.c_str(), "r"), pclose);
    if (!pPipe)
        throw std::runtime_error("cannot run " + sShellCommand);
    std::string sOutput;
    std::array<char, 4096> buffer = {};
    while (const std::size_t nRead = fread(buffer.data(), 1, buffer.size(), pPipe.get()))
        sOutput.append(buffer.data(), nRead);
    return sOutput;
}

} // namespace Tovra::TestSupport
