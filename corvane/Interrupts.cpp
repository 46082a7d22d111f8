#include "corvane/Interrupts.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Tovra::Corvane
{

Interrupts::Interrupts()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, nSignal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    nDescriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (nDescriptor < 0)
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
}

Interrupts::~Interrupts()
{
    close(nDescriptor);
}

bool Interrupts::Take()
{
    signalfd_siginfo info = {};
    bool bTaken = false;
    while (read(nDescriptor, &info, sizeof(info)) == sizeof(info))
        bTaken = true;
    return bTaken;
}

void EndSoon(int nStatus)
{
    std::fflush(nullptr);
    std::thread([nStatus] {
        std::this_thread::sleep_for(std::chrono::seconds(2));
        _exit(nStatus);
    }).detach();
}

} // namespace Tovra::Corvane
