// Writes the inputs that fuzzing starts from: a message of each shape that the network daemon or a
// stranger may send, and the choices behind some values.

#include "fuzz/FuzzSupport.h"

#include <dbus/dbus.h>
#include <fstream>
#include <iostream>
#include <random>

namespace
{

using Tovra::DBus::Message;

const std::vector<const char*> vecSignatures = {"",
                                                "y",
                                                "b",
                                                "n",
                                                "q",
                                                "i",
                                                "u",
                                                "x",
                                                "t",
                                                "d",
                                                "s",
                                                "o",
                                                "g",
                                                "v",
                                                "as",
                                                "ay",
                                                "ab",
                                                "aas",
                                                "av",
                                                "ao",
                                                "(sb)",
                                                "a{sv}",
                                                "a{ss}",
                                                "a{uv}",
                                                "a{os}",
                                                "a{sa{sv}}",
                                                "sv",
                                                "oa{sv}",
                                                "vvvvvvv",
                                                "(oa{sv})",
                                                "a(oa{sv})",
                                                "((((s))))",
                                                "a{s(ua{sv})}",
                                                "aaaaas",
                                                "a(ybnqiuxtdsog)"};

// What the variants hold in turn, some of them variants again.
const std::vector<const char*> vecVariantContents = {"s", "b", "as",   "a{sv}", "u",
                                                     "v", "y", "(sv)", "d"};

/** Fills a message with a value or two of each type in its signature. */
class Sampler
{
public:
    explicit Sampler(DBusMessage* pMessage) { dbus_message_iter_init_append(pMessage, &arguments); }

    void Append(const char* pSignature)
    {
        DBusSignatureIter type;
        dbus_signature_iter_init(&type, pSignature);
        AppendAll(arguments, type);
    }

private:
    void AppendAll(DBusMessageIter& iter, DBusSignatureIter& type)
    {
        do {
            AppendOne(iter, type);
        } while (dbus_signature_iter_next(&type));
    }

    void AppendOne(DBusMessageIter& iter, const DBusSignatureIter& type)
    {
        switch (const int nCode = dbus_signature_iter_get_current_type(&type)) {
        case DBUS_TYPE_INVALID:
            break;
        case DBUS_TYPE_VARIANT:
            AppendVariant(iter);
            break;
        case DBUS_TYPE_ARRAY:
            AppendArray(iter, type);
            break;
        case DBUS_TYPE_STRUCT:
        case DBUS_TYPE_DICT_ENTRY:
            AppendMembers(iter, nCode, type);
            break;
        default:
            AppendBasic(iter, nCode);
            break;
        }
    }

    void AppendBasic(DBusMessageIter& iter, int nCode)
    {
        const char* pText = nCode == DBUS_TYPE_OBJECT_PATH ? "/net/a" : "s";
        DBusBasicValue value = {};
        if (nCode == DBUS_TYPE_BOOLEAN)
            value.bool_val = TRUE;
        else
            value.u64 = 0x0102030405060708;
        const bool bText = nCode == DBUS_TYPE_STRING || nCode == DBUS_TYPE_OBJECT_PATH ||
                           nCode == DBUS_TYPE_SIGNATURE;
        const void* const pValue = bText ? static_cast<const void*>(&pText) : &value;
        dbus_message_iter_append_basic(&iter, nCode, pValue);
    }

    void AppendVariant(DBusMessageIter& iter)
    {
        const char* const pContents = vecVariantContents[nVariant++ % vecVariantContents.size()];
        DBusSignatureIter type;
        dbus_signature_iter_init(&type, pContents);
        DBusMessageIter contents;
        dbus_message_iter_open_container(&iter, DBUS_TYPE_VARIANT, pContents, &contents);
        AppendAll(contents, type);
        dbus_message_iter_close_container(&iter, &contents);
    }

    void AppendArray(DBusMessageIter& iter, const DBusSignatureIter& type)
    {
        DBusSignatureIter elementType;
        dbus_signature_iter_recurse(&type, &elementType);
        char* const pElement = dbus_signature_iter_get_signature(&elementType);
        DBusMessageIter elements;
        dbus_message_iter_open_container(&iter, DBUS_TYPE_ARRAY, pElement, &elements);
        AppendOne(elements, elementType);
        if (nArray++ % 2 == 0)
            AppendOne(elements, elementType);
        dbus_message_iter_close_container(&iter, &elements);
        dbus_free(pElement);
    }

    void AppendMembers(DBusMessageIter& iter, int nCode, const DBusSignatureIter& type)
    {
        DBusSignatureIter memberType;
        dbus_signature_iter_recurse(&type, &memberType);
        DBusMessageIter members;
        dbus_message_iter_open_container(&iter, nCode, nullptr, &members);
        AppendAll(members, memberType);
        dbus_message_iter_close_container(&iter, &members);
    }

    DBusMessageIter arguments;
    std::size_t nVariant = 0;
    unsigned nArray = 0;
};

void Save(const std::string& sDirectory, int nNumber, const std::string& sBytes)
{
    std::ofstream(sDirectory + "/seed-" + std::to_string(nNumber), std::ios::binary) << sBytes;
}

void SaveMessages(const std::string& sDirectory)
{
    int nNumber = 0;
    for (const char* pSignature : vecSignatures) {
        const Message message("a.b", "/", "a.b", "M");
        dbus_message_set_serial(message.Get(), 1);
        Sampler(message.Get()).Append(pSignature);
        const std::string sBytes = Tovra::Fuzz::Marshal(message);
        Tovra::Fuzz::Require(static_cast<bool>(Tovra::Fuzz::Demarshal(sBytes)), pSignature);
        Save(sDirectory, nNumber++, sBytes);
    }
}

void SaveChoices(const std::string& sDirectory)
{
    std::mt19937 random(1);
    for (int nNumber = 0; nNumber < 40; ++nNumber) {
        std::string sBytes(static_cast<std::size_t>(1 + nNumber * 8), 0);
        for (char& nByte : sBytes)
            nByte = static_cast<char>(random());
        Save(sDirectory, nNumber, sBytes);
    }
}

} // namespace

int main(int nArguments, char** pArguments)
{
    if (nArguments != 3) {
        std::cerr << "make_seeds <directory for messages> <directory for values>\n";
        return EXIT_FAILURE;
    }
    SaveMessages(pArguments[1]);
    SaveChoices(pArguments[2]);
}
