#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace Tovra::Corvane
{

/** Something that the plug-in told the host. */
struct Event {
    enum class Kind { NetworksChanged, AddressesChanged, Ipc };

    Kind kind;
    unsigned nFlags = 0; ///< of NetworksChanged: bits of ConnMan::NetworkChangedFlags
    std::string sName;   ///< of Ipc: the event's name
};

/** Events from the plug-in's thread to the main one, with a descriptor to wait for them. */
class EventQueue
{
public:
    EventQueue();
    ~EventQueue();

    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /** Any thread. */
    void Put(Event event);

    /** The oldest event, if there is one. Any thread. */
    std::optional<Event> Take();

    /** Readable while there are events. */
    int GetDescriptor() const { return nDescriptor; }

private:
    const int nDescriptor;
    std::mutex mtxEvents;
    std::deque<Event> events;
};

} // namespace Tovra::Corvane
