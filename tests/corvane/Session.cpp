#include "tests/corvane/Session.h"

#include "tests/support/ProgramStart.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace Tovra::TestSupport
{

namespace
{

using Clock = std::chrono::steady_clock;
using Pipe = std::array<int, 2>;

Pipe MakePipe()
{
    Pipe ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("cannot make a pipe");
    return ends;
}

} // namespace

Session::Session(std::vector<std::string> vecCommand, Ends ends,
                 const std::map<std::string, std::string>& mapEnvironment)
{
    std::vector<std::string> vecVariables = MakeEnvironment(mapEnvironment);
    const std::vector<char*> vecArguments = Pointers(vecCommand);
    const std::vector<char*> vecEnvironment = Pointers(vecVariables);
    const bool bTerminal = ends == Ends::Terminal;
    const Pipe input = MakePipe();
    const Pipe out = MakePipe();
    const Pipe error = MakePipe();
    signal(SIGPIPE, SIG_IGN); // a program that ends early is no end of the test
    winsize size = {};
    size.ws_row = 50;
    size.ws_col = 200;
    int nTerminal = -1;
    // From here to the exec nothing may allocate.
    nProcess = bTerminal ? forkpty(&nTerminal, nullptr, nullptr, &size) : fork();
    if (nProcess < 0)
        throw std::runtime_error("cannot fork");
    if (nProcess == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        signal(SIGPIPE, SIG_DFL);
        if (!bTerminal) {
            dup2(input[0], STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            dup2(error[1], STDERR_FILENO);
        }
        execve(vecArguments.front(), vecArguments.data(), vecEnvironment.data());
        _exit(127);
    }
    close(input[0]);
    close(out[1]);
    close(error[1]);
    nInput = input[1];
    output.nFile = out[0];
    errors.nFile = error[0];
    if (!bTerminal)
        return;
    close(std::exchange(nInput, nTerminal));
    errors.Close();
    close(std::exchange(output.nFile, fcntl(nTerminal, F_DUPFD_CLOEXEC, 0)));
    fcntl(nTerminal, F_SETFD, FD_CLOEXEC);
}

Session::~Session()
{
    if (!HasEnded()) {
        kill(nProcess, SIGKILL);
        waitpid(nProcess, nullptr, 0);
    }
    CloseInput();
    output.Close();
    errors.Close();
}

void Session::Stream::Close()
{
    if (nFile >= 0)
        close(std::exchange(nFile, -1));
}

void Session::Write(const std::string& sText) const
{
    if (write(nInput, sText.data(), sText.size()) != static_cast<ssize_t>(sText.size()))
        throw std::runtime_error("the program reads no more");
}

void Session::CloseInput()
{
    if (nInput >= 0)
        close(std::exchange(nInput, -1));
}

void Session::CloseOutput()
{
    output.Close();
}

void Session::Signal(int nSignal) const
{
    kill(nProcess, nSignal);
}

bool Session::ShowsWhatIsTyped() const
{
    termios settings = {};
    if (tcgetattr(nInput, &settings) != 0)
        throw std::runtime_error("cannot look at the terminal");
    return (settings.c_lflag & ECHO) != 0 && (settings.c_lflag & ICANON) != 0;
}

bool Session::HasEnded()
{
    if (nProcess > 0 && waitpid(nProcess, &nStatus, WNOHANG) == nProcess)
        nProcess = -1;
    return nProcess < 0;
}

// Returns whether there is more to come.
bool Session::Read(Clock::time_point until)
{
    std::array<pollfd, 2> descriptors = {pollfd{output.nFile, POLLIN, 0},
                                         pollfd{errors.nFile, POLLIN, 0}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    if (left < 0 || poll(descriptors.data(), descriptors.size(), static_cast<int>(left)) == 0)
        return false;
    std::array<char, 4096> text = {};
    for (std::size_t nStream = 0; nStream < 2; ++nStream) {
        Stream& stream = nStream == 0 ? output : errors;
        if (descriptors[nStream].revents == 0)
            continue;
        const ssize_t nRead = read(stream.nFile, text.data(), text.size());
        if (nRead > 0)
            stream.sText.append(text.data(), static_cast<std::size_t>(nRead));
        else if (nRead == 0 || errno != EINTR)
            stream.Close(); // of a terminal, an error tells its end
    }
    return output.nFile >= 0 || errors.nFile >= 0;
}

bool Session::Await(Stream& stream, const std::string& sText)
{
    const auto until = Clock::now() + deadline;
    for (;;) {
        const std::size_t nFound = stream.sText.find(sText, stream.nAwaited);
        if (nFound != std::string::npos) {
            stream.nAwaited = nFound + sText.size();
            return true;
        }
        if (stream.nFile < 0 || !(Read(until) || stream.nFile < 0))
            return false;
    }
}

bool Session::AwaitOutput(const std::string& sText)
{
    return Await(output, sText);
}

bool Session::AwaitErrors(const std::string& sText)
{
    return Await(errors, sText);
}

int Session::AwaitExit(std::chrono::milliseconds limit)
{
    const auto until = Clock::now() + limit;
    // What is left running by the program may hold its output open.
    while (!HasEnded() && Clock::now() < until)
        Read(std::min(until, Clock::now() + std::chrono::milliseconds(10)));
    while (Read(Clock::now())) {
    }
    return HasEnded() && WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -1;
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    return stream << "exit status " << outcome.nExit << "\n---- output\n"
                  << outcome.sOutput << "---- errors\n"
                  << outcome.sErrors << "----";
}

} // namespace Tovra::TestSupport
