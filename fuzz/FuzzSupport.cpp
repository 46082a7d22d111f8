#include "fuzz/FuzzSupport.h"

#include "tests/support/DataExpectation.h"
#include "tests/support/DataText.h"

#include <cstdio>
#include <cstdlib>
#include <dbus/dbus.h>
#include <unistd.h>

namespace Tovra::Fuzz
{

using DBus::Data;
using DBus::Message;

void Require(bool bCondition, const char* pWhat)
{
    if (bCondition)
        return;
    dprintf(STDERR_FILENO, "broken: %s\n", pWhat);
    std::abort();
}

// The fuzzer and the sanitizers write to the descriptor and stay audible.
void SilenceWarnings()
{
    stderr = std::fopen("/dev/null", "w");
}

std::string Marshal(const Message& message)
{
    char* pBytes = nullptr;
    int nLength = 0;
    Require(dbus_message_marshal(message.Get(), &pBytes, &nLength), "the message is whole");
    std::string sBytes(pBytes, static_cast<std::size_t>(nLength));
    dbus_free(pBytes);
    return sBytes;
}

Message Demarshal(const std::string& sBytes)
{
    return Message::Adopt(
        dbus_message_demarshal(sBytes.data(), static_cast<int>(sBytes.size()), nullptr));
}

void RequireTravels(const Data& data)
{
    Message message("net.example.Peer", "/peer", "net.example.Peer", "Take");
    std::vector<Data> vecExpected = {Data::MakeString("before"), Data::MakeUInt32(1)};
    message.Add(vecExpected[0]);
    const std::string sBefore = Marshal(message);
    message.Add(data);
    const std::optional<Data> expected = TestSupport::Expectation(data);
    Require((Marshal(message) == sBefore) == !expected, "written exactly when it can be sent");
    if (expected)
        vecExpected.insert(vecExpected.begin() + 1, *expected);
    message.Add(vecExpected.back());

    dbus_message_set_serial(message.Get(), 1); // a message without one is not received
    const Message received = Demarshal(Marshal(message));
    Require(static_cast<bool>(received), "the message is received");
    Require(TestSupport::Describe(received.Contents(0)) == TestSupport::Describe(vecExpected),
            "read as the rules promise");
}

} // namespace Tovra::Fuzz
