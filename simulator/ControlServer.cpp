#include "simulator/ControlServer.h"
#include "simulator/Control.h"
#include "simulator/Lines.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace Tovra::Simulator
{

namespace
{

sigset_t MakeSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

int CheckFile(int nResult, const std::string& sWhat)
{
    if (nResult < 0)
        throw Problem("cannot " + sWhat + ": " + std::generic_category().message(errno));
    return nResult;
}

} // namespace

ControlServer::ControlServer(Daemon& controlled, const std::string& sControl)
    : daemon(controlled),
      sSocket(sControl == "-" ? "" : sControl),
      bStandardInput(sControl == "-")
{
    const sigset_t signals = MakeSignals();
    nSignals = CheckFile(signalfd(-1, &signals, SFD_CLOEXEC), "watch signals");
    if (bStandardInput)
        mapTexts[STDIN_FILENO];
    if (!sSocket.empty())
        Listen();
}

ControlServer::~ControlServer()
{
    while (!mapTexts.empty())
        Close(mapTexts.begin()->first);
    close(nSignals);
    if (nListening < 0)
        return;
    close(nListening);
    unlink(sSocket.c_str());
}

void ControlServer::BlockSignals()
{
    const sigset_t signals = MakeSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

void ControlServer::Run()
{
    while (!bQuit) {
        std::vector<pollfd> vecWatched = {{nSignals, POLLIN, 0}, {nListening, POLLIN, 0}};
        for (const auto& [nFile, sText] : mapTexts)
            vecWatched.push_back({nFile, POLLIN, 0});
        if (poll(vecWatched.data(), vecWatched.size(), -1) < 0)
            continue;
        if (vecWatched[0].revents != 0)
            return;
        if (vecWatched[1].revents != 0)
            Accept();
        for (std::size_t n = 2; n < vecWatched.size() && !bQuit; ++n)
            if (vecWatched[n].revents != 0 && !Read(vecWatched[n].fd))
                Close(vecWatched[n].fd);
    }
}

void ControlServer::Listen()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (sSocket.size() >= sizeof(address.sun_path))
        throw Problem("the control socket's path is too long: " + sSocket);
    std::memcpy(address.sun_path, sSocket.c_str(), sSocket.size() + 1);
    nListening = CheckFile(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "make a socket");
    const auto* pAddress = reinterpret_cast<const sockaddr*>(&address);
    if (bind(nListening, pAddress, sizeof(address)) != 0) {
        const int nError = errno;
        close(std::exchange(nListening, -1));
        errno = nError;
        CheckFile(-1, "make the control socket " + sSocket);
    }
    CheckFile(listen(nListening, SOMAXCONN), "listen on the control socket");
}

void ControlServer::Accept()
{
    const int nFile = accept4(nListening, nullptr, nullptr, SOCK_CLOEXEC);
    if (nFile >= 0)
        mapTexts[nFile];
}

bool ControlServer::Read(int nFile)
{
    std::array<char, 65536> buffer = {};
    const ssize_t nRead = read(nFile, buffer.data(), buffer.size());
    if (nRead <= 0)
        return false;
    std::string& sText = mapTexts[nFile];
    sText.append(buffer.data(), static_cast<std::size_t>(nRead));
    return RunLines(nFile, sText);
}

bool ControlServer::RunLines(int nFile, std::string& sText)
{
    const int nOutput = nFile == STDIN_FILENO ? STDOUT_FILENO : nFile;
    for (std::size_t nEnd = sText.find('\n'); nEnd != std::string::npos; nEnd = sText.find('\n')) {
        const std::string sLine = sText.substr(0, nEnd);
        sText.erase(0, nEnd + 1);
        if (IsQuit(sLine)) {
            bQuit = true;
            WriteLine(nOutput, R"({"ok":true})");
            return false;
        }
        if (!sLine.empty())
            WriteLine(nOutput, RunCommandLine(daemon, sLine));
    }
    return true;
}

void ControlServer::Close(int nFile)
{
    mapTexts.erase(nFile);
    if (nFile == STDIN_FILENO)
        bQuit = true;
    else
        close(nFile);
}

} // namespace Tovra::Simulator
