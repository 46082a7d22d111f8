#include "D-Bus.h"
#include "Text.h"

#include <cstring>
#include <dbus/dbus.h>

namespace Tovra::DBus
{

namespace
{

bool IsAllowedCall(const char* destination, const char* path, const char* interface,
                   const char* method)
{
    return (!destination || Text::IsBusName(destination)) && Text::IsObjectPath(path) &&
           std::strcmp(path, DBUS_PATH_LOCAL) != 0 &&
           (!interface ||
            (Text::IsInterface(interface) && std::strcmp(interface, DBUS_INTERFACE_LOCAL) != 0)) &&
           Text::IsMember(method);
}

// libdbus numbers a message when it is sent, and aborts the process when one is extended after.
bool WasSent(DBusMessage* pMessage)
{
    return dbus_message_get_serial(pMessage) != 0;
}

// libdbus writes more arguments than a signature has room for, and cannot read them any more.
bool HasRoomFor(DBusMessage* pMessage, const Data& data)
{
    const std::size_t nLength = data.IsVariant() ? 1 : Data::Signature(data, true).size();
    return std::strlen(dbus_message_get_signature(pMessage)) + nLength <=
           DBUS_MAXIMUM_SIGNATURE_LENGTH;
}

} // namespace

Message::Message(const char* destination, const char* path, const char* interface,
                 const char* method)
    : Handle(IsAllowedCall(destination, path, interface, method)
                 ? dbus_message_new_method_call(destination, path, interface, method)
                 : nullptr)
{
}

Message Message::Adopt(DBusMessage* pMessage) noexcept
{
    return Message(pMessage);
}

Message Message::Reference(DBusMessage* pMessage) noexcept
{
    if (pMessage)
        AddReference(pMessage);
    return Message(pMessage);
}

Message Message::ReturnMessage() const
{
    if (!*this || dbus_message_get_type(Get()) != DBUS_MESSAGE_TYPE_METHOD_CALL || !WasSent(Get()))
        return Message();
    return Adopt(dbus_message_new_method_return(Get()));
}

Message& Message::SetNoReply()
{
    if (*this && !WasSent(Get()))
        dbus_message_set_no_reply(Get(), TRUE);
    return *this;
}

const char* Message::GetType() const
{
    return *this ? dbus_message_type_to_string(dbus_message_get_type(Get())) : "";
}

Message& Message::Add(const Data& data)
{
    if (*this && !WasSent(Get()) && HasRoomFor(Get(), data)) {
        DBusMessageIter iter;
        dbus_message_iter_init_append(Get(), &iter);
        data.AddToMessage(&iter, false);
    }
    return *this;
}

Data Message::Contents() const
{
    if (!*this)
        return Data();
    DBusMessageIter iter;
    dbus_message_iter_init(Get(), &iter);
    return Data(&iter);
}

std::vector<Data> Message::Contents(unsigned count) const
{
    std::vector<Data> vecArguments(count);
    if (!*this)
        return vecArguments;

    DBusMessageIter iter;
    dbus_message_iter_init(Get(), &iter);
    unsigned nFilled = 0;
    do {
        if (count == 0)
            vecArguments.emplace_back(&iter);
        else
            vecArguments[nFilled++] = Data(&iter);
    } while (dbus_message_iter_next(&iter) && (count == 0 || nFilled < count));
    return vecArguments;
}

} // namespace Tovra::DBus
