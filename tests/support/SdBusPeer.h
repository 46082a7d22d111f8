#pragma once

#include "tests/support/Waiting.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>

namespace Tovra::TestSupport
{

/** A method call or signal as another D-Bus implementation saw it arrive. */
struct PeerMessage {
    std::string sPath;
    std::string sInterface;
    std::string sMember;
    std::string sSignature;
    std::string sBody; ///< every value after its type code, see SdBusText.h
};

/**
 * Another connection to a bus, made with sd-bus and served by a thread of its own, which ends with
 * this object. It records the method calls and signals that reach it and answers each call with
 * the call's own arguments, or with those it was told.
 */
class SdBusPeer
{
public:
    /** Appends arguments; negative on failure, as sd_bus_message_append has it. */
    using Fill = std::function<int(sd_bus_message*)>;

    /** Connects and waits for the bus's welcome; throws std::runtime_error if none comes. */
    explicit SdBusPeer(const std::string& sAddress);
    ~SdBusPeer();

    SdBusPeer(const SdBusPeer&) = delete;
    SdBusPeer& operator=(const SdBusPeer&) = delete;

    const std::string& GetName() const { return sName; }

    /** What the calls to come are answered with. `fnFill` runs on the peer's thread. */
    void AnswerWith(Fill fnFill);

    /** The oldest message not yet taken; nothing if none comes before the deadline. */
    std::optional<PeerMessage> Take() { return received.Take(); }

private:
    struct Unref {
        void operator()(sd_bus* pBus) const { sd_bus_flush_close_unref(pBus); }
        void operator()(sd_bus_message* pMessage) const { sd_bus_message_unref(pMessage); }
    };
    using MessagePointer = std::unique_ptr<sd_bus_message, Unref>;

    static int OnMessage(sd_bus_message* pMessage, void* pPeer, sd_bus_error* pError);
    void Answer(sd_bus_message* pCall);
    void Run();
    bool Wait();

    std::unique_ptr<sd_bus, Unref> pConnection;
    std::string sName;
    int nStop = -1;
    Mailbox<PeerMessage> received;
    std::mutex mtxFill;
    Fill fnAnswer;
    std::thread thread;
};

} // namespace Tovra::TestSupport
