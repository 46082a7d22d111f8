#include "Common/ConnMan.h"
#include "tests/connman/DaemonData.h"
#include "tests/support/Counts.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Waiting.h"

#include <atomic>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace Tovra
{

using Simulator::Behaviour;
using TestSupport::Eventually;

/**
 * Many threads that read the lists and send commands while the daemon sends signals as fast as the
 * client takes them. Every record of a list bears the mark of the list's generation.
 */
class ListStress : public testing::Test
{
protected:
    static constexpr int nThreads = 16;
    static constexpr int nRecords = 6;
    static constexpr int nFull = 100'000;

    // How many signals may wait to be handled. Four of ten lead to a call, and the bus allows a
    // connection 128 that are not answered.
    static constexpr int nWindow = 200;

    ListStress()
    {
        daemon.SetObserver([this](const Simulator::Call& call) { nArrived += call.bNoReply; });
        AnswerAs("start");
        pBundle = std::make_unique<ConnManThread>();
        pBundle->connMan.SetOnNetworksChanged([this](unsigned int) { ++nHandled; }, 0xFFFFFFFF);
        pBundle->thread.RunIfNotRunning();
        EXPECT_TRUE(Eventually([&] { return nHandled == 2; }));
        nHandled = 0;
    }

    ~ListStress() override { pBundle.reset(); }

    static std::vector<ListData::Service> MakeServices(const std::string& sMark)
    {
        std::vector<ListData::Service> vecServices;
        for (int nRecord = 0; nRecord < nRecords; ++nRecord)
            vecServices.push_back(
                {"/net/s" + std::to_string(nRecord), "idle", sMark, "dhcp", sMark});
        return vecServices;
    }

    static Simulator::Arguments MakeTechnologies(const std::string& sMark)
    {
        auto list = Simulator::Json::array();
        for (int nRecord = 0; nRecord < nRecords; ++nRecord)
            list.push_back(DaemonData::TechnologyEntry("/net/t" + std::to_string(nRecord), sMark));
        return {DaemonData::pServicesSignature, Simulator::Json::array({list})};
    }

    /**
     * What "GetServices" and "GetTechnologies" answer is of this generation from now on. The rules
     * before it stay, since without any the daemon would answer with its own empty lists.
     */
    void AnswerAs(const std::string& sMark)
    {
        daemon.OnCall({"GetServices", "", "", ""},
                      Behaviour::AnswerWith(DaemonData::Services(MakeServices(sMark))));
        daemon.OnCall({"GetTechnologies", "", "", ""},
                      Behaviour::AnswerWith(MakeTechnologies(sMark)));
        daemon.ClearCalls();
    }

    /** Sends ten signals of all kinds, each of which leads to one call of the callbacks. */
    void SendTen(const std::string& sMark)
    {
        for (int nRecord = 1; nRecord <= 4; ++nRecord)
            daemon.EmitRaw(DaemonData::StrengthChanged("/net/s" + std::to_string(nRecord), 50));
        daemon.EmitRaw(DaemonData::ServicesChanged(MakeServices(sMark)));
        daemon.EmitRaw(DaemonData::ServicePropertyChanged("/net/s0", "State", "idle"));
        daemon.EmitRaw(DaemonData::ServicePropertyChanged("/net/s0", "Name", sMark));
        daemon.EmitRaw(DaemonData::TechnologyAdded());
        daemon.EmitRaw(DaemonData::TechnologyPropertyChanged());
        daemon.EmitRaw(DaemonData::ServicesChanged(MakeServices(sMark + " at its end")));
    }

    /** How many signals were sent and handled. */
    int SendAll(int nSignals)
    {
        int nSent = 0;
        while (nSent < nSignals) {
            if (nSent % 100 == 0)
                AnswerAs("generation " + std::to_string(nSent));
            SendTen("signal " + std::to_string(nSent));
            nSent += 10;
            if (!Eventually([&] { return nHandled + nWindow >= nSent; }))
                break;
        }
        EXPECT_TRUE(Eventually([&] { return nHandled == nSent; })) << nHandled << " of " << nSent;
        return nSent;
    }

    /** Copies a list and notes whether it is whole and of one generation. */
    template <class Record> void Check(const std::vector<Record>& vecRecords)
    {
        std::set<std::string> setMarks;
        for (const Record& record : vecRecords)
            setMarks.insert(record.sName);
        if (vecRecords.size() != nRecords || setMarks.size() != 1)
            ++nTorn;
        ++nRead;
    }

    void ReadLists()
    {
        Check(pBundle->connMan.GetNetworks());
        Check(pBundle->connMan.GetTechnologies());
    }

    /** No more commands than signals, so that the daemon keeps up with both. */
    void SendCommand()
    {
        const int nCommand = nSentCommands++;
        if (nCommand > nHandled) {
            --nSentCommands;
            return;
        }
        ConnMan& connMan = pBundle->connMan;
        if (nCommand % 3 == 0)
            connMan.ScanTechnology(connMan.GetTechnologies().at(0));
        else if (nCommand % 3 == 1)
            connMan.SetTechnologyPower(connMan.GetTechnologies().at(1), true);
        else
            connMan.SetNetworkProperties(connMan.GetNetworks().at(2), ConnMan::Connect);
    }

    /** What each of the threads does until it is told to stop. */
    void Work()
    {
        while (!bStop) {
            const int nSeen = nHandled;
            for (int nTurn = 0; nTurn < 10; ++nTurn)
                ReadLists();
            SendCommand();
            Eventually([&] { return nHandled != nSeen || bStop; }, std::chrono::milliseconds(50));
        }
    }

    Simulator::Daemon daemon{{}, TestSupport::GetSystemBus().GetAddress()};
    std::atomic<int> nHandled = 0;
    std::atomic<int> nRead = 0;
    std::atomic<int> nTorn = 0;
    std::atomic<int> nSentCommands = 0;
    std::atomic<int> nArrived = 0; // commands, at the daemon
    std::atomic<bool> bStop = false;
    std::unique_ptr<ConnManThread> pBundle;
};

TEST_F(ListStress, EveryCopyOfAListIsOfOneGenerationAndNoSignalOrCommandIsLost)
{
    std::vector<std::thread> vecThreads;
    for (int nThread = 0; nThread < nThreads; ++nThread)
        vecThreads.emplace_back([this] { Work(); });
    const int nSignals = SendAll(TestSupport::ReduceCount(nFull, 10'000, 2'000));
    bStop = true;
    for (std::thread& thread : vecThreads)
        thread.join();

    EXPECT_EQ(nTorn, 0) << "of " << nRead << " copies";
    EXPECT_GT(nRead, nSignals);
    EXPECT_TRUE(Eventually([&] { return nArrived == nSentCommands; }))
        << nArrived << " of " << nSentCommands;
    TestSupport::PrintCount("signals", nSignals, nFull);
}

} // namespace Tovra
