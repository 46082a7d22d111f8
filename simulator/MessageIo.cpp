#include "simulator/MessageIo.h"
#include "simulator/Signature.h"

#include <cstring>
#include <fcntl.h>
#include <set>
#include <system_error>
#include <unistd.h>

namespace Tovra::Simulator
{

namespace
{

void AppendValue(sd_bus_message* pMessage, const std::string& sType, const Json& value);

template <class Number> void AppendNumber(sd_bus_message* pMessage, char nType, const Json& value)
{
    const auto number = value.get<Number>();
    Check(sd_bus_message_append_basic(pMessage, nType, &number), "append a number");
}

void AppendDescriptor(sd_bus_message* pMessage)
{
    const int nFile = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int nResult = sd_bus_message_append_basic(pMessage, 'h', &nFile);
    close(nFile);
    Check(nResult, "append a descriptor");
}

void AppendText(sd_bus_message* pMessage, char nType, const std::string& sText)
{
    Check(sd_bus_message_append_basic(pMessage, nType, sText.c_str()), "append a string");
}

void AppendBasic(sd_bus_message* pMessage, char nType, const Json& value)
{
    switch (nType) {
    case 'y':
        return AppendNumber<std::uint8_t>(pMessage, nType, value);
    case 'n':
        return AppendNumber<std::int16_t>(pMessage, nType, value);
    case 'q':
        return AppendNumber<std::uint16_t>(pMessage, nType, value);
    case 'i':
        return AppendNumber<std::int32_t>(pMessage, nType, value);
    case 'u':
        return AppendNumber<std::uint32_t>(pMessage, nType, value);
    case 'x':
        return AppendNumber<std::int64_t>(pMessage, nType, value);
    case 't':
        return AppendNumber<std::uint64_t>(pMessage, nType, value);
    case 'd':
        return AppendNumber<double>(pMessage, nType, value);
    case 'b': {
        const int nValue = value.get<bool>();
        Check(sd_bus_message_append_basic(pMessage, nType, &nValue), "append a boolean");
        return;
    }
    case 'h':
        return AppendDescriptor(pMessage);
    default:
        return AppendText(pMessage, nType, value.get_ref<const std::string&>());
    }
}

void Open(sd_bus_message* pMessage, char nType, const std::string& sContents)
{
    Check(sd_bus_message_open_container(pMessage, nType, sContents.c_str()), "open a container");
}

void Close(sd_bus_message* pMessage)
{
    Check(sd_bus_message_close_container(pMessage), "close a container");
}

void AppendEntry(sd_bus_message* pMessage, const std::string& sKey, const std::string& sValue,
                 const Json& key, const Json& value)
{
    Open(pMessage, 'e', sKey + sValue);
    AppendBasic(pMessage, sKey[0], key);
    AppendValue(pMessage, sValue, value);
    Close(pMessage);
}

void AppendDictionary(sd_bus_message* pMessage, const std::string& sType, const Json& value)
{
    const auto [sKey, sValue] = SplitDictionaryEntry(sType);
    Open(pMessage, 'a', sType.substr(1));
    if (value.is_object())
        for (const auto& [sName, entry] : value.items())
            AppendEntry(pMessage, sKey, sValue, sName, entry);
    else
        for (const Json& pair : value)
            AppendEntry(pMessage, sKey, sValue, pair.at(0), pair.at(1));
    Close(pMessage);
}

void AppendArray(sd_bus_message* pMessage, const std::string& sElement, const Json& value)
{
    Open(pMessage, 'a', sElement);
    for (const Json& element : value)
        AppendValue(pMessage, sElement, element);
    Close(pMessage);
}

void AppendStruct(sd_bus_message* pMessage, const std::string& sType, const Json& value)
{
    Open(pMessage, 'r', sType.substr(1, sType.size() - 2));
    std::size_t n = 0;
    for (const std::string& sMember : SplitStruct(sType))
        AppendValue(pMessage, sMember, value.at(n++));
    Close(pMessage);
}

void AppendVariant(sd_bus_message* pMessage, const Json& value)
{
    const auto sContents = value.at(0).get<std::string>();
    Open(pMessage, 'v', sContents);
    AppendValue(pMessage, sContents, value.at(1));
    Close(pMessage);
}

void AppendValue(sd_bus_message* pMessage, const std::string& sType, const Json& value)
{
    if (sType[0] == 'v')
        AppendVariant(pMessage, value);
    else if (sType[0] == '(')
        AppendStruct(pMessage, sType, value);
    else if (sType[0] == 'a' && sType[1] == '{')
        AppendDictionary(pMessage, sType, value);
    else if (sType[0] == 'a')
        AppendArray(pMessage, sType.substr(1), value);
    else
        AppendBasic(pMessage, sType[0], value);
}

template <class Number> Json ReadNumber(sd_bus_message* pMessage, char nType)
{
    Number number = {};
    Check(sd_bus_message_read_basic(pMessage, nType, &number), "read a number");
    return number;
}

Json ReadText(sd_bus_message* pMessage, char nType)
{
    const char* pText = nullptr;
    Check(sd_bus_message_read_basic(pMessage, nType, &pText), "read a string");
    return pText;
}

Json ReadBasic(sd_bus_message* pMessage, char nType)
{
    switch (nType) {
    case 'y':
        return ReadNumber<std::uint8_t>(pMessage, nType);
    case 'n':
        return ReadNumber<std::int16_t>(pMessage, nType);
    case 'q':
        return ReadNumber<std::uint16_t>(pMessage, nType);
    case 'i':
        return ReadNumber<std::int32_t>(pMessage, nType);
    case 'u':
        return ReadNumber<std::uint32_t>(pMessage, nType);
    case 'x':
        return ReadNumber<std::int64_t>(pMessage, nType);
    case 't':
        return ReadNumber<std::uint64_t>(pMessage, nType);
    case 'd':
        return ReadNumber<double>(pMessage, nType);
    case 'b':
        return ReadNumber<int>(pMessage, nType) != 0;
    case 'h':
        ReadNumber<int>(pMessage, nType);
        return nullptr;
    default:
        return ReadText(pMessage, nType);
    }
}

Json ReadOne(sd_bus_message* pMessage);

Json ReadAll(sd_bus_message* pMessage)
{
    Json list = Json::array();
    while (Check(sd_bus_message_at_end(pMessage, false), "find the end") == 0)
        list.push_back(ReadOne(pMessage));
    return list;
}

// As an object where that loses nothing: each key a string, and each there once.
Json ToDictionary(Json pairs, bool bTextKeys)
{
    std::set<std::string> setKeys;
    for (const Json& pair : pairs)
        if (!bTextKeys || !setKeys.insert(pair[0].get<std::string>()).second)
            return pairs;
    Json object = Json::object();
    for (Json& pair : pairs)
        object.get_ref<Json::object_t&>().emplace_back(pair[0].get<std::string>(),
                                                       std::move(pair[1]));
    return object;
}

Json ReadContainer(sd_bus_message* pMessage, char nType, const char* pContents)
{
    const std::string sContents = pContents;
    Check(sd_bus_message_enter_container(pMessage, nType, pContents), "enter a container");
    Json contents = ReadAll(pMessage);
    Check(sd_bus_message_exit_container(pMessage), "leave a container");
    if (nType == 'v')
        return Json::array({sContents, std::move(contents.at(0))});
    if (nType == 'a' && sContents[0] == '{')
        return ToDictionary(std::move(contents), std::strchr("sog", sContents[1]) != nullptr);
    return contents;
}

Json ReadOne(sd_bus_message* pMessage)
{
    char nType = 0;
    const char* pContents = nullptr;
    Check(sd_bus_message_peek_type(pMessage, &nType, &pContents), "look at a value");
    return IsBasicType(nType) ? ReadBasic(pMessage, nType)
                              : ReadContainer(pMessage, nType, pContents);
}

} // namespace

int Check(int nResult, const char* pWhat)
{
    if (nResult < 0)
        throw std::runtime_error(std::string("cannot ") + pWhat + ": " +
                                 std::generic_category().message(-nResult));
    return nResult;
}

void Append(sd_bus_message* pMessage, const Arguments& arguments)
{
    std::size_t n = 0;
    for (const std::string& sType : SplitSignature(arguments.sSignature))
        AppendValue(pMessage, sType, arguments.values.at(n++));
}

Arguments Read(sd_bus_message* pMessage)
{
    Check(sd_bus_message_rewind(pMessage, true), "read a message from its start");
    Arguments arguments;
    arguments.sSignature = sd_bus_message_get_signature(pMessage, true);
    arguments.values = ReadAll(pMessage);
    return arguments;
}

} // namespace Tovra::Simulator
