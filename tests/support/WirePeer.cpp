#include "tests/support/WirePeer.h"

#include "tests/support/Dispatching.h"

#include <algorithm>
#include <stdexcept>

namespace Tovra::TestSupport
{

using DBus::Message;

namespace
{

auto IsCallOf(const std::string& sMethod)
{
    return [=](const Message& call) { return sMethod == dbus_message_get_member(call.Get()); };
}

} // namespace

void WirePeer::Close::operator()(DBusConnection* pClosed) const
{
    dbus_connection_close(pClosed);
    dbus_connection_unref(pClosed);
}

WirePeer::WirePeer(const std::string& sAddress, const char* pName)
    : pConnection(dbus_connection_open_private(sAddress.c_str(), nullptr))
{
    if (!pConnection || !dbus_bus_register(pConnection.get(), nullptr) ||
        dbus_bus_request_name(pConnection.get(), pName, DBUS_NAME_FLAG_DO_NOT_QUEUE, nullptr) !=
            DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        throw std::runtime_error("the peer cannot join the private bus");
}

void WirePeer::Send(const Message& message)
{
    dbus_connection_send(pConnection.get(), message.Get(), nullptr);
    Collect();
}

/** Takes in all that the bus has passed on so far: its answer comes after it. */
void WirePeer::Collect()
{
    const Message question = CallToBus("GetId");
    const Message answer = Message::Adopt(dbus_connection_send_with_reply_and_block(
        pConnection.get(), question.Get(), DBUS_TIMEOUT_USE_DEFAULT, nullptr));
    if (!answer)
        throw std::runtime_error("the private bus does not answer the peer");
    while (DBusMessage* pMessage = dbus_connection_pop_message(pConnection.get())) {
        Message message = Message::Adopt(pMessage);
        if (dbus_message_get_type(pMessage) == DBUS_MESSAGE_TYPE_METHOD_CALL)
            calls.push_back(std::move(message));
    }
}

std::size_t WirePeer::CountCalls(const std::string& sMethod)
{
    Collect();
    return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(), IsCallOf(sMethod)));
}

Message WirePeer::TakeCall(const std::string& sMethod)
{
    if (!Eventually([&] { return CountCalls(sMethod) > 0; }))
        return Message();
    const auto found = std::find_if(calls.begin(), calls.end(), IsCallOf(sMethod));
    const Message call = *found;
    calls.erase(found);
    return call;
}

bool JoinBus(const DBus::Connection& connection)
{
    return connection && dbus_bus_register(connection.Get(), nullptr);
}

} // namespace Tovra::TestSupport
