#include "tests/support/PrivateMounts.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

namespace Tovra::TestSupport
{

namespace
{

// Holds this process and the namespace it leaves, so that a variable that was inherited from
// anywhere never has anything mounted outside.
constexpr const char* pMarker = "CORVANE_TEST_PRIVATE_MOUNTS";

[[noreturn]] void Fail(const char* pWhat)
{
    std::fprintf(stderr, "cannot %s for a private /opt: %s; run as root or allow user namespaces\n",
                 pWhat, std::strerror(errno));
    std::exit(EXIT_FAILURE);
}

std::string ReadLink(const char* pLink)
{
    std::array<char, PATH_MAX> text = {};
    const ssize_t nLength = readlink(pLink, text.data(), text.size());
    if (nLength < 0)
        Fail("find out where the process is");
    return std::string(text.data(), static_cast<std::size_t>(nLength));
}

} // namespace

void EnterPrivateMounts(char** pArguments)
{
    const std::string sProcess = std::to_string(getpid()) + " left ";
    const std::string sNamespace = ReadLink("/proc/self/ns/mnt");
    const char* pMark = std::getenv(pMarker);
    const std::string sMark = pMark ? pMark : "";
    if (sMark.rfind(sProcess, 0) == 0 && sMark != sProcess + sNamespace) {
        if (mount("none", "/opt", "tmpfs", 0, nullptr) != 0)
            Fail("mount a tmpfs");
        return;
    }

    setenv(pMarker, (sProcess + sNamespace).c_str(), 1);
    const std::string sProgram = ReadLink("/proc/self/exe"); // not after unshare has taken over
    std::vector<const char*> vecCommand = {"unshare", "--mount", "--propagation", "private"};
    if (geteuid() != 0)
        vecCommand.insert(vecCommand.end(), {"--user", "--map-root-user"});
    vecCommand.insert(vecCommand.end(), {"--", sProgram.c_str()});
    for (char** pArgument = pArguments + 1; *pArgument; ++pArgument)
        vecCommand.push_back(*pArgument);
    vecCommand.push_back(nullptr);
    execvp("unshare", const_cast<char**>(vecCommand.data()));
    Fail("run unshare");
}

} // namespace Tovra::TestSupport
