#include "simulator/BusConnection.h"
#include "simulator/Guard.h"
#include "simulator/MessageIo.h"

#include <memory>

namespace Tovra::Simulator
{

namespace
{

constexpr const char* pName = "net.connman";

using MessagePointer = std::shared_ptr<sd_bus_message>;

MessagePointer Adopt(sd_bus_message* pMessage)
{
    return MessagePointer(pMessage, sd_bus_message_unref);
}

std::string ToText(const char* pText)
{
    return pText ? pText : "";
}

Call ReadCall(sd_bus_message* pMessage)
{
    Call call;
    call.sSender = ToText(sd_bus_message_get_sender(pMessage));
    call.sPath = ToText(sd_bus_message_get_path(pMessage));
    call.sInterface = ToText(sd_bus_message_get_interface(pMessage));
    call.sMember = ToText(sd_bus_message_get_member(pMessage));
    call.arguments = Read(pMessage);
    call.bNoReply = sd_bus_message_get_expect_reply(pMessage) == 0;
    return call;
}

Reply ReadReply(sd_bus_message* pMessage)
{
    Reply reply;
    reply.arguments = Read(pMessage);
    if (const sd_bus_error* pError = sd_bus_message_get_error(pMessage)) {
        reply.sError = ToText(pError->name);
        reply.sErrorMessage = ToText(pError->message);
    }
    return reply;
}

MessagePointer MakeReplyMessage(sd_bus_message* pCall, const Reply& reply)
{
    sd_bus_message* pMessage = nullptr;
    if (reply.IsError()) {
        const sd_bus_error error = {reply.sError.c_str(), reply.sErrorMessage.c_str(), 0};
        Check(sd_bus_message_new_method_error(pCall, &pMessage, &error), "make an error");
        return Adopt(pMessage);
    }
    Check(sd_bus_message_new_method_return(pCall, &pMessage), "make a reply");
    MessagePointer pReply = Adopt(pMessage);
    Append(pReply.get(), reply.arguments);
    return pReply;
}

// Who has gone in the meantime gets no answer, and that is no error.
void Send(sd_bus* pBus, sd_bus_message* pMessage)
{
    sd_bus_send(pBus, pMessage, nullptr);
}

Answer MakeAnswer(sd_bus_message* pCall)
{
    if (sd_bus_message_get_expect_reply(pCall) == 0)
        return [](const Reply&) {};
    return [pKept = Adopt(sd_bus_message_ref(pCall))](const Reply& reply) {
        Send(sd_bus_message_get_bus(pKept.get()), MakeReplyMessage(pKept.get(), reply).get());
    };
}

// Owned by the slot of the call that it waits for.
struct PendingAnswer {
    Answer fnAnswer;

    static int Arrived(sd_bus_message* pMessage, void* pPending, sd_bus_error*)
    {
        Guard([&] { static_cast<PendingAnswer*>(pPending)->fnAnswer(ReadReply(pMessage)); });
        return 1;
    }

    static void Free(void* pPending) { delete static_cast<PendingAnswer*>(pPending); }
};

} // namespace

BusConnection::BusConnection(sd_event* pLoop, std::string sBusAddress, OnCall fnCallArrived,
                             OnGone fnConnectionGone)
    : pEvent(pLoop),
      sAddress(std::move(sBusAddress)),
      fnCall(std::move(fnCallArrived)),
      fnGone(std::move(fnConnectionGone))
{
}

BusConnection::~BusConnection()
{
    Close();
}

void BusConnection::Open()
{
    try {
        Connect();
        Check(sd_bus_attach_event(pBus, pEvent, SD_EVENT_PRIORITY_NORMAL), "watch the bus");
        Check(sd_bus_add_filter(pBus, nullptr, OnMessage, this), "listen to calls");
        Check(sd_bus_match_signal(pBus, nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "NameOwnerChanged", OnNameOwnerChanged,
                                  this),
              "listen to the bus");
        Check(sd_bus_request_name(pBus, pName, 0), "get the name net.connman");
    } catch (...) {
        Close();
        throw;
    }
}

void BusConnection::Connect()
{
    if (sAddress.empty()) {
        Check(sd_bus_open_system(&pBus), "connect to the system bus");
        return;
    }
    Check(sd_bus_new(&pBus), "make a connection");
    Check(sd_bus_set_address(pBus, sAddress.c_str()), "use the bus's address");
    Check(sd_bus_set_bus_client(pBus, 1), "become a client");
    Check(sd_bus_start(pBus), "connect to the bus");
}

void BusConnection::Close()
{
    sd_bus_flush_close_unref(std::exchange(pBus, nullptr));
}

std::string BusConnection::GetUniqueName() const
{
    const char* pUnique = nullptr;
    return pBus && sd_bus_get_unique_name(pBus, &pUnique) >= 0 ? pUnique : "";
}

void BusConnection::Emit(const Signal& signal)
{
    if (!pBus)
        return;
    sd_bus_message* pMessage = nullptr;
    Check(sd_bus_message_new_signal(pBus, &pMessage, signal.sPath.c_str(),
                                    signal.sInterface.c_str(), signal.sMember.c_str()),
          "make a signal");
    const MessagePointer pSignal = Adopt(pMessage);
    Append(pMessage, signal.arguments);
    if (!signal.sDestination.empty())
        Check(sd_bus_message_set_destination(pMessage, signal.sDestination.c_str()),
              "address a signal");
    Check(sd_bus_send(pBus, pMessage, nullptr), "send a signal");
}

void BusConnection::Call(const OutgoingCall& call, std::chrono::milliseconds timeout,
                         Answer fnAnswer)
{
    if (!pBus)
        return;
    sd_bus_message* pMessage = nullptr;
    Check(sd_bus_message_new_method_call(pBus, &pMessage, call.sDestination.c_str(),
                                         call.sPath.c_str(), call.sInterface.c_str(),
                                         call.sMember.c_str()),
          "make a call");
    const MessagePointer pCall = Adopt(pMessage);
    Append(pMessage, call.arguments);
    if (!fnAnswer) {
        Check(sd_bus_message_set_expect_reply(pMessage, 0), "ask for no reply");
        return Send(pBus, pMessage);
    }

    const std::chrono::microseconds microseconds = timeout;
    auto pPending = std::make_unique<PendingAnswer>(PendingAnswer{std::move(fnAnswer)});
    sd_bus_slot* pSlot = nullptr;
    Check(sd_bus_call_async(pBus, &pSlot, pMessage, PendingAnswer::Arrived, pPending.get(),
                            static_cast<std::uint64_t>(microseconds.count())),
          "send a call");
    sd_bus_slot_set_destroy_callback(pSlot, PendingAnswer::Free);
    pPending.release(); // the slot's from here on
    sd_bus_slot_set_floating(pSlot, 1);
    sd_bus_slot_unref(pSlot);
}

void BusConnection::Flush()
{
    if (pBus)
        Check(sd_bus_flush(pBus), "send everything");
}

int BusConnection::OnMessage(sd_bus_message* pMessage, void* pConnection, sd_bus_error*)
{
    if (sd_bus_message_is_method_call(pMessage, nullptr, nullptr) == 0 ||
        ToText(sd_bus_message_get_interface(pMessage)) == "org.freedesktop.DBus.Peer")
        return 0;
    Guard([&] {
        static_cast<BusConnection*>(pConnection)->fnCall(ReadCall(pMessage), MakeAnswer(pMessage));
    });
    return 1;
}

int BusConnection::OnNameOwnerChanged(sd_bus_message* pMessage, void* pConnection, sd_bus_error*)
{
    Guard([&] {
        const Arguments arguments = Read(pMessage);
        if (arguments.sSignature == "sss" && arguments.values[2] == "")
            static_cast<BusConnection*>(pConnection)->fnGone(arguments.values[0]);
    });
    return 0;
}

} // namespace Tovra::Simulator
