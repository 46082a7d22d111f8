#include "tests/connman/OfflineClient.h"

#include <gmock/gmock.h>
#include <new>

namespace Tovra
{

using DBus::Data;
using ListData::List;
using ListData::Paths;
using ListData::Service;
using ListData::ServiceProperties;
using testing::ElementsAre;
using testing::IsEmpty;

namespace HostLog = TestSupport::HostLog;

namespace
{

constexpr unsigned int nAll = 0xFFFFFFFF;

std::vector<std::string> Texts(const std::vector<TestSupport::LogMessage>& vecMessages)
{
    std::vector<std::string> vecTexts;
    for (const auto& message : vecMessages)
        vecTexts.push_back(message.sText);
    return vecTexts;
}

} // namespace

class ConnectionComparison : public OfflineClient
{
protected:
    /** What is done when the list goes from the one to the other. */
    std::vector<std::string> Change(const std::vector<Service>& vecOld,
                                    const std::vector<Service>& vecNew)
    {
        UpdateNetworks(vecOld);
        vecDone.clear();
        HostLog::Reset();
        UpdateNetworks(vecNew);
        return vecDone;
    }
};

TEST_F(ConnectionComparison, GainingTheFirstConnectedServiceIsAChange)
{
    EXPECT_THAT(Change({{"/net/s"}}, {{"/net/s", "ready"}}), ElementsAre("run", "remove s"));
    EXPECT_THAT(HostLog::GetMessagesOfFunction("operator()"), IsEmpty());
}

TEST_F(ConnectionComparison, TheFirstListWithAConnectedServiceIsAChange)
{
    UpdateNetworks({{"/net/s", "online"}});
    EXPECT_THAT(vecDone, ElementsAre("run", "remove s"));
}

TEST_F(ConnectionComparison, LosingTheLastConnectedServiceIsAChange)
{
    EXPECT_THAT(Change({{"/net/s", "ready"}}, {{"/net/s", "idle", "", "dhcp", "Home"}}), IsEmpty());
    EXPECT_THAT(Texts(HostLog::GetMessages()),
                ElementsAre("ConnMan: Updating network state via IPC.",
                            "ConnMan: Skipping network 'Home', state = idle",
                            "ConnMan: No network is online or ready.",
                            "ConnMan: Deleting old wifi settings directories.",
                            "ConnMan: Currently not connected, not deleting any wifi settings "
                            "directories."));
}

TEST_F(ConnectionComparison, NoConnectedServiceBeforeOrAfterIsNoChange)
{
    EXPECT_THAT(Change({{"/s"}}, {{"/s", "failure", "10.0.0.1"}, {"/t"}}), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ConnectionComparison, FromReadyToOnlineWithTheSameAddressIsNoChange)
{
    EXPECT_THAT(Change({{"/s", "ready", "10.0.0.1"}}, {{"/s", "online", "10.0.0.1"}}), IsEmpty());
    const TestSupport::LogMessage compared{
        QelLogDebug, "Check for network change, old: '10.0.0.1' (dhcp), new: '10.0.0.1' (dhcp)",
        "operator()", ClientLog::pFile, 338};
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(compared));
}

TEST_F(ConnectionComparison, IsNotLoggedWhileDebuggingIsOff)
{
    UpdateNetworks({{"/s", "ready", "10.0.0.1"}});
    HostLog::Reset();
    HostLog::SetThreshold(QelLogInfo);
    UpdateNetworks({{"/s", "ready", "10.0.0.1"}});
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ConnectionComparison, AnotherMethodWithTheSameAddressIsAChange)
{
    EXPECT_THAT(Change({{"/net/s", "ready", "10.0.0.1", "dhcp"}},
                       {{"/net/s", "ready", "10.0.0.1", "manual"}}),
                ElementsAre("run", "remove s"));
    EXPECT_THAT(HostLog::GetMessagesOfFunction("operator()"),
                ElementsAre(TestSupport::LogMessage{
                    QelLogDebug,
                    "Check for network change, old: '10.0.0.1' (dhcp), new: '10.0.0.1' (manual)",
                    "operator()", ClientLog::pFile, 338}));
}

TEST_F(ConnectionComparison, AnotherAddressWithTheSameMethodIsAChange)
{
    EXPECT_THAT(Change({{"/net/s", "ready", "10.0.0.1"}}, {{"/net/s", "ready", "10.0.0.2"}}),
                ElementsAre("run", "remove s"));
}

TEST_F(ConnectionComparison, AnotherServiceWithTheSameAddressAndMethodIsNoChange)
{
    EXPECT_THAT(
        Change({{"/s", "ready", "10.0.0.1"}, {"/t"}}, {{"/t", "online", "10.0.0.1"}, {"/s"}}),
        IsEmpty());
}

TEST_F(ConnectionComparison, OnlyTheFirstConnectedServiceCounts)
{
    const Service first{"/net/first", "ready", "10.0.0.1"};
    EXPECT_THAT(Change({first}, {{"/idle"}, first, {"/net/second", "online", "10.0.0.2"}}),
                IsEmpty());
    EXPECT_THAT(Change({first, {"/net/second", "online", "10.0.0.2"}},
                       {{"/net/second", "online", "10.0.0.2"}, first}),
                ElementsAre("run", "remove second"));
}

TEST_F(ConnectionComparison, AServiceOfWhichTheNewListSaysNothingCountsAsItWas)
{
    UpdateNetworks({{"/s", "ready", "10.0.0.1"}});
    vecDone.clear();
    client.UpdateNetworks(List({ListData::UnchangedEntry("/s")}), ConnMan::ServiceStateChanged);
    EXPECT_THAT(vecDone, IsEmpty());
}

TEST_F(ConnectionComparison, AnEmptyArrayLosesTheConnection)
{
    UpdateNetworks({{"/s", "ready"}});
    Register(nAll);
    vecDone.clear();
    HostLog::Reset();
    client.UpdateNetworks(List({}), 0);
    EXPECT_THAT(client.GetNetworks(), IsEmpty());
    EXPECT_THAT(vecDone, ElementsAre("4"));
    EXPECT_THAT(Texts(HostLog::GetMessages()),
                ElementsAre("ConnMan: Updating network state via IPC.",
                            "ConnMan: No network is online or ready.",
                            "ConnMan: Deleting old wifi settings directories.",
                            "ConnMan: Currently not connected, not deleting any wifi settings "
                            "directories."));
}

TEST_F(ConnectionComparison, AnEmptyArrayAfterNoConnectionIsNoChange)
{
    UpdateNetworks({{"/s"}});
    client.UpdateNetworks(List({}), 0);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(ConnectionComparison, WhatIsNoArrayEmptiesTheListWithoutComparing)
{
    for (const Data& noArray : {Data(), Data::MakeString("text"), Data::MakeBool(true),
                                Data::MakeUInt32(1), Data::MakeObjectPath("/"),
                                Data::MakeDictionary(Data::String, ServiceProperties({"/s"}))}) {
        UpdateNetworks({{"/s", "ready"}});
        HostLog::Reset();
        vecDone.clear();
        client.UpdateNetworks(noArray, 0);
        EXPECT_THAT(client.GetNetworks(), IsEmpty());
        EXPECT_THAT(vecDone, IsEmpty());
        EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    }
}

TEST_F(ConnectionComparison, TheHostIsToldLastAndWithoutTheLock)
{
    ConnMan::Impl teller{connection,
                         {[&](const std::string&) {
                              vecDone.push_back("run with " + Paths(teller.GetNetworks())[0]);
                          },
                          [&](const std::string&, const auto&) {
                              vecDone.push_back("remove with " + Paths(teller.GetNetworks())[0]);
                          }}};
    teller.SetOnNetworksChanged([this](unsigned int) { vecDone.push_back("call"); }, nAll);
    teller.UpdateNetworks(ListData::Services({{"/s", "ready"}}), 0);
    EXPECT_THAT(vecDone, ElementsAre("call", "run with /s", "remove with /s"));
}

TEST_F(ConnectionComparison, TheHostIsNotToldWhenACallbackFails)
{
    client.SetOnNetworksChanged([](unsigned int) { throw std::bad_alloc(); }, nAll);
    EXPECT_THROW(UpdateNetworks({{"/s", "ready"}}), std::bad_alloc);
    EXPECT_THAT(vecDone, IsEmpty());
    EXPECT_THAT(Paths(client.GetNetworks()), ElementsAre("/s"));
}

TEST_F(ConnectionComparison, StrengthAndTechnologiesAreNotCompared)
{
    UpdateNetworks({{"/s", "ready"}});
    vecDone.clear();
    HostLog::Reset();
    ChangeStrength("/s", 42);
    client.UpdateTechnologies(List({}));
    EXPECT_THAT(vecDone, IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

} // namespace Tovra
