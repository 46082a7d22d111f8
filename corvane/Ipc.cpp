#include "corvane/Ipc.h"

#include "corvane/Status.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tovra::Corvane::Ipc
{

namespace
{

constexpr std::array<const char*, 3> events = {
    "netcfg-dhcp-address-acquired",
    "netcfg-static-address-configured",
    "netcfg-autoip-address-acquired",
};

std::string GetDirectory()
{
    const char* const pRuntime = std::getenv("XDG_RUNTIME_DIR");
    if (pRuntime && *pRuntime)
        return std::string(pRuntime) + "/corvane";
    const std::string sUser = std::to_string(geteuid());
    return geteuid() == 0 ? "/run/corvane" : "/tmp/corvane-" + sUser;
}

// The directory may lie where others can write: nobody else's will do.
void RequirePrivate(const std::string& sDirectory)
{
    struct stat status = {};
    if (lstat(sDirectory.c_str(), &status) != 0)
        throw Failure(Status::Error, "cannot use " + sDirectory + ": " + std::strerror(errno) +
                                         "; XDG_RUNTIME_DIR names a directory of yours");
    if (!S_ISDIR(status.st_mode) || status.st_uid != geteuid() || (status.st_mode & 077) != 0)
        throw Failure(Status::Error, "cannot use " + sDirectory +
                                         ": it must be a directory that only you can enter");
}

sockaddr_un MakeAddress(const std::string& sPath)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (sPath.size() >= sizeof(address.sun_path))
        throw Failure(Status::Error, "cannot use " + sPath + ": the path is too long for a socket");
    std::memcpy(address.sun_path, sPath.c_str(), sPath.size() + 1);
    return address;
}

int MakeSocket()
{
    const int nSocket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (nSocket < 0)
        throw Failure(Status::Error, std::string("cannot make a socket: ") + std::strerror(errno));
    return nSocket;
}

bool SendTo(int nSocket, const std::string& sPath, const std::string& sEvent)
{
    const sockaddr_un address = MakeAddress(sPath);
    if (sendto(nSocket, sEvent.data(), sEvent.size(), MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr*>(&address), sizeof(address)) >= 0)
        return true;
    if (errno == ECONNREFUSED)
        unlink(sPath.c_str()); // its owner ended without tidying up
    return false;
}

} // namespace

bool IsEvent(const std::string& sEvent)
{
    for (const char* pEvent : events) {
        if (sEvent == pEvent)
            return true;
    }
    return false;
}

int Send(const std::string& sEvent)
{
    if (!IsEvent(sEvent)) {
        std::string sKnown;
        for (const char* pEvent : events)
            sKnown += std::string(sKnown.empty() ? "" : ", ") + pEvent;
        throw Failure(Status::BadInput, "unknown event '" + sEvent + "'; the events are " + sKnown);
    }
    const std::string sDirectory = GetDirectory();
    std::error_code error;
    std::filesystem::directory_iterator entries(sDirectory, error);
    if (error)
        return 0; // nobody has listened yet
    RequirePrivate(sDirectory);

    const int nSocket = MakeSocket();
    int nReceivers = 0;
    for (const auto& entry : entries)
        nReceivers += SendTo(nSocket, entry.path().string(), sEvent) ? 1 : 0;
    close(nSocket);
    return nReceivers;
}

Receiver::Receiver()
{
    const std::string sDirectory = GetDirectory();
    mkdir(sDirectory.c_str(), 0700);
    RequirePrivate(sDirectory);
    sPath = sDirectory + "/" + std::to_string(getpid());
    const sockaddr_un address = MakeAddress(sPath);
    nSocket = MakeSocket();
    unlink(sPath.c_str()); // of an earlier process with this number
    if (bind(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const std::string sReason = std::strerror(errno);
        close(nSocket);
        throw Failure(Status::Error, "cannot listen on " + sPath + ": " + sReason);
    }
}

Receiver::~Receiver()
{
    Withdraw();
    close(nSocket);
}

void Receiver::Withdraw() const
{
    unlink(sPath.c_str());
}

std::optional<std::string> Receiver::Take()
{
    std::array<char, 128> text = {};
    const ssize_t nLength = recv(nSocket, text.data(), text.size(), 0);
    if (nLength < 0)
        return std::nullopt;
    return std::string(text.data(), static_cast<std::size_t>(nLength));
}

} // namespace Tovra::Corvane::Ipc
