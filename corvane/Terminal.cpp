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

// A byte at a time: nothing of a passphrase, and nothing after it, stays in a buffer.
void ReadLine(int nDescriptor, Secret& secret)
{
    secret.sText.reserve(256); // so that it does not leave copies behind as it grows
    char character = 0;
    while (read(nDescriptor, &character, 1) == 1 && character != '\n')
        secret.sText += character;
    if (!secret.sText.empty() && secret.sText.back() == '\r')
        secret.sText.pop_back();
}

} // namespace

bool HasColour()
{
    const char* const pNoColour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && !(pNoColour && *pNoColour);
}

void AskPassphrase(Host& host, const std::string& sPrompt, Secret& secret)
{
    fmt::print(stderr, "{}: ", sPrompt);
    std::fflush(stderr);
    const SilentTerminal silent(STDIN_FILENO);
    if (!host.WaitForInput(STDIN_FILENO))
        throw Failure(Status::Interrupted, "interrupted");
    ReadLine(STDIN_FILENO, secret);
}

void ReadPassphrase(const std::string& sFile, Secret& secret)
{
    if (sFile == "-") {
        ReadLine(STDIN_FILENO, secret);
        return;
    }
    const int nFile = open(sFile.c_str(), O_RDONLY | O_CLOEXEC);
    if (nFile < 0)
        throw Failure(Status::BadInput, fmt::format("cannot read the passphrase from {}: {}", sFile,
                                                    std::strerror(errno)));
    ReadLine(nFile, secret);
    close(nFile);
}

Progress::Progress(bool bQuiet) : bShown(!bQuiet), bInPlace(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress()
{
    if (bShown && bInPlace && !sLast.empty())
        fmt::print(stderr, "\r\x1b[K");
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
