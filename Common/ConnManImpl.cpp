#include "Common/ConnManImpl.h"

#include "Common/AgentFields.h"
#include "Common/ConnManLog.h"
#include "Common/HostEvent.h"
#include "Common/Names.h"
#include "Common/WifiSettings.h"
#include "Include/Wipe.h"
#include "Include/Writability.h"

#include <cstdlib>
#include <optional>
#include <typeinfo>

namespace Tovra
{

using DBus::Data;
using DBus::Message;
using DBus::PendingCall;

namespace
{

Message ManagerCall(const char* pMethod)
{
    return Message(Names::pService, Names::pManagerPath, Names::pManager, pMethod);
}

constexpr int nDefaultTimeout = -1;

} // namespace

ConnMan::Impl::SystemActions ConnMan::Impl::GetSystemActions()
{
    return {
        [](const std::string& sCommand) {
            [[maybe_unused]] const int nStatus = std::system(sCommand.c_str());
        },
        [](const std::string& sIdentifier, const std::function<void(const std::string&)>& fn) {
            WifiSettings::RemoveOld(WifiSettings::pStorageDirectory, sIdentifier, fn);
        },
    };
}

ConnMan::Impl::Impl(DBus::Connection& dbusConnection, SystemActions systemActions)
    : connection(dbusConnection),
      actions(std::move(systemActions))
{
}

// --- What is bound to the bus -----------------------------------------------------------------

void ConnMan::Impl::ReportDropped(const char* pHandler, const char* pText) const noexcept
try {
    LogConnMan(QelLogError, pHandler, 57, "ConnMan: ", pHandler,
               ": dropped after an exception: ", pText);
} catch (...) {
    // Not even the report could be made; the thread goes on all the same.
}

template <class Function>
void ConnMan::Impl::Guard(const char* pHandler, const Function& fnHandler) const noexcept
try {
    fnHandler();
} catch (const std::exception& exception) {
    ReportDropped(pHandler, exception.what());
} catch (...) {
    ReportDropped(pHandler, "unknown");
}

template <class... Args>
std::function<void(Args...)> ConnMan::Impl::Bound(const char* pHandler,
                                                  void (Impl::*pMember)(Args...))
{
    return [pWeak = weak_from_this(), pHandler, pMember](Args... args) {
        if (const auto pThis = pWeak.lock())
            pThis->Guard(pHandler, [&] { (*pThis.*pMember)(args...); });
    };
}

void ConnMan::Impl::ConnectSignals()
{
    connection.Listen(Names::pManager);
    connection.Listen(Names::pNetworkService);
    connection.Listen(Names::pTechnology);

    connection.Signal(
        Names::pManager, "ServicesChanged",
        Bound("Signal_Manager_ServicesChanged", &Impl::Signal_Manager_ServicesChanged));
    for (const char* pMember : {"TechnologyAdded", "TechnologyRemoved"})
        connection.Signal(Names::pManager, pMember,
                          Bound("Signal_Manager_TechnologyAddedOrRemoved",
                                &Impl::Signal_Manager_TechnologyAddedOrRemoved));
    connection.Signal(
        Names::pNetworkService, "PropertyChanged",
        Bound("Signal_Service_PropertyChanged", &Impl::Signal_Service_PropertyChanged));
    connection.Signal(
        Names::pTechnology, "PropertyChanged",
        Bound("Signal_Technology_PropertyChanged", &Impl::Signal_Technology_PropertyChanged));
}

void ConnMan::Impl::Startup()
{
    connection.RegisterObject(
        Names::pAgentPath,
        [pWeak = weak_from_this()](const std::string& sInterface, const std::string& sMember,
                                   const Message& message) {
            bool bAnswered = false;
            if (const auto pThis = pWeak.lock())
                pThis->Guard("Object_Agent", [&] {
                    bAnswered = pThis->Object_Agent(sInterface, sMember, message);
                });
            return bAnswered;
        });

    Message registration = ManagerCall("RegisterAgent");
    registration.Add(Data::MakeObjectPath(Names::pAgentPath));
    connection.SendWithReplyBlocking(registration, nDefaultTimeout);

    CallServices(None);
    CallTechnologies();
}

void ConnMan::Impl::CallServices(unsigned int flags)
{
    PendingCall pending = connection.SendWithReply(ManagerCall("GetServices"), nDefaultTimeout);
    const auto fnReturn = Bound("Return_Manager_GetServices", &Impl::Return_Manager_GetServices);
    pending.SetOnComplete([fnReturn, flags](PendingCall& reply) { fnReturn(flags, reply); });
}

void ConnMan::Impl::CallTechnologies()
{
    PendingCall pending = connection.SendWithReply(ManagerCall("GetTechnologies"), nDefaultTimeout);
    pending.SetOnComplete(
        Bound("Return_Manager_GetTechnologies", &Impl::Return_Manager_GetTechnologies));
}

// --- Commands ---------------------------------------------------------------------------------

void ConnMan::Impl::ScanTechnology(const NetworkTechnology& technology)
{
    Send(Commands::Scan(technology));
}

void ConnMan::Impl::SetTechnologyPower(const NetworkTechnology& technology, bool on)
{
    Send(Commands::SetPower(technology, on));
}

void ConnMan::Impl::SetNetworkProperties(const NetworkService& service, unsigned int flags)
{
    for (const Commands::Command& command : Commands::SetNetworkProperties(service, flags))
        Send(command);
}

void ConnMan::Impl::Send(const Commands::Command& command)
{
    const Message message = Commands::MakeMessage(command);
    if (connection && message)
        connection.Send(message);
}

// --- Signals and replies ----------------------------------------------------------------------

void ConnMan::Impl::Signal_Manager_ServicesChanged(const std::string&, const Message& message)
{
    UpdateNetworks(message.Contents(2).front(), ServiceStateChanged);
}

void ConnMan::Impl::Signal_Manager_TechnologyAddedOrRemoved(const std::string&, const Message&)
{
    CallTechnologies();
}

void ConnMan::Impl::Signal_Technology_PropertyChanged(const std::string&, const Message&)
{
    CallTechnologies();
}

void ConnMan::Impl::Signal_Service_PropertyChanged(const std::string& path, const Message& message)
{
    const std::vector<Data> vecArguments = message.Contents(2);
    std::string sProperty;
    std::optional<std::uint32_t> nStrength;
    try {
        sProperty = vecArguments[0].As<std::string>();
        if (sProperty == "Strength")
            nStrength = vecArguments[1].As<std::uint32_t>();
    } catch (const std::bad_cast&) {
        LogBadVersion("PropertyChanged");
        return;
    }

    if (nStrength)
        ChangeStrength(path, *nStrength);
    else
        CallServices(sProperty == "State" ? ServiceStateChanged : None);
}

void ConnMan::Impl::Return_Manager_GetServices(unsigned int flags, PendingCall& pending)
{
    UpdateNetworks(pending.ReceiveReply().Contents(), flags);
}

void ConnMan::Impl::Return_Manager_GetTechnologies(PendingCall& pending)
{
    UpdateTechnologies(pending.ReceiveReply().Contents());
}

// --- The agent --------------------------------------------------------------------------------

bool ConnMan::Impl::Object_Agent(const std::string& interface, const std::string& member,
                                 const Message& message)
{
    const AgentFunction& fnRequest = fnAgentRequest.Get();
    if (interface != Names::pAgent || member != "RequestInput" || !fnRequest)
        return false;

    std::string sUniqueId;
    std::map<std::string, AgentRequest> mapRequests;
    try {
        std::vector<Data> vecArguments = message.Contents(2);
        const DBus::WipedAtEnd wiped(vecArguments[1]); // ConnMan may tell the previous passphrase
        sUniqueId = vecArguments[0].ObjectPathText();
        mapRequests = AgentFields::Read(vecArguments[1], [] {
            LogConnMan(QelLogInfo, "Object_Agent", 541,
                       "ConnMan: Retrying AgentRequest after using incorrect WiFi password");
        });
    } catch (const std::bad_cast&) {
        LogBadVersion("Object_Agent");
        return false;
    }

    std::map<std::string, std::string> mapAnswer = fnRequest(sUniqueId, mapRequests);
    const DBus::WipedAtEnd wipedAnswer(mapAnswer);
    Data answer = AgentFields::MakeAnswer(mapAnswer);
    const DBus::WipedAtEnd wipedData(answer);
    const Message reply = message.ReturnMessage().Add(answer);
    if (connection && reply && DBus::IsWritable(answer, false))
        connection.Send(reply);
    return true;
}

// --- What happens to the system ---------------------------------------------------------------

void ConnMan::Impl::UpdateNetworkStateIpc()
{
    const auto log = [](int nLine, const auto&... parts) {
        LogConnMan(QelLogDebug, "UpdateNetworkStateIpc", nLine, parts...);
    };
    log(361, "ConnMan: Updating network state via IPC.");
    for (const NetworkService& service : GetNetworks()) {
        if (!Lists::IsConnected(service)) {
            log(367, "ConnMan: Skipping network '", service.sName, "', state = ", service.sState);
            continue;
        }
        const std::string sCommand = HostEvent::MakeCommand(service.sIPv4Method);
        log(386, "ConnMan: Sending IPC message for network '", service.sName, "' via '", sCommand,
            "'.");
        actions.fnRunCommand(sCommand);
        return;
    }
    log(390, "ConnMan: No network is online or ready.");
}

void ConnMan::Impl::DeleteOldWifiSettings()
{
    const auto log = [](QelLogLevel level, int nLine, const auto&... parts) {
        LogConnMan(level, "DeleteOldWifiSettings", nLine, parts...);
    };
    log(QelLogDebug, 395, "ConnMan: Deleting old wifi settings directories.");
    const auto sIdentifier = WifiSettings::FindConnectedIdentifier(GetNetworks());
    if (sIdentifier)
        log(QelLogInfo, 407,
            "ConnMan: Connected service to not delete settings of: ", *sIdentifier);
    if (!sIdentifier || sIdentifier->empty()) {
        log(QelLogDebug, 416,
            "ConnMan: Currently not connected, not deleting any wifi settings directories.");
        return;
    }
    actions.fnRemoveOldSettings(*sIdentifier, [&](const std::string& sDirectoryName) {
        log(QelLogInfo, 435, "ConnMan: Deleting settings directory ", sDirectoryName);
    });
}

} // namespace Tovra
