#include "tests/support/SdBusText.h"

#include "tests/support/DataText.h"

#include <cstdint>
#include <sstream>
#include <stdexcept>

namespace Tovra::TestSupport
{

namespace
{

void Check(int nResult)
{
    if (nResult < 0)
        throw std::runtime_error("sd-bus cannot read the message");
}

template <class T> T Basic(sd_bus_message* pMessage, char nCode)
{
    T value = {};
    Check(sd_bus_message_read_basic(pMessage, nCode, &value));
    return value;
}

std::string BasicText(sd_bus_message* pMessage, char nCode)
{
    std::ostringstream text;
    text << nCode;
    switch (nCode) {
    case SD_BUS_TYPE_STRING:
    case SD_BUS_TYPE_OBJECT_PATH:
    case SD_BUS_TYPE_SIGNATURE:
        text << Quote(Basic<const char*>(pMessage, nCode));
        break;
    case SD_BUS_TYPE_BOOLEAN:
        text << (Basic<int>(pMessage, nCode) ? "true" : "false");
        break;
    case SD_BUS_TYPE_BYTE:
        text << unsigned{Basic<std::uint8_t>(pMessage, nCode)};
        break;
    case SD_BUS_TYPE_UINT16:
        text << Basic<std::uint16_t>(pMessage, nCode);
        break;
    case SD_BUS_TYPE_INT16:
        text << Basic<std::int16_t>(pMessage, nCode);
        break;
    case SD_BUS_TYPE_UINT32:
        text << Basic<std::uint32_t>(pMessage, nCode);
        break;
    case SD_BUS_TYPE_INT32:
        text << Basic<std::int32_t>(pMessage, nCode);
        break;
    case SD_BUS_TYPE_UINT64:
        text << Basic<std::uint64_t>(pMessage, nCode);
        break;
    case SD_BUS_TYPE_INT64:
        text << Basic<std::int64_t>(pMessage, nCode);
        break;
    case SD_BUS_TYPE_DOUBLE:
        text << Basic<double>(pMessage, nCode);
        break;
    default:
        throw std::runtime_error("a type that the tests do not use");
    }
    return text.str();
}

std::string ListText(sd_bus_message* pMessage, const char* pSeparator);

std::string ContainerText(sd_bus_message* pMessage, char nCode, const char* pContents)
{
    Check(sd_bus_message_enter_container(pMessage, nCode, pContents));
    std::string sText;
    switch (nCode) {
    case SD_BUS_TYPE_ARRAY:
        sText = "[" + ListText(pMessage, ", ") + "]";
        break;
    case SD_BUS_TYPE_VARIANT:
        sText = "<" + ListText(pMessage, ", ") + ">";
        break;
    case SD_BUS_TYPE_DICT_ENTRY:
        sText = "{" + ListText(pMessage, ": ") + "}";
        break;
    default:
        sText = "(" + ListText(pMessage, ", ") + ")";
        break;
    }
    Check(sd_bus_message_exit_container(pMessage));
    return sText;
}

std::string ListText(sd_bus_message* pMessage, const char* pSeparator)
{
    std::string sText;
    while (true) {
        char nCode = 0;
        const char* pContents = nullptr;
        const int nMore = sd_bus_message_peek_type(pMessage, &nCode, &pContents);
        Check(nMore);
        if (nMore == 0)
            return sText;
        sText +=
            (sText.empty() ? "" : pSeparator) +
            (pContents ? ContainerText(pMessage, nCode, pContents) : BasicText(pMessage, nCode));
    }
}

} // namespace

std::string DescribeArguments(sd_bus_message* pMessage)
{
    Check(sd_bus_message_rewind(pMessage, true));
    const std::string sText = ListText(pMessage, " ");
    Check(sd_bus_message_rewind(pMessage, true));
    return sText;
}

} // namespace Tovra::TestSupport
