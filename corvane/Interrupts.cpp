#include "corvane/Interrupts.h"

#include "corvane/Status.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/eventfd.h>
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
    while (read(nDescriptor, &info, sizeof(info)) == sizeof(info)) {
        bTaken = true;
        bMustEnd = bMustEnd || info.ssi_signo != SIGINT;
    }
    return bTaken;
}

EndingOnInterrupt::EndingOnInterrupt(const Interrupts& interrupts)
    : nStop(eventfd(0, EFD_CLOEXEC)),
      waiting([this, nInterrupts = interrupts.GetDescriptor()] {
          std::array<pollfd, 2> descriptors = {pollfd{nInterrupts, POLLIN, 0},
                                               pollfd{nStop, POLLIN, 0}};
          while (poll(descriptors.data(), descriptors.size(), -1) < 0) {
          }
          if (descriptors[0].revents != 0)
              _exit(static_cast<int>(Status::Interrupted));
      })
{
}

EndingOnInterrupt::~EndingOnInterrupt()
{
    eventfd_write(nStop, 1);
    waiting.join();
    close(nStop);
}

void EndSoon(int nStatus, void (*fnTidyUp)())
{
    std::fflush(nullptr);
    std::thread([nStatus, fnTidyUp] {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        fnTidyUp();
        _exit(nStatus);
    }).detach();
}

} // namespace Tovra::Corvane
