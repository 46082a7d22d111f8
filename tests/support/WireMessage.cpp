#include "tests/support/WireMessage.h"

#include <dbus/dbus.h>
#include <stdexcept>

namespace Tovra::TestSupport
{

using DBus::Message;

namespace
{

constexpr const char* pErrorName = "net.connman.Error.Failed";

void Check(bool bDone, const char* pWhat)
{
    if (!bDone)
        throw std::runtime_error(std::string("libdbus refuses: ") + pWhat);
}

void Append(DBusMessageIter* iter, const WireValue& value);

void AppendContainer(DBusMessageIter* iter, const WireValue& value)
{
    const char nType = value.sSignature.front();
    const int nContainer = nType == '('   ? DBUS_TYPE_STRUCT
                           : nType == '{' ? DBUS_TYPE_DICT_ENTRY
                                          : nType;
    // libdbus wants the contents' signature of an array and of a variant, and of no other.
    const std::string sContents = nType == 'a'   ? value.sSignature.substr(1)
                                  : nType == 'v' ? value.vecMembers.front().sSignature
                                                 : "";
    const char* pContents = sContents.empty() ? nullptr : sContents.c_str();
    DBusMessageIter members;
    Check(dbus_message_iter_open_container(iter, nContainer, pContents, &members), "a container");
    for (const WireValue& member : value.vecMembers)
        Append(&members, member);
    Check(dbus_message_iter_close_container(iter, &members), "a container's end");
}

void Append(DBusMessageIter* iter, const WireValue& value)
{
    const char nType = value.sSignature.front();
    if (std::string("a(v{").find(nType) != std::string::npos)
        return AppendContainer(iter, value);
    DBusBasicValue basic{};
    if (std::string("sog").find(nType) != std::string::npos)
        basic.str = const_cast<char*>(value.sText.c_str());
    else if (std::string("xt").find(nType) != std::string::npos)
        basic.u64 = value.nNumber;
    else if (std::string("nq").find(nType) != std::string::npos)
        basic.u16 = static_cast<dbus_uint16_t>(value.nNumber);
    else if (nType == 'y')
        basic.byt = static_cast<unsigned char>(value.nNumber);
    else
        basic.u32 = static_cast<dbus_uint32_t>(value.nNumber);
    Check(dbus_message_iter_append_basic(iter, nType, &basic), "a value");
}

Message Fill(DBusMessage* pMessage, const std::vector<WireValue>& vecArguments)
{
    Check(pMessage, "a message");
    Message message = Message::Adopt(pMessage);
    DBusMessageIter iter;
    dbus_message_iter_init_append(pMessage, &iter);
    for (const WireValue& argument : vecArguments)
        Append(&iter, argument);
    return message;
}

/** The message as its receiver has it. */
Message Transport(const Message& message)
{
    dbus_message_set_serial(message.Get(), 1);
    char* pBytes = nullptr;
    int nSize = 0;
    Check(dbus_message_marshal(message.Get(), &pBytes, &nSize), "marshalling");
    DBusMessage* pRead = dbus_message_demarshal(pBytes, nSize, nullptr);
    dbus_free(pBytes);
    Check(pRead, "demarshalling");
    return Message::Adopt(pRead);
}

/** The answer to no call in particular. */
DBusMessage* NewAnswer(int nType)
{
    DBusMessage* pMessage = dbus_message_new(nType);
    Check(pMessage && dbus_message_set_reply_serial(pMessage, 1), "a reply");
    return pMessage;
}

} // namespace

Message NewWireSignal(const WireOrigin& origin, const std::vector<WireValue>& vecArguments)
{
    return Fill(dbus_message_new_signal(origin.sPath.c_str(), origin.sInterface.c_str(),
                                        origin.sMember.c_str()),
                vecArguments);
}

Message NewWireReply(const Message& call, const std::vector<WireValue>& vecArguments)
{
    return Fill(dbus_message_new_method_return(call.Get()), vecArguments);
}

Message NewWireError(const Message& call, const std::vector<WireValue>& vecArguments)
{
    return Fill(dbus_message_new_error(call.Get(), pErrorName, nullptr), vecArguments);
}

Message WireSignal(const WireOrigin& origin, const std::vector<WireValue>& vecArguments)
{
    return Transport(NewWireSignal(origin, vecArguments));
}

Message WireReply(const std::vector<WireValue>& vecArguments)
{
    return Transport(Fill(NewAnswer(DBUS_MESSAGE_TYPE_METHOD_RETURN), vecArguments));
}

Message WireError(const std::vector<WireValue>& vecArguments)
{
    DBusMessage* pError = NewAnswer(DBUS_MESSAGE_TYPE_ERROR);
    Check(dbus_message_set_error_name(pError, pErrorName), "an error's name");
    return Transport(Fill(pError, vecArguments));
}

} // namespace Tovra::TestSupport
