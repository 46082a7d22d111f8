#pragma once

#include <thread>

namespace Tovra::Corvane
{

/**
 * Ctrl-C and requests to end, as something to wait for. The signals are blocked: a handler would
 * not do, since they are ignored while the plug-in runs its command.
 */
class Interrupts
{
public:
    /** Before any other thread starts, so that all of them have the signals blocked. */
    Interrupts();
    ~Interrupts();

    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    /** Readable when there was one. */
    int GetDescriptor() const { return nDescriptor; }

    /** Whether there was one since the last call. */
    bool Take();

    /** Whether one of those taken was more than Ctrl-C: the program is to end. */
    bool MustEnd() const { return bMustEnd; }

private:
    int nDescriptor;
    bool bMustEnd = false;
};

/** While it lives, Ctrl-C ends the process at once: for what cannot be waited for. */
class EndingOnInterrupt
{
public:
    explicit EndingOnInterrupt(const Interrupts& interrupts);
    ~EndingOnInterrupt();

    EndingOnInterrupt(const EndingOnInterrupt&) = delete;
    EndingOnInterrupt& operator=(const EndingOnInterrupt&) = delete;

private:
    const int nStop;
    std::thread waiting;
};

/**
 * Ends the process with this status after a while, if it has not ended by then: the plug-in's
 * thread cannot be stopped once the bus is gone, and the end of the process waits for it.
 * `fnTidyUp` is called before, on another thread.
 */
void EndSoon(int nStatus, void (*fnTidyUp)());

} // namespace Tovra::Corvane
