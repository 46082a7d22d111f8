#include "D-Bus.h"

#include <cstdio>
#include <dbus/dbus.h>
#include <new>

namespace Tovra::DBus
{

namespace
{

// Far more than a network daemon tells, and far less than fills a device's memory: a value takes 64
// bytes, and on the wire one may do.
constexpr std::uint32_t nMostValues = 1000000;

dbus_uint32_t ReadNumber(DBusMessageIter& iter, int nCode)
{
    DBusBasicValue value;
    dbus_message_iter_get_basic(&iter, &value);
    switch (nCode) {
    case DBUS_TYPE_BYTE:
        return value.byt;
    case DBUS_TYPE_UINT16:
        return value.u16;
    default:
        return value.u32;
    }
}

// The text may be a credential: where it is read into, there is no other copy.
std::string ReadText(DBusMessageIter& iter)
{
    const char* pText = nullptr;
    dbus_message_iter_get_basic(&iter, &pText);
    return pText;
}

bool ReadFlag(DBusMessageIter& iter)
{
    dbus_bool_t bValue = FALSE;
    dbus_message_iter_get_basic(&iter, &bValue);
    return bValue != FALSE;
}

} // namespace

/** Reads one argument with all that is in it. */
struct Data::Reader {
    Data ReadVariant(DBusMessageIter& iter);
    Data ReadDictionary(DBusMessageIter& element);
    Data ReadArray(DBusMessageIter& element);
    Data ReadContainer(DBusMessageIter& iter);

    std::uint32_t nLeft = nMostValues;
};

Data Data::Reader::ReadVariant(DBusMessageIter& iter)
{
    DBusMessageIter contents;
    dbus_message_iter_recurse(&iter, &contents);
    Data data(&contents, *this);
    data.SetVariant(true);
    return data;
}

// Ends at the first entry whose key is no string: none of the dictionaries that matter has one.
Data Data::Reader::ReadDictionary(DBusMessageIter& element)
{
    std::map<std::string, Data> mapEntries;
    do {
        if (dbus_message_iter_get_arg_type(&element) != DBUS_TYPE_DICT_ENTRY)
            break;
        DBusMessageIter entry;
        dbus_message_iter_recurse(&element, &entry);
        if (dbus_message_iter_get_arg_type(&entry) != DBUS_TYPE_STRING)
            break;
        std::string sKey = ReadText(entry);
        if (!dbus_message_iter_next(&entry))
            break;
        mapEntries[std::move(sKey)] = Data(&entry, *this);
    } while (dbus_message_iter_next(&element));

    const Data::Type elementType =
        mapEntries.empty() ? Data::Empty : mapEntries.begin()->second.GetType();
    return Data::MakeDictionary(elementType, std::move(mapEntries));
}

Data Data::Reader::ReadArray(DBusMessageIter& element)
{
    std::vector<Data> vecElements;
    do {
        vecElements.emplace_back(&element, *this);
    } while (dbus_message_iter_next(&element));

    const Data::Type elementType = vecElements.front().GetType();
    return Data::MakeArray(elementType, std::move(vecElements));
}

Data Data::Reader::ReadContainer(DBusMessageIter& iter)
{
    DBusMessageIter element;
    dbus_message_iter_recurse(&iter, &element);
    switch (dbus_message_iter_get_arg_type(&element)) {
    case DBUS_TYPE_INVALID:
        return Data();
    case DBUS_TYPE_DICT_ENTRY:
        return ReadDictionary(element);
    default:
        return ReadArray(element);
    }
}

Data::Data(const DBusMessageIter* iter)
{
    Reader reader;
    *this = Data(iter, reader);
}

Data::Data(const DBusMessageIter* iter, Reader& reader)
{
    if (reader.nLeft-- == 0)
        throw std::bad_alloc();
    DBusMessageIter position = *iter;
    const int nCode = dbus_message_iter_get_arg_type(&position);
    switch (nCode) {
    case DBUS_TYPE_INVALID:
        break;
    case DBUS_TYPE_BYTE:
    case DBUS_TYPE_UINT16:
    case DBUS_TYPE_UINT32:
        *this = MakeUInt32(ReadNumber(position, nCode));
        break;
    case DBUS_TYPE_BOOLEAN:
        *this = MakeBool(ReadFlag(position));
        break;
    case DBUS_TYPE_STRING:
        new (&m_storage) std::string(ReadText(position)); // in place, see ReadText
        m_type = String;
        break;
    case DBUS_TYPE_OBJECT_PATH:
        *this = MakeObjectPath(ReadText(position));
        break;
    case DBUS_TYPE_VARIANT:
        *this = reader.ReadVariant(position);
        break;
    case DBUS_TYPE_ARRAY:
    case DBUS_TYPE_STRUCT:
        *this = reader.ReadContainer(position);
        break;
    default:
        m_type = Invalid;
        std::fprintf(stderr, "Warning, unimplemented type %c\n", nCode);
        break;
    }
}

} // namespace Tovra::DBus
