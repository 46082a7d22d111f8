#include "tests/connman/BusMonitor.h"

#include "tests/support/SdBusText.h"

#include <stdexcept>

namespace Tovra
{

namespace
{

constexpr const char* pBusName = "org.freedesktop.DBus";

struct MessageUnref {
    void operator()(sd_bus_message* pMessage) const { sd_bus_message_unref(pMessage); }
};
using MessagePointer = std::unique_ptr<sd_bus_message, MessageUnref>;

std::string ToText(const char* pText)
{
    return pText ? pText : "";
}

sd_bus* Connect(const std::string& sAddress)
{
    sd_bus* pBus = nullptr;
    if (sd_bus_new(&pBus) < 0 || sd_bus_set_address(pBus, sAddress.c_str()) < 0 ||
        sd_bus_set_bus_client(pBus, true) < 0 || sd_bus_set_monitor(pBus, true) < 0 ||
        sd_bus_start(pBus) < 0) {
        sd_bus_unref(pBus);
        throw std::runtime_error("sd-bus cannot connect to the private bus");
    }
    return pBus;
}

/** The next message; null if none comes before the time is over. */
MessagePointer Next(sd_bus* pBus, std::chrono::steady_clock::time_point end)
{
    while (std::chrono::steady_clock::now() < end) {
        sd_bus_message* pMessage = nullptr;
        const int nDone = sd_bus_process(pBus, &pMessage);
        if (nDone < 0)
            break;
        if (pMessage)
            return MessagePointer(pMessage);
        if (nDone == 0)
            sd_bus_wait(pBus, 100'000); // microseconds; the deadline is looked at in between
    }
    return nullptr;
}

TestSupport::PeerMessage Record(sd_bus_message* pMessage)
{
    return {ToText(sd_bus_message_get_path(pMessage)),
            ToText(sd_bus_message_get_interface(pMessage)),
            ToText(sd_bus_message_get_member(pMessage)),
            ToText(sd_bus_message_get_signature(pMessage, true)),
            TestSupport::DescribeArguments(pMessage)};
}

} // namespace

BusMonitor::BusMonitor(const std::string& sAddress) : pConnection(Connect(sAddress))
{
    if (sd_bus_call_method(pConnection.get(), pBusName, "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.Monitoring", "BecomeMonitor", nullptr, nullptr,
                           "asu", 0, 0) < 0)
        throw std::runtime_error("the private bus does not let itself be monitored");
}

std::vector<TestSupport::PeerMessage> BusMonitor::TakeCalls(const std::string& sSender,
                                                            const std::string& sLast)
{
    const auto end = std::chrono::steady_clock::now() + TestSupport::deadline;
    std::vector<TestSupport::PeerMessage> vecCalls;
    while (vecCalls.empty() || vecCalls.back().sMember != sLast) {
        const MessagePointer pMessage = Next(pConnection.get(), end);
        if (!pMessage)
            break;
        if (sd_bus_message_is_method_call(pMessage.get(), nullptr, nullptr) > 0 &&
            ToText(sd_bus_message_get_sender(pMessage.get())) == sSender)
            vecCalls.push_back(Record(pMessage.get()));
    }
    return vecCalls;
}

} // namespace Tovra
