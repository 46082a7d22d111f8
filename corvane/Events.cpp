#include "corvane/Events.h"

#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace Tovra::Corvane
{

EventQueue::EventQueue() : nDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE))
{
    if (nDescriptor < 0)
        throw std::system_error(errno, std::generic_category(), "cannot make an event queue");
}

EventQueue::~EventQueue()
{
    close(nDescriptor);
}

void EventQueue::Put(Event event)
{
    const std::lock_guard<std::mutex> lock(mtxEvents);
    events.push_back(std::move(event));
    eventfd_write(nDescriptor, 1);
}

std::optional<Event> EventQueue::Take()
{
    const std::lock_guard<std::mutex> lock(mtxEvents);
    if (events.empty())
        return std::nullopt;
    eventfd_t nCount = 0;
    eventfd_read(nDescriptor, &nCount);
    std::optional<Event> event = std::move(events.front());
    events.pop_front();
    return event;
}

} // namespace Tovra::Corvane
