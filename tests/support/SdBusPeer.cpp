#include "tests/support/SdBusPeer.h"

#include "tests/support/SdBusText.h"

#include <array>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Tovra::TestSupport
{

namespace
{

std::string ToText(const char* pText)
{
    return pText ? pText : "";
}

// Taken from the message while it is current: sd-bus frees it after the callback.
PeerMessage Record(sd_bus_message* pMessage)
{
    return {ToText(sd_bus_message_get_path(pMessage)),
            ToText(sd_bus_message_get_interface(pMessage)),
            ToText(sd_bus_message_get_member(pMessage)),
            ToText(sd_bus_message_get_signature(pMessage, true)), DescribeArguments(pMessage)};
}

sd_bus* Connect(const std::string& sAddress)
{
    sd_bus* pBus = nullptr;
    if (sd_bus_new(&pBus) < 0 || sd_bus_set_address(pBus, sAddress.c_str()) < 0 ||
        sd_bus_set_bus_client(pBus, true) < 0 || sd_bus_negotiate_fds(pBus, true) < 0 ||
        sd_bus_start(pBus) < 0) {
        sd_bus_unref(pBus);
        throw std::runtime_error("sd-bus cannot connect to the private bus");
    }
    return pBus;
}

} // namespace

SdBusPeer::SdBusPeer(const std::string& sAddress) : pConnection(Connect(sAddress))
{
    const char* pName = nullptr; // asking for it waits for the bus's welcome
    if (sd_bus_get_unique_name(pConnection.get(), &pName) < 0 ||
        sd_bus_add_filter(pConnection.get(), nullptr, OnMessage, this) < 0)
        throw std::runtime_error("sd-bus was not welcomed by the private bus");
    sName = pName;
    nStop = eventfd(0, EFD_CLOEXEC);
    if (nStop < 0)
        throw std::runtime_error("no eventfd for the sd-bus peer");
    thread = std::thread(&SdBusPeer::Run, this);
}

SdBusPeer::~SdBusPeer()
{
    eventfd_write(nStop, 1);
    thread.join();
    close(nStop);
}

void SdBusPeer::AnswerWith(Fill fnFill)
{
    const std::lock_guard<std::mutex> lock(mtxFill);
    fnAnswer = std::move(fnFill);
}

int SdBusPeer::OnMessage(sd_bus_message* pMessage, void* pPeer, sd_bus_error*)
{
    auto& peer = *static_cast<SdBusPeer*>(pPeer);
    const bool bCall = sd_bus_message_is_method_call(pMessage, nullptr, nullptr) > 0;
    const bool bSignal = sd_bus_message_is_signal(pMessage, nullptr, nullptr) > 0 &&
                         ToText(sd_bus_message_get_sender(pMessage)) != "org.freedesktop.DBus";
    if (!bCall && !bSignal)
        return 0;
    try {
        peer.received.Put(Record(pMessage));
        if (bCall)
            peer.Answer(pMessage);
    } catch (const std::exception& exception) {
        // No exception may pass through sd-bus; the test sees what is missing.
        peer.received.Put({"", "", "", "", exception.what()});
    }
    return 1;
}

void SdBusPeer::Answer(sd_bus_message* pCall)
{
    sd_bus_message* pNew = nullptr;
    if (sd_bus_message_new_method_return(pCall, &pNew) < 0)
        throw std::runtime_error("sd-bus gives no reply");
    const MessagePointer pReply(pNew);
    const std::lock_guard<std::mutex> lock(mtxFill);
    const int nFilled =
        fnAnswer ? fnAnswer(pReply.get()) : sd_bus_message_copy(pReply.get(), pCall, true);
    if (nFilled < 0 || sd_bus_send(nullptr, pReply.get(), nullptr) < 0)
        throw std::runtime_error("sd-bus cannot send the reply");
}

void SdBusPeer::Run()
{
    do {
        while (sd_bus_process(pConnection.get(), nullptr) > 0)
            continue;
    } while (Wait());
}

/** Whether to go on. */
bool SdBusPeer::Wait()
{
    const int nEvents = sd_bus_get_events(pConnection.get());
    if (nEvents < 0) // the bus is gone
        return false;
    std::array<pollfd, 2> descriptors = {{
        {sd_bus_get_fd(pConnection.get()), static_cast<short>(nEvents), 0},
        {nStop, POLLIN, 0},
    }};
    poll(descriptors.data(), descriptors.size(), -1);
    return descriptors[1].revents == 0;
}

} // namespace Tovra::TestSupport
