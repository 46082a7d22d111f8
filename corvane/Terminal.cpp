#include "corvane/Terminal.h"

#include "corvane/Status.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

namespace Tovra::Corvane
{

namespace
{

/** A terminal that does not show what is typed. */
class SilentTerminal
{
public:
    explicit SilentTerminal(int nDescriptor) : nTerminal(nDescriptor)
    {
        tcgetattr(nTerminal, &before);
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(nTerminal, TCSAFLUSH, &silent);
    }

    ~SilentTerminal()
    {
        tcsetattr(nTerminal, TCSAFLUSH, &before);
        std::fputc('\n', stderr);
    }

    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

private:
    const int nTerminal;
    termios before = {};
};

class Closing
{
public:
    explicit Closing(int nOpened) : nFile(nOpened) {}
    ~Closing() { close(nFile); }

    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;

private:
    const int nFile;
};

// So that a growing text does not leave copies of a passphrase behind.
constexpr std::size_t nLongestLine = 4096;

constexpr const char* pTyped = "the passphrase from standard input";

} // namespace

bool HasColour()
{
    const char* const pNoColour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && !(pNoColour && *pNoColour);
}

// A byte at a time: nothing of a passphrase, and nothing after it, stays in a buffer.
bool ReadLine(Host& host, int nInput, const std::string& sWhat, std::string& sLine)
{
    sLine.clear();
    sLine.reserve(nLongestLine);
    char character = 0;
    ssize_t nRead = 0;
    for (;;) {
        if (!host.WaitForInput(nInput))
            throw Failure(Status::Interrupted, "interrupted");
        nRead = read(nInput, &character, 1);
        if (nRead < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (nRead <= 0 || character == '\n')
            break;
        if (sLine.size() < nLongestLine)
            sLine += character;
    }
    if (nRead < 0)
        throw Failure(Status::BadInput,
                      fmt::format("cannot read {}: {}", sWhat, std::strerror(errno)));
    if (!sLine.empty() && sLine.back() == '\r')
        sLine.pop_back();
    return nRead > 0 || !sLine.empty();
}

void AskPassphrase(Host& host, Secret& secret)
{
    // Silent before it asks: somebody may answer at once.
    const SilentTerminal silent(STDIN_FILENO);
    fmt::print(stderr, "Passphrase (empty: the one that is stored): ");
    std::fflush(stderr);
    ReadLine(host, STDIN_FILENO, pTyped, secret.sText);
}

void ReadPassphrase(Host& host, const std::string& sFile, Secret& secret)
{
    if (sFile == "-") {
        if (isatty(STDIN_FILENO))
            AskPassphrase(host, secret);
        else
            ReadLine(host, STDIN_FILENO, pTyped, secret.sText);
        return;
    }
    const std::string sWhat = "the passphrase from " + sFile;
    const int nFile = open(sFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (nFile < 0)
        throw Failure(Status::BadInput,
                      fmt::format("cannot read {}: {}", sWhat, std::strerror(errno)));
    const Closing closing(nFile);
    ReadLine(host, nFile, sWhat, secret.sText);
}

Progress::Progress(bool bQuiet) : bShown(!bQuiet), bInPlace(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress()
{
    End();
}

void Progress::End()
{
    if (bShown && bInPlace && !sLast.empty())
        fmt::print(stderr, "\r\x1b[K");
    std::fflush(stderr);
    sLast.clear();
}

void Progress::Show(const std::string& sText)
{
    if (!bShown || sText == sLast)
        return;
    sLast = sText;
    fmt::print(stderr, bInPlace ? "\r\x1b[K{} " : "{}\n", sText);
    std::fflush(stderr);
}

} // namespace Tovra::Corvane
