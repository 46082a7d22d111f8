#include "tests/connman/LiveClient.h"

namespace Tovra
{

using namespace Simulator;

namespace
{

Network MakeNetwork(const std::string& sPath, const std::string& sName)
{
    Network network;
    network.sPath = sPath;
    network.sName = sName;
    return network;
}

} // namespace

Scenario LiveClient::MakeScenario()
{
    Scenario scenario;
    scenario.timing = Timing::Quick();
    scenario.bSorted = false;
    scenario.vecTechnologies = {TechnologySettings()};
    scenario.vecServices = {MakeNetwork(sHome, "Home"), MakeNetwork(sAway, "Away")};
    return scenario;
}

LiveClient::LiveClient()
{
    TestSupport::HostLog::Reset();
}

LiveClient::~LiveClient()
{
    StopClient();
    TestSupport::HostLog::Reset();
}

void LiveClient::MakeClient()
{
    pThread = std::make_unique<DBus::Thread>();
    ConnMan::Impl::SystemActions recording;
    recording.fnRunCommand = [this](const std::string&) { actions.Put("run"); };
    recording.fnRemoveOldSettings = [this](const std::string& sConnected, const auto& fnRemoving) {
        actions.Put("remove " + sConnected);
        if (fnRemoveOldSettings)
            fnRemoveOldSettings(sConnected, fnRemoving);
    };
    pClient = std::make_shared<ConnMan::Impl>(pThread->GetDbusConnection(), recording);
    pClient->ConnectSignals();
    pClient->Startup();
}

void LiveClient::StartDispatching()
{
    pClient->SetOnNetworksChanged([this](unsigned int word) { words.Put(word); }, 0xFFFFFFFF);
    pThread->RunIfNotRunning();
}

void LiveClient::Start()
{
    MakeClient();
    StartDispatching();
    ASSERT_EQ(NextWord(), 4U);
    ASSERT_EQ(NextWord(), 2U);
    daemon.ClearCalls();
}

void LiveClient::StopClient()
{
    pClient.reset();
    pThread.reset();
}

void LiveClient::OnCall(const std::string& sMember, const Behaviour& behaviour)
{
    daemon.OnCall({sMember, "", "", ""}, behaviour);
}

void LiveClient::Answer(const std::string& sMember, const Arguments& arguments)
{
    OnCall(sMember, Behaviour::AnswerWith(arguments));
}

// Signals are handled in the order of sending, and calls answered in that of calling: the word of
// this last one comes after all others.
void LiveClient::ExpectNoMoreWords()
{
    Emit(DaemonData::TechnologyAdded());
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_TRUE(words.IsEmpty());
}

std::vector<std::string> LiveClient::GetCallsSinceStart() const
{
    std::vector<std::string> vecMembers;
    for (const Call& call : daemon.GetCalls())
        vecMembers.push_back(call.sMember);
    return vecMembers;
}

} // namespace Tovra
