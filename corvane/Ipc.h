#pragma once

#include <optional>
#include <string>

/**
 * Events from the command that the plug-in runs to every running program of the same user, over
 * local sockets in a directory that only this user can enter.
 */
namespace Tovra::Corvane::Ipc
{

/** Whether it is one of the three events that the plug-in sends. */
bool IsEvent(const std::string& sEvent);

/**
 * Sends an event to everybody who listens; never waits. Returns how many received it. Throws
 * Failure for an unknown event or an unusable directory.
 */
int Send(const std::string& sEvent);

/** One listener, for as long as it lives. */
class Receiver
{
public:
    /** Throws Failure when the directory cannot be used. */
    Receiver();
    ~Receiver();

    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /** Is not found by anybody any more. Any thread. */
    void Withdraw() const;

    /** Readable when there is an event. */
    int GetDescriptor() const { return nSocket; }

    std::optional<std::string> Take();

private:
    std::string sPath;
    int nSocket = -1;
};

} // namespace Tovra::Corvane::Ipc
