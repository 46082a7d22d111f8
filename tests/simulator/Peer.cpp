#include "tests/simulator/Peer.h"
#include "simulator/MessageIo.h"

namespace Tovra::Simulator
{

namespace
{

std::string ToText(const char* pText)
{
    return pText ? pText : "";
}

sd_bus_message* MakeCall(sd_bus* pBus, const std::string& sPath, const std::string& sInterface,
                         const std::string& sMember, const Arguments& arguments)
{
    sd_bus_message* pCall = nullptr;
    Check(sd_bus_message_new_method_call(pBus, &pCall, "net.connman", sPath.c_str(),
                                         sInterface.empty() ? nullptr : sInterface.c_str(),
                                         sMember.c_str()),
          "make a call");
    Append(pCall, arguments);
    return pCall;
}

void AnswerCall(sd_bus_message* pCall, const Reply& reply)
{
    if (reply.IsError()) {
        sd_bus_reply_method_errorf(pCall, reply.sError.c_str(), "%s", reply.sErrorMessage.c_str());
        return;
    }
    sd_bus_message* pReply = nullptr;
    Check(sd_bus_message_new_method_return(pCall, &pReply), "make a reply");
    Append(pReply, reply.arguments);
    sd_bus_send(nullptr, pReply, nullptr);
    sd_bus_message_unref(pReply);
}

Reply ReadReply(sd_bus_message* pMessage)
{
    Reply reply;
    reply.arguments = Read(pMessage);
    if (const sd_bus_error* pError = sd_bus_message_get_error(pMessage)) {
        reply.sError = pError->name;
        reply.sErrorMessage = ToText(pError->message);
    }
    return reply;
}

} // namespace

Peer::Peer(Agent fnAgentCalled) : fnAgent(std::move(fnAgentCalled))
{
    Check(sd_bus_open_system(&pBus), "open a bus");
    Check(sd_bus_open_system(&pAsking), "open a bus");
    Check(sd_bus_add_filter(pBus, nullptr, OnMessage, this), "listen");
    Check(sd_bus_add_match(pBus, nullptr, "type='signal',sender='net.connman'", nullptr, nullptr),
          "listen");
    const char* pName = nullptr;
    Check(sd_bus_get_unique_name(pBus, &pName), "know the own name");
    sName = pName;
    thread = std::thread([this] { Run(); });
}

Peer::~Peer()
{
    bStopping = true;
    thread.join();
    sd_bus_flush_close_unref(pBus);
    sd_bus_flush_close_unref(pAsking);
}

Reply Peer::Ask(const std::string& sPath, const std::string& sInterface, const std::string& sMember,
                const Arguments& arguments)
{
    sd_bus_message* pCall = MakeCall(pAsking, sPath, sInterface, sMember, arguments);
    sd_bus_message* pReply = nullptr;
    sd_bus_error error = {nullptr, nullptr, 0};
    const int nResult = sd_bus_call(pAsking, pCall, 0, &error, &pReply);
    Reply reply;
    if (nResult < 0)
        reply = {{}, error.name, ToText(error.message)};
    else
        reply = ReadReply(pReply);
    sd_bus_error_free(&error);
    sd_bus_message_unref(pReply);
    sd_bus_message_unref(pCall);
    return reply;
}

void Peer::Start(const std::string& sPath, const std::string& sInterface,
                 const std::string& sMember, const Arguments& arguments)
{
    Post([=] {
        sd_bus_message* pCall = MakeCall(pBus, sPath, sInterface, sMember, arguments);
        Check(sd_bus_call_async(pBus, nullptr, pCall, OnReply, this, UINT64_MAX), "call");
        sd_bus_message_unref(pCall);
    });
}

void Peer::StartWithoutReply(const std::string& sPath, const std::string& sInterface,
                             const std::string& sMember)
{
    Post([=] {
        sd_bus_message* pCall = MakeCall(pBus, sPath, sInterface, sMember, {});
        Check(sd_bus_message_set_expect_reply(pCall, 0), "ask for no reply");
        Check(sd_bus_send(pBus, pCall, nullptr), "call");
        sd_bus_message_unref(pCall);
    });
}

void Peer::Post(std::function<void()> fn)
{
    const std::lock_guard<std::mutex> lock(mtxStarted);
    vecStarted.push_back(std::move(fn));
}

std::optional<Signal> Peer::TakeSignal(const std::string& sMember)
{
    for (;;) {
        std::optional<Signal> signal = signals.Take();
        if (!signal || signal->sMember == sMember)
            return signal;
    }
}

int Peer::OnMessage(sd_bus_message* pMessage, void* pPeer, sd_bus_error*)
{
    auto& peer = *static_cast<Peer*>(pPeer);
    const std::string sPath = ToText(sd_bus_message_get_path(pMessage));
    const std::string sInterface = ToText(sd_bus_message_get_interface(pMessage));
    const std::string sMember = ToText(sd_bus_message_get_member(pMessage));
    if (sd_bus_message_is_signal(pMessage, nullptr, nullptr) > 0) {
        if (sInterface != "org.freedesktop.DBus")
            peer.signals.Put({sPath, sInterface, sMember, Read(pMessage), ""});
        return 0;
    }
    if (sd_bus_message_is_method_call(pMessage, nullptr, nullptr) <= 0)
        return 0;
    const Call call = {
        ToText(sd_bus_message_get_sender(pMessage)),   sPath, sInterface, sMember, Read(pMessage),
        sd_bus_message_get_expect_reply(pMessage) == 0};
    peer.calls.Put(call);
    if (peer.fnAgent && !call.bNoReply)
        AnswerCall(pMessage, peer.fnAgent(call));
    return 1;
}

int Peer::OnReply(sd_bus_message* pMessage, void* pPeer, sd_bus_error*)
{
    static_cast<Peer*>(pPeer)->replies.Put(ReadReply(pMessage));
    return 1;
}

void Peer::Run()
{
    constexpr std::uint64_t nMicroseconds = 1000;
    while (!bStopping) {
        {
            const std::lock_guard<std::mutex> lock(mtxStarted);
            for (const auto& fn : std::exchange(vecStarted, {}))
                fn();
        }
        while (sd_bus_process(pBus, nullptr) > 0) {
        }
        sd_bus_wait(pBus, nMicroseconds);
    }
}

} // namespace Tovra::Simulator
