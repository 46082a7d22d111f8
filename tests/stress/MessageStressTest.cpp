#include "tests/dbus/OnTheBus.h"
#include "tests/support/Counts.h"
#include "tests/support/SdBusPeer.h"

#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace Tovra::DBus
{

namespace
{

constexpr unsigned nSenders = 8;
constexpr int nAllMessages = 200000;
constexpr int nMessages = TestSupport::ReduceCount(nAllMessages, nAllMessages, 100000);
constexpr unsigned nPerSender = nMessages / nSenders;

// A sender waits while so many of its messages are under way; together the senders stay below the
// number of replies that a system bus lets one connection wait for.
constexpr unsigned nWindow = 12;

// The three ways that a message takes, by its number.
constexpr unsigned nWays = 3;
constexpr std::array<const char*, nWays> ways = {"Echo", "Take", "Ask"};

/** Lets so many messages be under way at once. */
class Window
{
public:
    /** False if none comes back in time. */
    bool Leave(unsigned nLimit = nWindow)
    {
        std::unique_lock<std::mutex> lock(mtxUnderWay);
        if (!changed.wait_for(lock, TestSupport::deadline, [&] { return nUnderWay < nLimit; }))
            return false;
        ++nUnderWay;
        return true;
    }

    void Arrive()
    {
        const std::lock_guard<std::mutex> lock(mtxUnderWay);
        --nUnderWay;
        changed.notify_all();
    }

private:
    std::mutex mtxUnderWay;
    std::condition_variable changed;
    unsigned nUnderWay = 0;
};

/** What came from a sender on each way: the number that comes next, and whether all came so. */
struct Arrivals {
    std::array<unsigned, nWays> next = {0, 1, 2};
    bool bInOrder = true;
};

// The peer answers "Echo" with a signal and anything else with a reply, both with its arguments.
int AnswerAsPeer(sd_bus_message* pReply)
{
    sd_bus* const pBus = sd_bus_message_get_bus(pReply);
    sd_bus_message* const pCall = sd_bus_get_current_message(pBus);
    if (std::string(sd_bus_message_get_member(pCall)) != "Echo")
        return sd_bus_message_copy(pReply, pCall, true);
    sd_bus_message* pSignal = nullptr;
    int nResult = sd_bus_message_new_signal(pBus, &pSignal, "/peer", "net.example.Peer", "Echoed");
    if (nResult >= 0)
        nResult = sd_bus_message_copy(pSignal, pCall, true);
    if (nResult >= 0)
        nResult = sd_bus_send(pBus, pSignal, nullptr);
    sd_bus_message_unref(pSignal);
    return nResult;
}

} // namespace

/**
 * A third of the messages goes to the peer, which answers with a signal; a third to an object of
 * the connection itself; a third to the same object, which asks the peer and awaits its reply. So
 * all that arrives does so on the dispatch thread, and all is told there from whom it is.
 */
class MessageStress : public OnTheBus
{
protected:
    void Install()
    {
        peer.AnswerWith(AnswerAsPeer);
        connection.Listen("net.example.Peer");
        connection.Signal(
            "net.example.Peer", "Echoed",
            [this](const std::string&, const Message& message) { NoteArrival(message, 0); });
        connection.RegisterObject(
            pPath, [this](const std::string&, const std::string& member, const Message& message) {
                if (member == "Take")
                    NoteArrival(message, 1);
                else
                    AskPeer(message.Contents(2));
                return true;
            });
    }

    void AskPeer(const std::vector<Data>& vecArguments)
    {
        Message question = MakeCallToPeer("Answer");
        question.Add(vecArguments.at(0)).Add(vecArguments.at(1));
        connection.SendWithReply(question, -1).SetOnComplete([this](PendingCall& completed) {
            NoteArrival(completed.ReceiveReply(), 2);
        });
    }

    Message MakeCallToPeer(const char* member) const
    {
        return Message(peer.GetName().c_str(), "/peer", "net.example.Peer", member);
    }

    void NoteArrival(const Message& message, unsigned nWay)
    {
        const std::vector<Data> vecArguments = message.Contents(2);
        const auto nSender = vecArguments.at(0).As<std::uint32_t>();
        unsigned& nNext = arrivals.at(nSender).next.at(nWay);
        if (vecArguments.at(1).As<std::uint32_t>() != nNext)
            arrivals.at(nSender).bInOrder = false;
        nNext += nWays;
        windows.at(nSender).Arrive();
    }

    void SendAll(unsigned nSender)
    {
        Window& window = windows.at(nSender);
        for (unsigned nNumber = 0; nNumber < nPerSender; ++nNumber) {
            if (!window.Leave())
                return;
            const unsigned nWay = nNumber % nWays;
            Message call = nWay == 0 ? MakeCallToPeer(ways.at(nWay)) : MakeCall(ways.at(nWay));
            call.SetNoReply().Add(Data::MakeUInt32(nSender)).Add(Data::MakeUInt32(nNumber));
            connection.Send(call);
        }
        window.Leave(1); // once all have arrived
    }

    TestSupport::Watchdog whole{std::chrono::minutes(9)};
    TestSupport::SdBusPeer peer{TestSupport::GetSystemBus().GetAddress()};
    std::array<Window, nSenders> windows;
    std::array<Arrivals, nSenders> arrivals; // the dispatch thread's while it runs
};

TEST_F(MessageStress, WhatEightThreadsSendArrivesCompleteAndInTheOrderOfEach)
{
    Install();
    {
        Thread thread;
        thread.RunIfNotRunning();
        std::vector<std::thread> vecSenders;
        for (unsigned nSender = 0; nSender < nSenders; ++nSender)
            vecSenders.emplace_back([this, nSender] { SendAll(nSender); });
        for (std::thread& sender : vecSenders)
            sender.join();
    }
    for (unsigned nSender = 0; nSender < nSenders; ++nSender) {
        SCOPED_TRACE(nSender);
        EXPECT_TRUE(arrivals.at(nSender).bInOrder);
        for (const unsigned nNext : arrivals.at(nSender).next)
            EXPECT_GE(nNext, nPerSender);
    }
    TestSupport::PrintCount("messages", nMessages, nAllMessages);
}

} // namespace Tovra::DBus
