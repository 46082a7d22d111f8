#include "tests/plugin/Host.h"
#include "tests/plugin/PlugInLibrary.h"
#include "tests/support/ProcessThreads.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

/**
 * A host that does with the plug-in what its arguments say, in their order, and ends:
 *
 *   open, close       loads the library once more; lets go of the oldest that is left
 *   open-elsewhere    the same as open, on a thread that ends
 *   enter             asks for the object, which must be the one of before
 *   load, get, set    calls the object's operation, closed or not
 *   hear              waits until the observer has heard a good many words
 *   read-late         has the observer read once main() is left and the process waits for it
 *   exit-on-change    has the observer call exit(), and waits for the end
 *   return            leaves main()
 *   exit              calls exit() in main()
 *   exit-elsewhere    calls exit() on another thread
 *
 * The exit status is 0 unless something is not as it should be.
 */

using namespace Tovra;
using TestSupport::Host;
using TestSupport::PlugInLibrary;

namespace
{

std::atomic<bool> bExiting = false;
std::atomic<bool> bAsked = false;   // the observer, to read late
std::atomic<bool> bReadLate = true; // what was to be read late has been

class Run
{
public:
    void Do(const std::string& sStep) { mapSteps.at(sStep)(); }

private:
    static void Require(bool bTrue, const char* pWhat)
    {
        if (bTrue)
            return;
        std::fprintf(stderr, "not as it should be: %s\n", pWhat);
        std::_Exit(EXIT_FAILURE);
    }

    void Enter()
    {
        ITargetSpecific* const pGiven = libraries.back()->GetInterface(Host::Get().config);
        Require(pGiven && (!pPlugIn || pGiven == pPlugIn), "the object is the one of before");
        pPlugIn = pGiven;
    }

    static void Hear()
    {
        const auto hasHeard = [] { return Host::Get().GetEvents().size() >= 100; };
        Require(TestSupport::Eventually(hasHeard), "the observer hears of the storm");
    }

    // Reads while the process ends, when all of the plug-in's that can be destroyed is.
    void ReadLate()
    {
        std::atexit([] { bExiting = true; }); // before the plug-in's own: that came earlier
        bReadLate = false;
        Host::Get().SetOnChange([pReader = pPlugIn](unsigned) {
            if (bAsked.exchange(true))
                return;
            const auto isJoining = [] {
                return bExiting && TestSupport::IsInCall(getpid(), SYS_futex);
            };
            Require(TestSupport::Eventually(isJoining), "the process waits for the observer");
            Require(pReader->TargetSpecificGetNetworkConfiguration() == 1, "reading gives 1");
            bReadLate = true;
        });
        Require(TestSupport::Eventually([] { return bAsked.load(); }), "the observer is called");
    }

    [[noreturn]] static void ExitOnChange()
    {
        Host::Get().SetOnChange([](unsigned) { std::exit(EXIT_SUCCESS); });
        for (;;)
            pause();
    }

    static void ExitElsewhere()
    {
        std::thread([] { std::exit(EXIT_SUCCESS); }).join();
    }

    void Open() { libraries.push_back(std::make_unique<PlugInLibrary>()); }

    std::deque<std::unique_ptr<PlugInLibrary>> libraries;
    ITargetSpecific* pPlugIn = nullptr;
    const std::map<std::string, std::function<void()>> mapSteps = {
        {"open", [this] { Open(); }},
        {"open-elsewhere", [this] { std::thread([this] { Open(); }).join(); }},
        {"close", [this] { libraries.pop_front(); }},
        {"enter", [this] { Enter(); }},
        {"load", [this] { Require(pPlugIn->TargetSpecificLoad() == 0, "loading gives 0"); }},
        {"get",
         [this] {
             Require(pPlugIn->TargetSpecificGetNetworkConfiguration() == 1, "reading gives 1");
         }},
        {"set",
         [this] {
             Require(pPlugIn->TargetSpecificSetNetworkConfiguration() == 1, "applying gives 1");
         }},
        {"hear", Hear},
        {"read-late", [this] { ReadLate(); }},
        {"exit-on-change", ExitOnChange},
        {"return", [] {}},
        {"exit", [] { std::exit(EXIT_SUCCESS); }},
        {"exit-elsewhere", ExitElsewhere},
    };
};

} // namespace

int main(int argc, char** argv)
{
    // Registered before the library is there, so called after all of it.
    std::atexit([] {
        if (!bReadLate)
            std::_Exit(EXIT_FAILURE);
    });
    Run run;
    for (int n = 1; n < argc; ++n)
        run.Do(argv[n]);
    return EXIT_SUCCESS;
}
