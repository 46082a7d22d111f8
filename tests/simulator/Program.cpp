#include "tests/simulator/Program.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace Tovra::Simulator
{

namespace
{

using Pipe = std::array<int, 2>;

Pipe MakePipe()
{
    Pipe ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("cannot make a pipe");
    return ends;
}

[[noreturn]] void Execute(const std::vector<std::string>& vecArguments, const Pipe& input,
                          const Pipe& output, const Pipe& error)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    dup2(error[1], STDERR_FILENO);
    std::vector<const char*> vecWords = {CONNMAN_SIM};
    for (const std::string& sArgument : vecArguments)
        vecWords.push_back(sArgument.c_str());
    vecWords.push_back(nullptr);
    execv(CONNMAN_SIM, const_cast<char**>(vecWords.data()));
    _exit(127);
}

} // namespace

Program::Program(const std::vector<std::string>& vecArguments)
{
    const Pipe input = MakePipe();
    const Pipe output = MakePipe();
    const Pipe error = MakePipe();
    nProcess = fork();
    if (nProcess == 0)
        Execute(vecArguments, input, output, error);
    close(input[0]);
    close(output[1]);
    close(error[1]);
    nInput = input[1];
    nOutput = output[0];
    nError = error[0];
}

Program::~Program()
{
    if (nProcess > 0) {
        kill(nProcess, SIGKILL);
        waitpid(nProcess, nullptr, 0);
    }
    CloseInput();
    close(nOutput);
    close(nError);
}

void Program::Write(const std::string& sLine) const
{
    const std::string sText = sLine + "\n";
    if (write(nInput, sText.data(), sText.size()) != static_cast<ssize_t>(sText.size()))
        throw std::runtime_error("connman-sim reads no more");
}

std::string Program::ReadLine(int nFile)
{
    std::string sLine;
    char nByte = 0;
    while (read(nFile, &nByte, 1) == 1 && nByte != '\n')
        sLine += nByte;
    return sLine;
}

void Program::CloseInput()
{
    if (nInput >= 0)
        close(std::exchange(nInput, -1));
}

void Program::Terminate() const
{
    kill(nProcess, SIGTERM);
}

int Program::Wait()
{
    int nStatus = 0;
    waitpid(std::exchange(nProcess, -1), &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}

} // namespace Tovra::Simulator
