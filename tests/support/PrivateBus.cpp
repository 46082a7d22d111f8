#include "tests/support/PrivateBus.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tovra::TestSupport
{

namespace
{

constexpr const char* pConfiguration = R"(<busconfig>
  <type>system</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*" eavesdrop="true"/>
    <allow own="*"/>
  </policy>
)";

// The daemon reads its configuration from a file that has no name and so leaves nothing behind.
int WriteConfiguration(const std::string& sText)
{
    const int nFile = memfd_create("busconfig", 0);
    if (nFile < 0 || write(nFile, sText.data(), sText.size()) != static_cast<ssize_t>(sText.size()))
        throw std::runtime_error("cannot write the configuration of a private bus");
    return nFile;
}

[[noreturn]] void RunDaemon(int nConfiguration, int nAddressPipe)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM); // at which it removes its socket
    const std::string sConfiguration =
        "--config-file=/proc/self/fd/" + std::to_string(nConfiguration);
    const std::string sAddress = "--print-address=" + std::to_string(nAddressPipe);
    execlp("dbus-daemon", "dbus-daemon", sConfiguration.c_str(), sAddress.c_str(), "--nofork",
           "--nopidfile", "--nosyslog", nullptr);
    _exit(127);
}

std::string ReadLine(int nPipe)
{
    std::string sLine;
    char nByte = 0;
    while (read(nPipe, &nByte, 1) == 1 && nByte != '\n')
        sLine += nByte;
    return sLine;
}

} // namespace

PrivateBus::PrivateBus(const std::string& sMoreConfiguration)
{
    const int nConfiguration =
        WriteConfiguration(pConfiguration + sMoreConfiguration + "</busconfig>\n");
    std::array<int, 2> pipeEnds = {};
    if (pipe(pipeEnds.data()) != 0)
        throw std::runtime_error("cannot make a pipe for a private bus");

    nProcess = fork();
    if (nProcess == 0)
        RunDaemon(nConfiguration, pipeEnds[1]);
    close(pipeEnds[1]);
    close(nConfiguration);
    sAddress = ReadLine(pipeEnds[0]);
    close(pipeEnds[0]);
    if (sAddress.empty()) {
        Stop();
        throw std::runtime_error("dbus-daemon did not start: is it installed?");
    }
}

PrivateBus::~PrivateBus()
{
    Stop();
}

void PrivateBus::Stop()
{
    if (nProcess <= 0)
        return;
    kill(nProcess, SIGTERM);
    kill(nProcess, SIGCONT);
    waitpid(nProcess, nullptr, 0);
    nProcess = -1;
}

void PrivateBus::BecomeSystemBus() const
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", sAddress.c_str(), 1);
}

} // namespace Tovra::TestSupport
