#include "Wakeup.h"

#include <array>
#include <cstdint>
#include <dbus/dbus.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Tovra::DBus
{

namespace
{

class Wakeup
{
public:
    Wakeup() : nDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    ~Wakeup()
    {
        if (nDescriptor >= 0)
            close(nDescriptor);
    }

    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    int GetDescriptor() const { return nDescriptor; }

    // libdbus calls this while it holds the connection's lock: it must not call back.
    static void Ring(void* pWakeup)
    {
        const std::uint64_t nOnce = 1;
        [[maybe_unused]] const ssize_t nWritten =
            write(static_cast<Wakeup*>(pWakeup)->nDescriptor, &nOnce, sizeof(nOnce));
    }

    void Silence()
    {
        std::uint64_t nRings = 0;
        [[maybe_unused]] const ssize_t nRead = read(nDescriptor, &nRings, sizeof(nRings));
    }

    static void Free(void* pWakeup) { delete static_cast<Wakeup*>(pWakeup); }

private:
    const int nDescriptor; // -1 if the process has none left: then it is never rung
};

struct DataSlot {
    dbus_int32_t nSlot = -1;

    DataSlot() { dbus_connection_allocate_data_slot(&nSlot); }
};

dbus_int32_t GetSlot()
{
    static const DataSlot slot;
    return slot.nSlot;
}

Wakeup* FindWakeup(DBusConnection* pConnection)
{
    const dbus_int32_t nSlot = GetSlot(); // negative if there was no memory for one
    return nSlot < 0 ? nullptr : static_cast<Wakeup*>(dbus_connection_get_data(pConnection, nSlot));
}

short GetEvents(DBusConnection* pConnection)
{
    return dbus_connection_has_messages_to_send(pConnection) ? POLLIN | POLLOUT : POLLIN;
}

} // namespace

void InstallWakeup(DBusConnection* pConnection)
{
    static std::mutex mtxInstall;
    const std::lock_guard<std::mutex> lock(mtxInstall);
    if (GetSlot() < 0 || FindWakeup(pConnection))
        return;
    auto pWakeup = std::make_unique<Wakeup>();
    if (!dbus_connection_set_data(pConnection, GetSlot(), pWakeup.get(), Wakeup::Free))
        return;
    dbus_connection_set_wakeup_main_function(pConnection, Wakeup::Ring, pWakeup.release(), nullptr);
}

int WaitForWork(DBusConnection* pConnection, int timeout)
{
    Wakeup* const pWakeup = FindWakeup(pConnection);
    // Before the looks below: whatever happens after a look rings again.
    if (pWakeup)
        pWakeup->Silence();

    switch (dbus_connection_get_dispatch_status(pConnection)) {
    case DBUS_DISPATCH_DATA_REMAINS:
        return 0;
    case DBUS_DISPATCH_NEED_MEMORY:
        return timeout;
    case DBUS_DISPATCH_COMPLETE:
        break;
    }

    int nSocket = -1;
    if (!dbus_connection_get_unix_fd(pConnection, &nSocket))
        return 0; // closed
    if (!dbus_connection_get_is_authenticated(pConnection))
        return timeout; // only libdbus knows whose turn it is to write

    std::array<pollfd, 2> descriptors = {
        pollfd{nSocket, GetEvents(pConnection), 0},
        pollfd{pWakeup ? pWakeup->GetDescriptor() : -1, POLLIN, 0},
    };
    poll(descriptors.data(), descriptors.size(), timeout);
    return 0;
}

} // namespace Tovra::DBus
