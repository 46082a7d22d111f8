// The client's handlers, one message after another: lists that come and go, strengths that change.

#include "Common/ConnManImpl.h"
#include "fuzz/FuzzSupport.h"
#include "fuzz/FuzzedMessage.h"
#include "tests/support/HostLog.h"

using Tovra::ConnMan;
using Tovra::DBus::Connection;
using Tovra::DBus::Message;
using Tovra::Fuzz::Require;
namespace HostLog = Tovra::TestSupport::HostLog;

namespace
{

enum Kind { ServicesChanged, ServiceChanged, Strength, Services, Technologies, Other, KindCount };

/** The client without a bus, and what it must keep to whatever it is told. */
class Subject
{
public:
    Subject()
    {
        client.SetOnNetworksChanged([this](unsigned int word) { Called(word); }, 0xFFFFFFFF);
    }

    void Handle(const Tovra::Fuzz::MessageSequence& messages)
    {
        vecWords.clear();
        switch (static_cast<Kind>(messages.GetKind(KindCount))) {
        case ServicesChanged:
            return HandleServicesChanged(
                messages.Make({"a(oa{sv})ao", "a(oa{sv})", "", "s", "av"}));
        case ServiceChanged:
            return HandleServiceChanged(messages.Make({"sv", "ss", "s", "", "uv", "su", "vv"}));
        case Strength:
            return HandleServiceChanged(messages.Make({"sy", "su", "sv"}));
        case Services:
            client.UpdateNetworks(messages.Make({"a(oa{sv})", "av", "s"}).Contents(), 0);
            return RequireWord(4);
        case Technologies:
            client.UpdateTechnologies(messages.Make({"a(oa{sv})", "av", "s"}).Contents());
            return RequireWord(2);
        default:
            client.Signal_Technology_PropertyChanged("/", messages.Make({"sv"}));
            client.Signal_Manager_TechnologyAddedOrRemoved("/", messages.Make({"oa{sv}", "o"}));
            return RequireNoWord();
        }
    }

private:
    void HandleServicesChanged(const Message& message)
    {
        client.Signal_Manager_ServicesChanged("/", message);
        RequireWord(5);
    }

    // For each service that is known, for the index to be used.
    void HandleServiceChanged(const Message& message)
    {
        std::vector<std::string> vecPaths = {"/unknown"};
        for (const ConnMan::NetworkService& service : client.GetNetworks())
            vecPaths.push_back(service.sPath);
        for (const std::string& sPath : vecPaths) {
            vecWords.clear();
            client.Signal_Service_PropertyChanged(sPath, message);
            if (!vecWords.empty())
                RequireWord(8);
        }
    }

    void Called(unsigned int word)
    {
        vecWords.push_back(word);
        if (word == 8) // called under the lock of the lists
            return;
        client.GetNetworks();
        client.GetTechnologies();
    }

    void RequireWord(unsigned int word) const
    {
        Require(vecWords == std::vector<unsigned int>{word}, "one call with the word");
    }

    void RequireNoWord() const { Require(vecWords.empty(), "no call"); }

    Connection connection;
    std::vector<unsigned int> vecWords;
    ConnMan::Impl client{
        connection,
        ConnMan::Impl::SystemActions{[](const std::string& sCommand) {
                                         Require(sCommand.rfind("/opt/tovra/bin/corvane ", 0) == 0,
                                                 "the command is the host's");
                                     },
                                     [](const std::string& sConnected, const auto&) {
                                         Require(!sConnected.empty() &&
                                                     sConnected.find('/') == std::string::npos,
                                                 "the identifier is a directory's name");
                                     }}};
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Tovra::Fuzz::SilenceWarnings();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t nSize)
{
    HostLog::Reset();
    Subject subject;
    Tovra::Fuzz::MessageSequence messages(pBytes, nSize);
    while (messages.Next())
        subject.Handle(messages);
    return 0;
}
