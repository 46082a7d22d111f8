#include "tests/connman/LiveClient.h"
#include "tests/support/ProcessThreads.h"

#include <boost/filesystem.hpp>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <new>
#include <typeinfo>

namespace Tovra
{

using DaemonData::ServicesChanged;
using DaemonData::StrengthChanged;
using DaemonData::TechnologyAdded;
using ListData::Paths;
using ListData::Service;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::LogMessage;

namespace HostLog = TestSupport::HostLog;

class HandlerGuard : public LiveClient
{
protected:
    void SetUp() override
    {
        Start();
        vecThreads = TestSupport::FindThreads("DBusThread");
    }

    /** Calls back before every callback to come; throws what `fnThrow` throws, once. */
    void ThrowFromNextCallback(const std::function<void()>& fnThrow)
    {
        pClient->SetOnNetworksChanged(
            [fnThrow, pDone = std::make_shared<bool>(false)](unsigned int) {
                if (!std::exchange(*pDone, true))
                    fnThrow();
            },
            0xFFFFFFFF);
    }

    /** Expects that the thread that dispatched before goes on, and that the lists are as sent. */
    void ExpectThatTheNextSignalsAreHandled()
    {
        HostLog::SetOnMessage(nullptr);
        while (!words.IsEmpty())
            words.Take();
        Emit(ServicesChanged({Service{"/next"}}));
        EXPECT_EQ(NextWord(), 5U);
        EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/next"));
        Emit(StrengthChanged("/next", 77));
        EXPECT_EQ(NextWord(), 8U);
        EXPECT_EQ(pClient->GetNetworks()[0].nStrength, 77U);
        ExpectNoMoreWords();
        EXPECT_EQ(TestSupport::FindThreads("DBusThread"), vecThreads);
    }

    struct Case {
        const char* sHandler;
        Simulator::Signal signal;
    };

    // Every handler that calls callbacks, and a signal that leads to it.
    const std::vector<Case> vecCases{
        {"Signal_Manager_ServicesChanged", ServicesChanged({Service{"/a"}})},
        {"Signal_Service_PropertyChanged", StrengthChanged("/a", 1)},
        {"Return_Manager_GetServices", DaemonData::ServicePropertyChanged("/a", "State", "idle")},
        {"Return_Manager_GetTechnologies", TechnologyAdded()},
    };
    std::vector<pid_t> vecThreads;
};

// --- What callbacks throw ---------------------------------------------------------------------

TEST_F(HandlerGuard, DropsAnyExceptionOfACallbackInEachHandler)
{
    const std::vector<std::pair<std::string, std::function<void()>>> vecExceptions{
        {"told by the host", [] { throw std::runtime_error("told by the host"); }},
        {std::bad_alloc().what(), [] { throw std::bad_alloc(); }},
        {std::bad_cast().what(), [] { throw std::bad_cast(); }},
        {"unknown", [] { throw 42; }},
        {"unknown", [] { throw "a text"; }},
    };
    for (const Case& one : vecCases) {
        for (const auto& [sText, fnThrow] : vecExceptions) {
            HostLog::Reset();
            ThrowFromNextCallback(fnThrow);
            Emit(one.signal);
            const LogMessage dropped = ClientLog::Dropped(one.sHandler, sText);
            EXPECT_TRUE(HostLog::Await(dropped)) << dropped;
            ExpectThatTheNextSignalsAreHandled();
            EXPECT_THAT(HostLog::GetMessages(), ElementsAre(dropped));
        }
    }
}

TEST_F(HandlerGuard, DropsTheCallOfAnEmptyCallback)
{
    const unsigned int nMasks[] = {1, 8, 4, 2};
    for (std::size_t nCase = 0; nCase < vecCases.size(); ++nCase) {
        // It stands last; what its word has in common with other handlers' words is checked after.
        pClient->SetOnNetworksChanged(nullptr, nMasks[nCase]);
        HostLog::Reset();
        Emit(vecCases[nCase].signal);
        const LogMessage dropped =
            ClientLog::Dropped(vecCases[nCase].sHandler, std::bad_function_call().what());
        EXPECT_TRUE(HostLog::Await(dropped)) << dropped;
    }
    EXPECT_EQ(TestSupport::FindThreads("DBusThread"), vecThreads);
}

TEST_F(HandlerGuard, AnEmptyCallbackLetsTheListsAndThoseBeforeItBe)
{
    pClient->SetOnNetworksChanged(nullptr, 0xFFFFFFFF);
    ExpectThatTheNextSignalsAreHandled();
    const LogMessage last =
        ClientLog::Dropped("Return_Manager_GetTechnologies", "bad_function_call");
    EXPECT_TRUE(HostLog::Await(last));
    EXPECT_THAT(
        HostLog::GetMessages(),
        ElementsAre(ClientLog::Dropped("Signal_Manager_ServicesChanged", "bad_function_call"),
                    ClientLog::Dropped("Signal_Service_PropertyChanged", "bad_function_call"),
                    last));
}

TEST_F(HandlerGuard, ABadCastOfACallbackIsNoIncompatibleVersion)
{
    for (const Case& one : vecCases) {
        ThrowFromNextCallback([] { throw std::bad_cast(); });
        Emit(one.signal);
        EXPECT_TRUE(HostLog::Await(ClientLog::Dropped(one.sHandler, std::bad_cast().what())));
    }
    EXPECT_THAT(HostLog::GetMessagesOfFunction("BadVersion"), IsEmpty());
}

TEST_F(HandlerGuard, AnExceptionEndsTheCallbacksOfThatMessageAlone)
{
    ThrowFromNextCallback([] { throw std::runtime_error("once"); });
    TestSupport::Mailbox<unsigned int> later;
    pClient->SetOnNetworksChanged([&](unsigned int word) { later.Put(word); }, 0xFFFFFFFF);
    Emit(ServicesChanged({Service{"/a"}}));
    Emit(TechnologyAdded());
    EXPECT_EQ(later.Take(), 2U);
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/a"));
    StopClient();
}

TEST_F(HandlerGuard, IsSilentWhileErrorsAreNotLogged)
{
    HostLog::SetActive(QelLogError, false);
    ThrowFromNextCallback([] { throw std::runtime_error("unheard"); });
    Emit(ServicesChanged({Service{"/a"}}));
    EXPECT_EQ(NextWord(), 5U);
    ExpectNoMoreWords();
    EXPECT_THAT(HostLog::GetMessages(), IsEmpty());
}

// --- What the host's log throws ---------------------------------------------------------------

TEST_F(HandlerGuard, DropsWhatTheLogThrowsOfABadEntry)
{
    HostLog::SetOnMessage([](const LogMessage& message) {
        if (message.nLine == 42)
            throw std::runtime_error("the disk is full");
    });
    Emit(ServicesChanged(DaemonData::Parse("as", R"([["no entry"]])")));
    const LogMessage dropped =
        ClientLog::Dropped("Signal_Manager_ServicesChanged", "the disk is full");
    EXPECT_TRUE(HostLog::Await(dropped));
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre(sHome, sAway));
    ExpectThatTheNextSignalsAreHandled();
    EXPECT_THAT(HostLog::GetMessages(),
                ElementsAre(ClientLog::BadVersion("UpdateNetworks"), dropped));
}

TEST_F(HandlerGuard, DropsWhatTheLogThrowsOfABadProperty)
{
    HostLog::SetOnMessage([](const LogMessage& message) {
        if (message.nLine == 42)
            throw std::runtime_error("the disk is full");
    });
    Emit(DaemonData::ServicePropertyChanged(sHome, DaemonData::Parse("u", "[1]")));
    const LogMessage dropped =
        ClientLog::Dropped("Signal_Service_PropertyChanged", "the disk is full");
    EXPECT_TRUE(HostLog::Await(dropped));
    ExpectThatTheNextSignalsAreHandled();
}

TEST_F(HandlerGuard, DropsWhatTheLogThrowsUnderTheLock)
{
    Emit(ServicesChanged({Service{"/net/a", "ready"}}));
    EXPECT_EQ(NextWord(), 5U);
    EXPECT_EQ(actions.Take(), "run");
    HostLog::SetOnMessage([](const LogMessage& message) {
        if (message.nLine == 338)
            throw std::runtime_error("the disk is full");
    });
    Emit(ServicesChanged({Service{"/net/b", "ready"}}));
    EXPECT_TRUE(
        HostLog::Await(ClientLog::Dropped("Signal_Manager_ServicesChanged", "the disk is full")));
    EXPECT_THAT(Paths(pClient->GetNetworks()), ElementsAre("/net/a"));
    ExpectThatTheNextSignalsAreHandled();
}

TEST_F(HandlerGuard, SurvivesALogThatTakesNoReportEither)
{
    HostLog::SetOnMessage([](const LogMessage&) { throw std::runtime_error("the disk is full"); });
    ThrowFromNextCallback([] { throw std::bad_alloc(); });
    Emit(ServicesChanged({Service{"/a"}}));
    EXPECT_TRUE(HostLog::Await(
        ClientLog::Dropped("Signal_Manager_ServicesChanged", std::bad_alloc().what())));
    HostLog::Reset();
    HostLog::SetOnMessage([](const LogMessage&) { throw 42; });
    Emit(DaemonData::ServicePropertyChanged(sHome, DaemonData::Parse("u", "[1]")));
    EXPECT_TRUE(HostLog::Await(ClientLog::Dropped("Signal_Service_PropertyChanged", "unknown")));
    ExpectThatTheNextSignalsAreHandled();
}

// --- What the system throws -------------------------------------------------------------------

/** The client with what it really does to the file system, in an /opt of the test's own. */
class FileSystemGuard : public HandlerGuard
{
protected:
    void SetUp() override
    {
        fnRemoveOldSettings = ConnMan::Impl::GetSystemActions().fnRemoveOldSettings;
        HandlerGuard::SetUp();
    }
};

TEST_F(FileSystemGuard, DropsWhatTheFileSystemThrows)
{
    // A file where the directory should be: it is there, and cannot be read.
    std::filesystem::create_directories("/opt/userdata");
    std::ofstream("/opt/userdata/connman") << "no directory";
    std::string sText;
    try {
        fnRemoveOldSettings("a", [](const std::string&) {});
    } catch (const boost::filesystem::filesystem_error& error) {
        sText = error.what();
    }
    ASSERT_NE(sText, "");

    Emit(ServicesChanged({Service{"/net/a", "ready"}}));
    const LogMessage dropped = ClientLog::Dropped("Signal_Manager_ServicesChanged", sText);
    EXPECT_TRUE(HostLog::Await(dropped)) << dropped;
    EXPECT_THAT(HostLog::GetMessagesOfLevel(QelLogError), ElementsAre(dropped));
    ExpectThatTheNextSignalsAreHandled();
}

} // namespace Tovra
