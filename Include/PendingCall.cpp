#include "Callbacks.h"
#include "D-Bus.h"

#include <dbus/dbus.h>
#include <mutex>

namespace Tovra::DBus
{

namespace
{

/**
 * The mark that a call's reply has been taken. It lives with the call, in a data slot, since a
 * second steal aborts the process and libdbus does not tell whether there was a first.
 */
class TakenMark
{
public:
    TakenMark() noexcept { dbus_pending_call_allocate_data_slot(&nSlot); }

    /** False when the reply has been taken before, or cannot be marked as taken. */
    bool Take(DBusPendingCall* pPending)
    {
        const std::lock_guard<std::mutex> lock(mtxTaking); // two threads may have a copy each
        return nSlot >= 0 && !dbus_pending_call_get_data(pPending, nSlot) &&
               dbus_pending_call_set_data(pPending, nSlot, this, nullptr);
    }

private:
    dbus_int32_t nSlot = -1;
    std::mutex mtxTaking;
};

TakenMark& GetTakenMark()
{
    static TakenMark mark;
    return mark;
}

} // namespace

PendingCall PendingCall::Adopt(DBusPendingCall* pPending) noexcept
{
    return PendingCall(pPending);
}

PendingCall PendingCall::Reference(DBusPendingCall* pPending) noexcept
{
    if (pPending)
        AddReference(pPending);
    return PendingCall(pPending);
}

void PendingCall::SetOnComplete(const std::function<void(PendingCall&)>& callback)
{
    if (!*this)
        return;
    auto pWrapper = std::make_unique<ReturnWrapper>(ReturnWrapper{callback});
    if (dbus_pending_call_set_notify(Get(), ReturnWrapper::Call, pWrapper.get(),
                                     ReturnWrapper::Free))
        pWrapper.release(); // libdbus's from here on
}

bool PendingCall::IsCompleted() const
{
    return dbus_pending_call_get_completed(Get()) != FALSE;
}

Message PendingCall::ReceiveReply()
{
    if (!IsCompleted() || !GetTakenMark().Take(Get()))
        return Message();
    return Message::Adopt(dbus_pending_call_steal_reply(Get()));
}

} // namespace Tovra::DBus
