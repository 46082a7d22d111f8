#include "tests/connman/LiveClient.h"

#include <gmock/gmock.h>

namespace Tovra
{

using DaemonData::Parse;
using DaemonData::ServicePropertyChanged;
using DaemonData::ServicesChanged;
using DaemonData::StrengthChanged;
using DaemonData::TechnologyAdded;
using ListData::Paths;
using ListData::Service;
using Simulator::Arguments;
using Simulator::Behaviour;
using Simulator::Json;
using Simulator::Signal;
using testing::ElementsAre;
using testing::IsEmpty;

namespace HostLog = TestSupport::HostLog;

class SignalHandling : public LiveClient
{
protected:
    SignalHandling() { Start(); }
};

// --- A service's property ---------------------------------------------------------------------

TEST_F(SignalHandling, AStrengthChangesOneRecordAndAsksTheDaemonNothing)
{
    Emit(StrengthChanged(sAway, 42));
    EXPECT_EQ(NextWord(), 8U);
    EXPECT_EQ(pClient->GetNetworks()[0].nStrength, 60U);
    EXPECT_EQ(pClient->GetNetworks()[1].nStrength, 42U);
    ExpectNoMoreWords();
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies"));
}

TEST_F(SignalHandling, AStrengthOfAnUnknownServiceChangesNoRecordButCallsBack)
{
    Emit(StrengthChanged("/net/connman/service/unknown", 42));
    EXPECT_EQ(NextWord(), 8U);
    EXPECT_EQ(pClient->GetNetworks()[0].nStrength, 60U);
    EXPECT_EQ(pClient->GetNetworks()[1].nStrength, 60U);
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SignalHandling, AStrengthMayBeAnyUnsignedNumberInAVariantOrNot)
{
    for (const Arguments& arguments :
         {Parse("sv", R"(["Strength", ["q", 1]])"), Parse("sv", R"(["Strength", ["u", 2]])"),
          Parse("sy", R"(["Strength", 3])"), Parse("vv", R"([["s", "Strength"], ["y", 4]])")})
        Emit(ServicePropertyChanged(sHome, arguments));
    for (int nSignal = 0; nSignal < 4; ++nSignal)
        EXPECT_EQ(NextWord(), 8U);
    EXPECT_EQ(pClient->GetNetworks()[0].nStrength, 4U);
}

TEST_F(SignalHandling, AStateHasTheServicesReadWithTheWord5)
{
    Emit(ServicePropertyChanged(sHome, "State", "association"));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetServices"));
}

TEST_F(SignalHandling, AnyOtherPropertyHasTheServicesReadWithTheWord4)
{
    for (const char* pName : {"Name", "IPv4", "Favorite", "state", "strength", "State ", ""}) {
        daemon.ClearCalls();
        Emit(ServicePropertyChanged(sHome, pName, "value"));
        EXPECT_EQ(NextWord(), 4U) << pName;
        EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetServices")) << pName;
    }
    ExpectNoMoreWords();
}

TEST_F(SignalHandling, ThePropertysValueIsNotReadUnlessItIsTheStrength)
{
    for (const Arguments& arguments : {Parse("s", R"(["State"])"), Parse("si", R"(["State", -1])"),
                                       Parse("ssas", R"(["State", "more", ["and", "more"]])")}) {
        Emit(ServicePropertyChanged(sHome, arguments));
        EXPECT_EQ(NextWord(), 5U) << arguments.sSignature;
    }
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SignalHandling, APropertyOfAnotherShapeIsReportedAndChangesNothing)
{
    const std::vector<Arguments> vecBad{
        Parse("uv", R"([1, ["s", "ready"]])"),
        Parse("ov", R"(["/State", ["s", "ready"]])"),
        Parse("asv", R"([["State"], ["s", "ready"]])"),
        Parse("iv", R"([-1, ["s", "ready"]])"),
        Parse("sv", R"(["Strength", ["s", "42"]])"),
        Parse("sv", R"(["Strength", ["i", 42]])"), // a type that is not carried
        Parse("sv", R"(["Strength", ["ay", []]])"),
        Parse("s", R"(["Strength"])"),
        Parse("", "[]"),
    };
    for (const Arguments& arguments : vecBad)
        Emit(ServicePropertyChanged(sHome, arguments));
    ExpectNoMoreWords();
    EXPECT_EQ(pClient->GetNetworks()[0].nStrength, 60U);
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies"));
    EXPECT_EQ(HostLog::GetMessages(), std::vector<TestSupport::LogMessage>(
                                          vecBad.size(), ClientLog::BadVersion("PropertyChanged")));
}

TEST_F(SignalHandling, APropertyOfAnotherShapeIsNotReportedWhileErrorsAreNotLogged)
{
    HostLog::SetActive(QelLogError, false);
    Emit(ServicePropertyChanged(sHome, Parse("u", "[1]")));
    ExpectNoMoreWords();
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SignalHandling, EachReplyBearsTheWordOfItsOwnSignalInWhateverOrderItComes)
{
    OnCall("GetServices", Behaviour::Hold());
    Emit(ServicePropertyChanged(sHome, "State", "association"));
    Emit(ServicePropertyChanged(sHome, "Name", "New"));
    ASSERT_TRUE(TestSupport::Eventually([&] { return daemon.GetHeldCount() == 2; }));
    daemon.ReleaseReplies(true);
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_EQ(NextWord(), 5U);
    ExpectNoMoreWords();
}

// --- The words --------------------------------------------------------------------------------

TEST_F(SignalHandling, EachCallbackReceivesTheWordsThatShareABitWithItsMask)
{
    const std::vector<std::pair<unsigned int, Signal>> vecCauses{
        {2, TechnologyAdded()},
        {4, ServicePropertyChanged(sHome, "Name", "New")},
        {5, ServicePropertyChanged(sHome, "State", "idle")},
        {5, ServicesChanged({Service{"/a"}})},
        {8, StrengthChanged("/a", 1)},
    };
    std::vector<std::string> vecReceived;
    std::vector<std::string> vecExpected;
    const unsigned int masks[] = {0, 1, 2, 4, 8, 3, 6, 9, 12, 0xFFFFFFF0, 0xFFFFFFFF};
    for (const unsigned int mask : masks)
        pClient->SetOnNetworksChanged(
            [&vecReceived, mask](unsigned int word) {
                vecReceived.push_back(std::to_string(mask) + ": " + std::to_string(word));
            },
            mask);
    for (const auto& [word, signal] : vecCauses) {
        Emit(signal);
        EXPECT_EQ(NextWord(), word);
        for (const unsigned int mask : masks) {
            if (mask & word)
                vecExpected.push_back(std::to_string(mask) + ": " + std::to_string(word));
        }
    }
    StopClient(); // waits until the last callback has returned
    EXPECT_EQ(vecReceived, vecExpected);
}

// --- Technologies -----------------------------------------------------------------------------

TEST_F(SignalHandling, EachSignalOfATechnologyHasTheTechnologiesReadOnce)
{
    for (const Signal& signal : {TechnologyAdded(), DaemonData::TechnologyRemoved(),
                                 DaemonData::TechnologyPropertyChanged()}) {
        daemon.ClearCalls();
        Emit(signal);
        EXPECT_EQ(NextWord(), 2U) << signal.sMember;
        EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies")) << signal.sMember;
    }
    ExpectNoMoreWords();
}

TEST_F(SignalHandling, TheArgumentsOfATechnologysSignalAreNotRead)
{
    for (Signal signal : {TechnologyAdded(), DaemonData::TechnologyRemoved(),
                          DaemonData::TechnologyPropertyChanged()}) {
        signal.arguments = {};
        Emit(signal);
        EXPECT_EQ(NextWord(), 2U) << signal.sMember;
        signal.arguments = Parse("ii", "[-1, -2]");
        Emit(signal);
        EXPECT_EQ(NextWord(), 2U) << signal.sMember;
    }
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SignalHandling, TheTechnologiesAreThoseThatTheDaemonAnswersWith)
{
    daemon.SetTechnologyProperty(DaemonData::TechnologyAdded().arguments.values[0], "Name",
                                 Simulator::MakeString("Renamed"));
    EXPECT_EQ(NextWord(), 2U);
    ASSERT_EQ(pClient->GetTechnologies().size(), 1U);
    EXPECT_EQ(pClient->GetTechnologies()[0].sName, "Renamed");
}

TEST_F(SignalHandling, WhatIsNotListenedToDoesNothing)
{
    Emit({"/", "net.connman.Manager", "PropertyChanged", Parse("sv", R"(["State", ["s", "x"]])"),
          ""});
    Emit({"/", "net.connman.Manager", "servicesChanged", {}, ""});
    Emit(
        {"/", "net.connman.Clock", "PropertyChanged", Parse("sv", R"(["State", ["s", "x"]])"), ""});
    Emit({sHome, "net.connman.Service", "ServicesChanged", {}, ""});
    ExpectNoMoreWords();
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies"));
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
}

// --- The service list -------------------------------------------------------------------------

TEST_F(SignalHandling, ServicesChangedBringsTheListItselfWithTheWord5)
{
    Emit(ServicesChanged({Service{"/c"}, Service{"/a"}, Service{"/b"}}));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/c", "/a", "/b"));
    ExpectNoMoreWords();
    EXPECT_THAT(GetCallsSinceStart(), ElementsAre("GetTechnologies"));
}

TEST_F(SignalHandling, AServiceWithoutPropertiesIsKeptIfItIsKnownAndElseDropped)
{
    Emit(ServicesChanged({DaemonData::UnchangedEntry("/net/connman/service/unknown"),
                          DaemonData::UnchangedEntry(sAway), DaemonData::Entry({"/new"})}));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sAway, "/new"));
    EXPECT_EQ(pClient->GetNetworks()[0].sName, "Away");
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SignalHandling, TheRemovedServicesAreNotRead)
{
    const std::string sSome = R"([["/a", {"Type": ["s", "wifi"], "State": ["s", "idle"]}]])";
    for (const Arguments& arguments : {Parse("a(oa{sv})ao", ("[" + sSome + R"(, ["/a"]])").c_str()),
                                       Parse("a(oa{sv})", ("[" + sSome + "]").c_str()),
                                       Parse("a(oa{sv})i", ("[" + sSome + ", -1]").c_str())}) {
        Emit(ServicesChanged(arguments));
        EXPECT_EQ(NextWord(), 5U) << arguments.sSignature;
        EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/a")) << arguments.sSignature;
    }
}

TEST_F(SignalHandling, ServicesThatAreNoArrayEmptyTheListWithoutAComparison)
{
    for (const Arguments& arguments :
         {Parse("", "[]"), Parse("a(oa{sv})ao", "[[], []]"), Parse("s", R"(["text"])"),
          Parse("a{sv}", R"([{"State": ["s", "ready"]}])"), Parse("i", "[-1]")}) {
        Emit(ServicesChanged({Service{"/net/s", "ready"}}));
        EXPECT_EQ(NextWord(), 5U);
        EXPECT_EQ(actions.Take(), "run");
        EXPECT_EQ(actions.Take(), "remove s");
        HostLog::Reset();

        Emit(ServicesChanged(arguments));
        EXPECT_EQ(NextWord(), 5U) << arguments.sSignature;
        EXPECT_THAT(pClient->GetNetworks(), IsEmpty()) << arguments.sSignature;
        ExpectNoMoreWords();
        EXPECT_THAT(HostLog::GetMessages(), IsEmpty()) << arguments.sSignature;
    }
    EXPECT_TRUE(actions.IsEmpty());
}

TEST_F(SignalHandling, EntriesOfAnotherShapeAreReportedAndSkipped)
{
    const std::vector<Arguments> vecBad{
        Parse("as", R"([["text"]])"),
        Parse("ao", R"([["/net/s"]])"),
        Parse("a(o)", R"([[["/net/s"]]])"),
        Parse("a(sa{sv})", R"([[["/net/s", {"Type": ["s", "wifi"], "State": ["s", "idle"]}]]])"),
        Parse("a(os)", R"([[["/net/s", "text"]]])"),
        Parse("a(oas)", R"([[["/net/s", ["text"]]]])"),
        Parse("a(oa{sv})", R"([[["/net/s", {"Type": ["s", "wifi"]}]]])"),
        Parse("a(oa{sv})", R"([[["/net/s", {"Type": ["s", "wifi"], "State": ["b", true]}]]])"),
        Parse("a(oa{sv})", R"([[["/net/s", {"Type": ["s", "wifi"], "State": ["s", "idle"],
                                            "Strength": ["n", 42]}]]])"),
    };
    for (const Arguments& arguments : vecBad) {
        HostLog::Reset();
        Emit(ServicesChanged(arguments));
        EXPECT_EQ(NextWord(), 5U) << arguments.sSignature;
        EXPECT_THAT(pClient->GetNetworks(), IsEmpty()) << arguments.sSignature;
        EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("UpdateNetworks")))
            << arguments.sSignature;
    }
}

TEST_F(SignalHandling, OneEntryOfAnotherShapeLeavesTheOthers)
{
    Emit(ServicesChanged({DaemonData::Entry({"/a"}),
                          Json::parse(R"(["/b", {"Type": ["s", "wifi"]}])"),
                          DaemonData::Entry({"/c"})}));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/a", "/c"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("UpdateNetworks")));
}

// What the smallest key holds decides what the whole dictionary counts as.
TEST_F(SignalHandling, PropertiesWhoseSmallestKeyHoldsNothingThatIsCarriedSayNothing)
{
    for (const char* pValue : {R"(["i", -1])", R"(["a{sv}", {}])", R"(["as", []])"}) {
        const std::string sProperties = std::string(R"({"Aaa": )") + pValue +
                                        R"(, "Type": ["s", "wifi"], "State": ["s", "ready"]})";
        const std::string sList =
            "[[[\"" + sHome + "\", " + sProperties + "], [\"/unknown\", " + sProperties + "]]]";
        Emit(ServicesChanged(Parse("a(oa{sv})", sList.c_str())));
        EXPECT_EQ(NextWord(), 5U) << pValue;
        ASSERT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome)) << pValue;
        EXPECT_EQ(pClient->GetNetworks()[0].sState, "idle") << pValue;
    }
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

TEST_F(SignalHandling, OfAPathThatComesTwiceTheLaterRecordTakesTheStrength)
{
    Emit(ServicesChanged({Service{"/s", "idle"}, Service{"/s", "failure"}}));
    EXPECT_EQ(NextWord(), 5U);
    Emit(StrengthChanged("/s", 42));
    EXPECT_EQ(NextWord(), 8U);
    const auto vecServices = pClient->GetNetworks();
    ASSERT_THAT(Paths(vecServices), ElementsAre("/s", "/s"));
    EXPECT_EQ(vecServices[0].nStrength, 255U);
    EXPECT_EQ(vecServices[1].nStrength, 42U);
}

TEST_F(SignalHandling, FromReadyToOnlineTellsTheHostNothing)
{
    Emit(ServicesChanged({Service{"/net/s", "ready", "10.0.0.1"}}));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_EQ(actions.Take(), "run");
    EXPECT_EQ(actions.Take(), "remove s");
    Answer("GetServices", DaemonData::Services({{"/net/s", "online", "10.0.0.1"}}));
    Emit(ServicePropertyChanged("/net/s", "State", "online"));
    EXPECT_EQ(NextWord(), 5U);
    ExpectNoMoreWords();
    EXPECT_TRUE(actions.IsEmpty());
    EXPECT_EQ(pClient->GetNetworks()[0].sState, "online");
}

TEST_F(SignalHandling, AnotherMethodWithTheSameAddressTellsTheHost)
{
    Emit(ServicesChanged({Service{"/net/s", "ready", "10.0.0.1", "dhcp"}}));
    EXPECT_EQ(actions.Take(), "run");
    EXPECT_EQ(actions.Take(), "remove s");
    Emit(ServicesChanged({Service{"/net/s", "ready", "10.0.0.1", "manual"}}));
    EXPECT_EQ(actions.Take(), "run");
    EXPECT_EQ(actions.Take(), "remove s");
}

TEST_F(SignalHandling, AConnectionThatTheDaemonMakesAndLosesIsFollowed)
{
    daemon.SetState(sAway, "ready");
    EXPECT_EQ(actions.Take(), "run");
    EXPECT_EQ(actions.Take(), "remove wifi_away");
    daemon.SetState(sAway, "idle");
    EXPECT_TRUE(HostLog::AwaitText("ConnMan: No network is online or ready."));
    EXPECT_TRUE(HostLog::AwaitText(
        "ConnMan: Currently not connected, not deleting any wifi settings directories."));
}

// --- Replies ----------------------------------------------------------------------------------

TEST_F(SignalHandling, AnErrorEmptiesTheServicesWithoutAComparison)
{
    Emit(ServicesChanged({Service{"/net/s", "ready"}}));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_EQ(actions.Take(), "run");
    EXPECT_EQ(actions.Take(), "remove s");
    HostLog::Reset();
    OnCall("GetServices", Behaviour::Fail("net.connman.Error.Failed"));
    Emit(ServicePropertyChanged("/net/s", "Name", "New"));
    EXPECT_EQ(NextWord(), 4U);
    EXPECT_THAT(pClient->GetNetworks(), IsEmpty());
    ExpectNoMoreWords();
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    EXPECT_TRUE(actions.IsEmpty());
}

TEST_F(SignalHandling, AnErrorEmptiesTheTechnologies)
{
    OnCall("GetTechnologies", Behaviour::Fail("net.connman.Error.Failed"));
    Emit(TechnologyAdded());
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_THAT(pClient->GetTechnologies(), IsEmpty());
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
}

TEST_F(SignalHandling, AReplyOfAnotherShapeEmptiesTheListAndTheNextOneHealsIt)
{
    for (const Arguments& arguments : {Parse("", "[]"), Parse("s", R"(["text"])"),
                                       Parse("a{sv}", R"([{"State": ["s", "ready"]}])")}) {
        Answer("GetServices", arguments);
        Answer("GetTechnologies", arguments);
        Emit(ServicePropertyChanged(sHome, "State", "idle"));
        Emit(TechnologyAdded());
        EXPECT_EQ(NextWord(), 5U);
        EXPECT_EQ(NextWord(), 2U);
        EXPECT_THAT(pClient->GetNetworks(), IsEmpty()) << arguments.sSignature;
        EXPECT_THAT(pClient->GetTechnologies(), IsEmpty()) << arguments.sSignature;

        daemon.ClearBehaviours();
        Emit(ServicePropertyChanged(sHome, "State", "idle"));
        Emit(TechnologyAdded());
        EXPECT_EQ(NextWord(), 5U);
        EXPECT_EQ(NextWord(), 2U);
        EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
        EXPECT_EQ(pClient->GetTechnologies().size(), 1U);
    }
}

TEST_F(SignalHandling, ATechnologyWithoutPoweredIsReportedAndTheOthersStand)
{
    Json withoutPowered = DaemonData::TechnologyEntry("/b", "B");
    withoutPowered[1].erase("Powered");
    const Json list =
        Json::array({DaemonData::TechnologyEntry("/a", "A"), withoutPowered,
                     DaemonData::UnchangedEntry("/c"), DaemonData::TechnologyEntry("/d", "D")});
    Answer("GetTechnologies", {DaemonData::pServicesSignature, Json::array({list})});
    Emit(TechnologyAdded());
    EXPECT_EQ(NextWord(), 2U);
    EXPECT_THAT(Paths(pClient->GetTechnologies()), ElementsAre("/a", "/d"));
    EXPECT_THAT(HostLog::GetMessages(), ElementsAre(ClientLog::BadVersion("UpdateTechnologies"),
                                                    ClientLog::BadVersion("UpdateTechnologies")));
}

} // namespace Tovra
