#include "tests/support/PeerTest.h"

#include "tests/support/PrivateBus.h"

#include <dbus/dbus.h>

namespace Tovra::TestSupport
{

using DBus::Data;
using DBus::Message;

const std::string& PeerTest::GetAddress()
{
    return GetSystemBus().GetAddress();
}

Message PeerTest::NewCall() const
{
    return Message(peer.GetName().c_str(), "/peer", "net.example.Peer", "Take");
}

Message PeerTest::Receive(const SdBusPeer::Fill& fnFill)
{
    peer.AnswerWith(fnFill);
    Message reply = connection.SendWithReplyBlocking(NewCall(), -1);
    EXPECT_TRUE(reply) << "the peer's message did not arrive";
    peer.Take(); // the call
    return reply;
}

std::string PeerTest::Arrived(const Message& message)
{
    if (connection.Send(message) == 0)
        return "not sent";
    dbus_connection_flush(connection.Get());
    const auto arrived = peer.Take();
    return arrived ? arrived->sSignature + " " + arrived->sBody : "did not arrive";
}

void PeerTest::ExpectRefused(const Data& data)
{
    Message message = NewCall().Add(Data::MakeString("before"));
    const std::string sBefore = Marshal(message);
    message.Add(data);
    EXPECT_EQ(Marshal(message), sBefore);
    message.Add(Data::MakeUInt32(1));
    EXPECT_EQ(Arrived(message), R"(su s"before" u1)");
    EXPECT_TRUE(dbus_connection_get_is_connected(connection.Get()));
}

std::string Marshal(const Message& message)
{
    char* pBytes = nullptr;
    int nLength = 0;
    if (!dbus_message_marshal(message.Get(), &pBytes, &nLength))
        throw std::bad_alloc();
    const std::string sBytes(pBytes, static_cast<std::size_t>(nLength));
    dbus_free(pBytes);
    return sBytes;
}

} // namespace Tovra::TestSupport
