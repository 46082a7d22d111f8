#include "D-Bus.h"
#include "Text.h"
#include "Wipe.h"
#include "Writability.h"

#include <dbus/dbus.h>

namespace Tovra::DBus
{

namespace
{

void AppendAllowed(DBusMessageIter* iter, int nCode, const std::string& sText)
{
    const char* pText = sText.c_str();
    dbus_message_iter_append_basic(iter, nCode, &pText);
}

// No copy without need, and none that stays: the text may be a credential.
void AppendText(DBusMessageIter* iter, const std::string& sText)
{
    if (Text::IsString(sText)) {
        AppendAllowed(iter, DBUS_TYPE_STRING, sText);
        return;
    }
    std::string sMended = Text::ToString(sText);
    AppendAllowed(iter, DBUS_TYPE_STRING, sMended);
    Wipe(sMended);
}

std::string CodeText(Data::Type type)
{
    const char* pCode = Data::TypeCode(type);
    return pCode ? pCode : "";
}

} // namespace

const char* Data::TypeCode(Type type) noexcept
{
    switch (type) {
    case Variant:
        return "v";
    case Bool:
        return "b";
    case UInt32:
        return "u";
    case String:
        return "s";
    case ObjectPath:
        return "o";
    case Array:
        return "a";
    case Dictionary:
        return "ae";
    case Invalid:
    case Empty:
        break;
    }
    return nullptr;
}

std::string Data::Signature(const Data& data, bool bFull)
{
    const std::string sArray = bFull ? "a" : "";
    switch (data.m_type) {
    case Dictionary:
        return sArray + "{s" + CodeText(data.m_elementType) + "}";
    case Array:
        return sArray + CodeText(data.m_elementType);
    default:
        return CodeText(data.m_type);
    }
}

void Data::AddToMessage(DBusMessageIter* iter, bool inVariant) const
{
    if (IsWritable(*this, inVariant))
        Write(iter, inVariant);
}

void Data::Write(DBusMessageIter* iter, bool inVariant) const
{
    if (m_variant && !inVariant) {
        DBusMessageIter sub;
        dbus_message_iter_open_container(iter, DBUS_TYPE_VARIANT, Signature(*this, true).c_str(),
                                         &sub);
        Write(&sub, true);
        dbus_message_iter_close_container(iter, &sub);
        return;
    }

    switch (m_type) {
    case Bool: {
        const dbus_bool_t bValue = As<bool>() ? TRUE : FALSE;
        dbus_message_iter_append_basic(iter, DBUS_TYPE_BOOLEAN, &bValue);
        break;
    }
    case UInt32: {
        const dbus_uint32_t nValue = As<std::uint32_t>();
        dbus_message_iter_append_basic(iter, DBUS_TYPE_UINT32, &nValue);
        break;
    }
    case String:
        AppendText(iter, As<std::string>());
        break;
    case ObjectPath:
        AppendAllowed(iter, DBUS_TYPE_OBJECT_PATH, ObjectPathText());
        break;
    case Array:
    case Dictionary:
        WriteContainer(iter);
        break;
    case Variant:
    case Invalid:
    case Empty:
        break;
    }
}

void Data::WriteContainer(DBusMessageIter* iter) const
{
    DBusMessageIter sub;
    dbus_message_iter_open_container(iter, DBUS_TYPE_ARRAY, Signature(*this, false).c_str(), &sub);
    if (m_type == Array) {
        for (const Data& element : As<std::vector<Data>>())
            element.Write(&sub, false);
    } else {
        for (const auto& [sKey, value] : As<std::map<std::string, Data>>()) {
            DBusMessageIter entry;
            dbus_message_iter_open_container(&sub, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
            AppendText(&entry, sKey);
            value.Write(&entry, false);
            dbus_message_iter_close_container(&sub, &entry);
        }
    }
    dbus_message_iter_close_container(iter, &sub);
}

} // namespace Tovra::DBus
