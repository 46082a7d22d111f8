#include "Common/ConnMan.h"
#include "tests/support/Waiting.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

/**
 * A host that ends while ConnMan's signals come in. What its dispatch thread does by then is told
 * by the argument:
 *
 *   idle      nothing: it was never started
 *   started   whatever comes first
 *   busy      whatever comes after a few callbacks
 *   callback  a callback, which goes on and uses the client once that is gone
 *   command   the host's command, which is let go on once the client is gone
 *
 * It writes "exiting" when main() is left, and what the callback saw.
 */

using namespace Tovra;
using TestSupport::Eventually;

namespace
{

std::atomic<bool> bExiting = false;
std::atomic<int> nCalls = 0;

/**
 * Whether the process ends and waits for the dispatch thread: the client is gone by then. Uses no
 * static object, since those are being destroyed.
 */
bool IsJoining()
{
    std::string sCall; // of the main thread
    std::ifstream("/proc/self/syscall") >> sCall;
    return bExiting && sCall == std::to_string(SYS_futex);
}

void Say(const std::string& sText)
{
    std::printf("%s\n", sText.c_str());
    std::fflush(stdout);
}

bool Start()
{
    globalConnManThread.thread.RunIfNotRunning();
    return true;
}

bool StartAndAwaitCallbacks(int nAwaited, const ConnMan::ChangedFunction& fnOnChange)
{
    globalConnManThread.connMan.SetOnNetworksChanged(fnOnChange, 0xFFFFFFFF);
    return Start() && Eventually([&] { return nCalls >= nAwaited; });
}

void GoOnAfterTheClient(unsigned int word)
{
    if (word & ConnMan::StrengthChanged || nCalls++ > 0)
        return;
    const bool bJoining = Eventually(IsJoining);
    const std::size_t nRecords = globalConnManThread.connMan.GetNetworks().size() +
                                 globalConnManThread.connMan.GetTechnologies().size();
    Say(bJoining && nRecords > 0 ? "the callback had its lists" : "the callback had nothing");
}

// The command tells through one named pipe that it runs, and waits at the other.
bool StartAndAwaitCommand()
{
    setenv("WAIT_FOR_RELEASE", "1", 1);
    Start();
    std::string sLine;
    std::ifstream entered("/opt/entered");
    std::getline(entered, sLine);
    std::thread([] {
        if (Eventually(IsJoining))
            std::ofstream("/opt/release") << "go on\n";
    }).detach();
    return sLine == "entered";
}

bool StartAs(const std::string& sWhat)
{
    if (sWhat == "idle")
        return true;
    if (sWhat == "started")
        return Start();
    if (sWhat == "busy")
        return StartAndAwaitCallbacks(5, [](unsigned int) { ++nCalls; });
    if (sWhat == "callback")
        return StartAndAwaitCallbacks(1, GoOnAfterTheClient);
    return sWhat == "command" && StartAndAwaitCommand();
}

} // namespace

int main(int argc, char** argv)
{
    alarm(60); // what hangs ends by a signal
    std::atexit([] { bExiting = true; });
    const bool bStarted = argc == 2 && StartAs(argv[1]);
    Say(bStarted ? "exiting" : "never started");
    return bStarted ? EXIT_SUCCESS : EXIT_FAILURE;
}
