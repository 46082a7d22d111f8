#include "tests/connman/LiveClient.h"

#include <dbus/dbus.h>
#include <thread>

namespace Tovra
{

using TestSupport::Eventually;

/** Callbacks that are registered while signals keep the dispatch thread calling them. */
class Registration : public LiveClient
{
protected:
    static constexpr std::size_t nThreads = 4;
    static constexpr std::size_t nEach = 25;

    Registration() { Start(); }

    ~Registration() override { StopClient(); }

    /** From now on until the test ends; each signal is handled before many more are sent. */
    void StartStorm()
    {
        storm = std::thread([this] {
            for (unsigned nSent = 0; !bStop; nSent += nBurst) {
                daemon.EmitStorm(DaemonData::StrengthChanged(sHome, nSent % 100), nBurst);
                EXPECT_TRUE(Eventually([&] { return nHandled >= nSent; }));
            }
        });
    }

    void StopStorm()
    {
        bStop = true;
        storm.join();
    }

    void RegisterCounting(std::size_t nFirst)
    {
        for (std::size_t nCallback = nFirst; nCallback < nFirst + nEach; ++nCallback) {
            std::atomic<unsigned>& nCalls = vecCalls[nCallback];
            pClient->SetOnNetworksChanged([&nCalls](unsigned int) { ++nCalls; }, 8);
        }
    }

    /** What the agent says the network's name is; empty if it does not answer. */
    std::string AskAgent()
    {
        const Simulator::Reply reply =
            daemon.CallRaw({dbus_bus_get_unique_name(pThread->GetDbusConnection().Get()),
                            "/tovra/corvane/connman/agent", "net.connman.Agent", "RequestInput",
                            DaemonData::Parse("oa{sv}", R"(["/s", {"Name": ["a{sv}", {
                 "Type": ["s", "string"], "Requirement": ["s", "mandatory"]}]}])")},
                           TestSupport::deadline);
        return reply.IsError() ? "" : reply.arguments.values[0]["Name"][1].get<std::string>();
    }

    static constexpr unsigned nBurst = 20;
    std::vector<std::atomic<unsigned>> vecCalls =
        std::vector<std::atomic<unsigned>>(nThreads * nEach);
    std::atomic<unsigned> nHandled = 0;

private:
    std::atomic<bool> bStop = false;
    std::thread storm;
};

TEST_F(Registration, ByOneThreadUnderLoadLosesNoCallback)
{
    pClient->SetOnNetworksChanged([this](unsigned int) { ++nHandled; }, 8);
    StartStorm();
    RegisterCounting(0);
    for (std::size_t nCallback = 0; nCallback < nEach; ++nCallback)
        EXPECT_TRUE(Eventually([&] { return vecCalls[nCallback] > 0; })) << nCallback;
    StopStorm();
}

TEST_F(Registration, BySeveralThreadsUnderLoadLosesNoCallback)
{
    pClient->SetOnNetworksChanged([this](unsigned int) { ++nHandled; }, 8);
    StartStorm();
    std::vector<std::thread> vecThreads;
    for (std::size_t nThread = 0; nThread < nThreads; ++nThread)
        vecThreads.emplace_back([this, nThread] { RegisterCounting(nThread * nEach); });
    for (std::thread& thread : vecThreads)
        thread.join();
    for (std::size_t nCallback = 0; nCallback < vecCalls.size(); ++nCallback)
        EXPECT_TRUE(Eventually([&] { return vecCalls[nCallback] > 0; })) << nCallback;
    StopStorm();
}

TEST_F(Registration, OfTheAgentsCallbackUnderLoadLetsTheNewestAnswer)
{
    std::thread asking([this] {
        for (int nCall = 0; nCall < 50; ++nCall)
            AskAgent();
    });
    for (int nVersion = 1; nVersion <= 50; ++nVersion)
        pClient->SetOnAgentRequest(
            [nVersion](const auto&, const auto&) -> std::map<std::string, std::string> {
                return {{"Name", std::to_string(nVersion)}};
            });
    asking.join();
    EXPECT_EQ(AskAgent(), "50");
}

} // namespace Tovra
