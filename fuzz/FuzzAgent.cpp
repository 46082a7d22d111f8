// ConnMan's agent call: what is read of it, asked, said and answered.

#include "Common/AgentFields.h"
#include "Common/ConnManImpl.h"
#include "fuzz/FuzzSupport.h"
#include "fuzz/FuzzedMessage.h"
#include "tests/support/HostLog.h"

#include <typeinfo>

using Tovra::ConnMan;
using Tovra::DBus::Connection;
using Tovra::DBus::Data;
using Tovra::DBus::Message;
using Tovra::Fuzz::Require;
namespace AgentFields = Tovra::AgentFields;
namespace HostLog = Tovra::TestSupport::HostLog;

namespace
{

using Requests = std::map<std::string, ConnMan::AgentRequest>;

/** What plain reading makes of the second argument. */
struct Reading {
    bool bReadable = true;
    unsigned nRetries = 0;
    Requests mapRequests;
};

Reading Read(const Message& message)
{
    Reading reading;
    try {
        const std::vector<Data> vecArguments = message.Contents(2);
        vecArguments[0].ObjectPathText();
        reading.mapRequests = AgentFields::Read(vecArguments[1], [&] { ++reading.nRetries; });
    } catch (const std::bad_cast&) {
        reading.bReadable = false;
    }
    return reading;
}

/** Each name that was asked for, and whatever text came with it. */
std::map<std::string, std::string> MakeAnswer(const Requests& mapRequests)
{
    std::map<std::string, std::string> mapAnswer;
    for (const auto& [sName, request] : mapRequests) {
        Require(request.sRequirement != "informational", "what informs is not asked for");
        mapAnswer[sName] = request.sType;
        for (const std::string& sAlternate : request.vecAlternates)
            mapAnswer[sAlternate] = request.sRequirement;
    }
    return mapAnswer;
}

void Handle(const Message& message)
{
    HostLog::Reset();
    const Reading reading = Read(message);
    unsigned nAsked = 0;
    Connection connection;
    ConnMan::Impl client(connection, {});
    client.SetOnAgentRequest([&](const std::string& sPath, const Requests& mapRequests) {
        ++nAsked;
        Require(sPath.rfind('/', 0) == 0, "the path is one");
        Require(mapRequests.size() == reading.mapRequests.size(), "as much as was read");
        return MakeAnswer(mapRequests);
    });

    const bool bAnswered = client.Object_Agent("net.connman.Agent", "RequestInput", message);
    Require(bAnswered == reading.bReadable, "answered exactly when it can be read");
    Require(nAsked == (bAnswered ? 1U : 0U), "asked once when it is answered");
    Require(HostLog::GetMessages().size() == reading.nRetries + (bAnswered ? 0U : 1U),
            "one line for each retry, one for a call that is none");
    Tovra::Fuzz::RequireTravels(AgentFields::MakeAnswer(MakeAnswer(reading.mapRequests)));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Tovra::Fuzz::SilenceWarnings();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t nSize)
{
    Tovra::Fuzz::MessageSequence messages(pBytes, nSize);
    while (messages.Next()) {
        const Message message =
            messages.Make({"oa{sv}", "oa{sa{sv}}", "os", "o", "", "sa{sv}", "ov", "oa{ss}"});
        if (!message)
            return 0;
        Handle(message);
    }
    return 0;
}
