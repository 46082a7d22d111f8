#pragma once

#include "Common/ConnMan.h"
#include "simulator/Daemon.h"
#include "tests/connman/ClientLog.h"
#include "tests/connman/PrivateOpt.h"
#include "tests/support/HostLog.h"

#include <gtest/gtest.h>
#include <optional>

namespace Tovra
{

/**
 * The client as the plug-in has it, with its dispatch thread running, and a simulated ConnMan on
 * the private bus. What the client does to the system, it does in a private /opt.
 */
class ClientOnBus : public testing::Test
{
protected:
    explicit ClientOnBus(const Simulator::Scenario& scenario = {}) : daemon(scenario) {}

    void SetUp() override
    {
        PrivateOpt::Clear();
        TestSupport::HostLog::Reset();
        client.emplace();
        GetClient().SetOnNetworksChanged([this](unsigned int word) { started.Put(word); },
                                         ConnMan::TechnologiesChanged);
        client->thread.RunIfNotRunning();
        ASSERT_TRUE(started.Take()) << "technologies come after services";
        sClientName = daemon.GetCalls("RegisterAgent").at(0).sSender;
        daemon.ClearCalls();
    }

    void TearDown() override { StopClient(); }

    /** As at process exit; what the callbacks use must still be there. */
    void StopClient() { client.reset(); }

    ConnMan& GetClient() { return client->connMan; }

    /** Waits until everything that the client sent so far has been recorded. */
    void Settle()
    {
        const std::string sPath = "/settle/" + std::to_string(++nSettled);
        DBus::Message marker("net.connman", sPath.c_str(), "net.example.Marker", "Settle");
        client->thread.GetDbusConnection().Send(marker.SetNoReply());
        const auto isMarker = [&](const Simulator::Call& call) { return call.sPath == sPath; };
        ASSERT_TRUE(daemon.WaitForCall(isMarker, TestSupport::deadline));
    }

    /** Waits until the client has handled everything that the daemon sent so far. */
    void AwaitHandled()
    {
        const Simulator::Reply reply = CallClient("net.example.Marker", "Settle");
        ASSERT_EQ(reply.sError, "org.freedesktop.DBus.Error.UnknownMethod");
    }

    /** Each call that came since the client had started: path, interface, member, arguments. */
    std::vector<std::string> GetCalls()
    {
        Settle();
        std::vector<std::string> vecCalls;
        for (const Simulator::Call& call : daemon.GetCalls()) {
            if (call.sInterface != "net.example.Marker")
                vecCalls.push_back(Describe(call));
        }
        return vecCalls;
    }

    /** Calls the client's agent object and waits for the answer. */
    Simulator::Reply CallClient(const std::string& sInterface, const std::string& sMember,
                                const Simulator::Arguments& arguments = {})
    {
        return daemon.CallRaw(
            {sClientName, "/tovra/corvane/connman/agent", sInterface, sMember, arguments},
            TestSupport::deadline);
    }

    static std::string Describe(const Simulator::Call& call)
    {
        std::string sText = call.sPath + " " + call.sInterface + " " + call.sMember;
        if (!call.arguments.sSignature.empty())
            sText += " " + call.arguments.sSignature + call.arguments.values.dump();
        return sText + (call.bNoReply ? "" : " and wants a reply");
    }

    Simulator::Daemon daemon;
    std::string sClientName;

    std::optional<ConnManThread> client;

private:
    TestSupport::Mailbox<unsigned int> started;
    unsigned nSettled = 0;
};

} // namespace Tovra
