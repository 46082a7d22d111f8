#include "Callbacks.h"

#include <exception>
#include <utility>

namespace Tovra::DBus
{

namespace
{

thread_local std::exception_ptr pThrown;

template <class Callback> void Guard(const Callback& callback) noexcept
{
    try {
        callback();
    } catch (...) {
        pThrown = std::current_exception();
    }
}

// A header field may be missing: a signal without a path, a call without an interface.
std::string ToText(const char* pText)
{
    return pText ? pText : "";
}

} // namespace

void RethrowCallbackException()
{
    if (pThrown)
        std::rethrow_exception(std::exchange(pThrown, nullptr));
}

DBusHandlerResult SignalFilter::Call(DBusConnection*, DBusMessage* pMessage, void* pFilter)
{
    const auto& filter = *static_cast<const SignalFilter*>(pFilter);
    if (!dbus_message_is_signal(pMessage, filter.sInterface.c_str(), filter.sMember.c_str()))
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;

    Guard([&] {
        const Message message = Message::Reference(pMessage);
        filter.fnCallback(ToText(dbus_message_get_path(pMessage)), message);
    });
    return DBUS_HANDLER_RESULT_HANDLED;
}

void SignalFilter::Free(void* pFilter)
{
    delete static_cast<SignalFilter*>(pFilter);
}

DBusHandlerResult ObjectHandler::MessageFunction(DBusConnection*, DBusMessage* pMessage,
                                                 void* pHandler)
{
    const auto& handler = *static_cast<const ObjectHandler*>(pHandler);
    bool bHandled = false;
    Guard([&] {
        const Message message = Message::Reference(pMessage);
        bHandled = handler.fnCallback(ToText(dbus_message_get_interface(pMessage)),
                                      ToText(dbus_message_get_member(pMessage)), message);
    });
    return bHandled ? DBUS_HANDLER_RESULT_HANDLED : DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

void ObjectHandler::UnregisterFunction(DBusConnection*, void* pHandler)
{
    delete static_cast<ObjectHandler*>(pHandler);
}

void ReturnWrapper::Call(DBusPendingCall* pPending, void* pWrapper)
{
    // Called once; and setting another one in it, which frees the record, must not free it.
    const auto fnCallback = std::move(static_cast<ReturnWrapper*>(pWrapper)->fnCallback);
    Guard([&] {
        PendingCall pending = PendingCall::Reference(pPending);
        fnCallback(pending);
    });
}

void ReturnWrapper::Free(void* pWrapper)
{
    delete static_cast<ReturnWrapper*>(pWrapper);
}

const ::DBusObjectPathVTable DBusObjectPathVTable = {
    ObjectHandler::UnregisterFunction,
    ObjectHandler::MessageFunction,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

} // namespace Tovra::DBus
