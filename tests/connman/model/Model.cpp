#include "tests/connman/model/Model.h"

#include "tests/connman/model/Journal.h"

#include <algorithm>
#include <typeinfo>

namespace Tovra::ConnManModel
{

namespace
{

constexpr unsigned nStateWord = 1;
constexpr unsigned nTechnologiesWord = 2;
constexpr unsigned nServicesWord = 4;
constexpr unsigned nStrengthWord = 8;

std::string TextOr(const Seen& value, const std::string& sDefault)
{
    return value.GetKind() == Kind::Text ? value.AsText() : sDefault;
}

std::vector<std::string> ReadTexts(const Seen& value)
{
    std::vector<std::string> vecTexts;
    if (value.GetKind() == Kind::List)
        for (const Seen& element : value.AsList())
            vecTexts.push_back(element.AsText());
    return vecTexts;
}

void ReadIPv4(ServiceRecord& record, const Seen& ipv4)
{
    if (ipv4.GetKind() != Kind::Dictionary)
        return;
    record.sIPv4Address = TextOr(ipv4.Find("Address"), "");
    record.sIPv4Netmask = TextOr(ipv4.Find("Netmask"), "");
    record.sIPv4Gateway = TextOr(ipv4.Find("Gateway"), "");
    record.sIPv4Method = ipv4.Find("Method").AsText();
}

ServiceRecord ReadService(const std::string& sPath, const Seen& properties)
{
    ServiceRecord record;
    record.sPath = sPath;
    record.sName = TextOr(properties.Find("Name"), "");
    record.sType = properties.Find("Type").AsText();
    record.sState = properties.Find("State").AsText();
    const Seen ethernet = properties.Find("Ethernet");
    if (ethernet.GetKind() == Kind::Dictionary) {
        record.sInterface = ethernet.Find("Interface").AsText();
        record.sMacAddress = ethernet.Find("Address").AsText();
    }
    ReadIPv4(record, properties.Find("IPv4"));
    record.vecNameservers = ReadTexts(properties.Find("Nameservers"));
    record.vecSecurity = ReadTexts(properties.Find("Security"));
    if (properties.Has("Strength"))
        record.nStrength = properties.Find("Strength").AsNumber();
    return record;
}

/** An entry's path and properties. */
std::pair<std::string, Seen> ReadEntry(const Seen& entry)
{
    const std::vector<Seen> members = entry.AsList();
    if (members.size() < 2)
        throw std::bad_cast();
    return {members[0].AsPath(), members[1]};
}

TechnologyRecord ReadTechnology(const Seen& entry)
{
    const auto [sPath, properties] = ReadEntry(entry);
    return {sPath, properties.Find("Name").AsText(), properties.Find("Type").AsText(),
            properties.Find("Powered").AsFlag(), properties.Find("Connected").AsFlag()};
}

/** Whether a service's properties say that they are as before. */
bool IsUnchanged(const Seen& properties)
{
    const auto isNone = [](Kind kind) { return kind == Kind::Nothing || kind == Kind::Unknown; };
    const bool bContainer =
        properties.GetKind() == Kind::List || properties.GetKind() == Kind::Dictionary;
    return isNone(bContainer ? properties.GetFirstKind() : properties.GetKind());
}

bool IsConnected(const ServiceRecord& record)
{
    return record.sState == "online" || record.sState == "ready";
}

const ServiceRecord* FindConnected(const std::vector<ServiceRecord>& vecList)
{
    const auto found = std::find_if(vecList.begin(), vecList.end(), IsConnected);
    return found == vecList.end() ? nullptr : &*found;
}

std::string EventFor(const std::string& sMethod)
{
    if (sMethod == "dhcp")
        return "netcfg-dhcp-address-acquired";
    return sMethod == "manual" ? "netcfg-static-address-configured"
                               : "netcfg-autoip-address-acquired";
}

template <class Record> std::vector<std::string> PathsOf(const std::vector<Record>& vecRecords)
{
    std::vector<std::string> vecPaths;
    for (const Record& record : vecRecords)
        vecPaths.push_back(record.sPath);
    return vecPaths;
}

} // namespace

Model::Model(std::vector<unsigned> vecCallbackMasks, QelLogLevel logThreshold)
    : vecMasks(std::move(vecCallbackMasks)),
      threshold(logThreshold)
{
}

void Model::Receive(const Traffic& traffic)
{
    const Seen first = ReadArgument(traffic.vecArguments, 0);
    switch (traffic.way) {
    case Traffic::Way::Signal:
        return ReceiveSignal(traffic);
    case Traffic::Way::ServicesAnswer:
        if (requests.empty())
            return;
        UpdateServices(first, requests.front());
        return requests.pop_front();
    case Traffic::Way::TechnologiesAnswer:
        if (nTechnologyRequests == 0)
            return;
        --nTechnologyRequests;
        return UpdateTechnologies(first);
    default:
        return;
    }
}

void Model::ReceiveSignal(const Traffic& signal)
{
    const Seen first = ReadArgument(signal.vecArguments, 0);
    if (signal.origin.sInterface == pService)
        ReceiveProperty(signal.origin.sPath, first, ReadArgument(signal.vecArguments, 1));
    else if (signal.origin.sMember == "ServicesChanged")
        UpdateServices(first, nStateWord);
    else
        ++nTechnologyRequests;
}

void Model::ReceiveProperty(const std::string& sPath, const Seen& name, const Seen& value)
{
    const bool bStrength = TextOr(name, "") == "Strength";
    const Kind needed = bStrength ? value.GetKind() : Kind::Number;
    if (name.GetKind() != Kind::Text || needed != Kind::Number)
        LogBadVersion("PropertyChanged");
    else if (bStrength)
        ChangeStrength(sPath, value.AsNumber());
    else
        requests.push_back(name.AsText() == "State" ? nStateWord : 0);
}

void Model::ChangeStrength(const std::string& sPath, std::uint32_t nStrength)
{
    if (const ServiceRecord* pRecord = Find(sPath))
        vecServices[static_cast<std::size_t>(pRecord - vecServices.data())].nStrength = nStrength;
    Notify(nStrengthWord);
}

void Model::UpdateServices(const Seen& list, unsigned nFlags)
{
    const bool bList = list.GetKind() == Kind::List;
    std::vector<ServiceRecord> vecUpdated;
    for (const Seen& entry : bList ? list.AsList() : std::vector<Seen>()) {
        try {
            AddService(vecUpdated, entry);
        } catch (const std::bad_cast&) {
            LogBadVersion("UpdateNetworks");
        }
    }
    // What is no list empties ours without a word to the host.
    const bool bChanged =
        bList && HasConnectionChanged(FindConnected(vecServices), FindConnected(vecUpdated));
    vecServices = vecUpdated;
    Notify(nFlags | nServicesWord);
    if (bChanged) {
        TellHost();
        RemoveSettings();
    }
}

void Model::AddService(std::vector<ServiceRecord>& vecList, const Seen& entry) const
{
    const auto [sPath, properties] = ReadEntry(entry);
    if (!IsUnchanged(properties))
        vecList.push_back(ReadService(sPath, properties));
    else if (const ServiceRecord* pRecord = Find(sPath))
        vecList.push_back(*pRecord);
}

bool Model::HasConnectionChanged(const ServiceRecord* pOld, const ServiceRecord* pNew)
{
    if (!pOld || !pNew)
        return pOld || pNew;
    Log(QelLogDebug,
        "Check for network change, old: '" + pOld->sIPv4Address + "' (" + pOld->sIPv4Method +
            "), new: '" + pNew->sIPv4Address + "' (" + pNew->sIPv4Method + ")",
        "operator()", 338);
    return pOld->sIPv4Address != pNew->sIPv4Address || pOld->sIPv4Method != pNew->sIPv4Method;
}

void Model::UpdateTechnologies(const Seen& list)
{
    vecTechnologies.clear();
    for (const Seen& entry : list.GetKind() == Kind::List ? list.AsList() : std::vector<Seen>()) {
        try {
            vecTechnologies.push_back(ReadTechnology(entry));
        } catch (const std::bad_cast&) {
            LogBadVersion("UpdateTechnologies");
        }
    }
    Notify(nTechnologiesWord);
}

void Model::Notify(unsigned nWord)
{
    for (std::size_t nCallback = 0; nCallback < vecMasks.size(); ++nCallback)
        if (vecMasks[nCallback] & nWord)
            vecJournal.push_back(nWord == nStrengthWord
                                     ? Journal::Callback(nCallback, nWord)
                                     : Journal::Callback(nCallback, nWord, PathsOf(vecServices),
                                                         PathsOf(vecTechnologies)));
}

void Model::TellHost()
{
    constexpr const char* pFunction = "UpdateNetworkStateIpc";
    Log(QelLogDebug, "ConnMan: Updating network state via IPC.", pFunction, 361);
    for (const ServiceRecord& record : vecServices) {
        if (IsConnected(record)) {
            const std::string sCommand =
                "/opt/tovra/bin/corvane --ipc-send=" + EventFor(record.sIPv4Method);
            Log(QelLogDebug,
                "ConnMan: Sending IPC message for network '" + record.sName + "' via '" + sCommand +
                    "'.",
                pFunction, 386);
            return vecJournal.push_back(Journal::Command(sCommand));
        }
        Log(QelLogDebug,
            "ConnMan: Skipping network '" + record.sName + "', state = " + record.sState, pFunction,
            367);
    }
    Log(QelLogDebug, "ConnMan: No network is online or ready.", pFunction, 390);
}

void Model::RemoveSettings()
{
    constexpr const char* pFunction = "DeleteOldWifiSettings";
    Log(QelLogDebug, "ConnMan: Deleting old wifi settings directories.", pFunction, 395);
    std::string sIdentifier;
    if (const ServiceRecord* pConnected = FindConnected(vecServices)) {
        sIdentifier = pConnected->sPath.substr(pConnected->sPath.rfind('/') + 1);
        Log(QelLogInfo, "ConnMan: Connected service to not delete settings of: " + sIdentifier,
            pFunction, 407);
    }
    if (sIdentifier.empty())
        return Log(QelLogDebug,
                   "ConnMan: Currently not connected, not deleting any wifi settings directories.",
                   pFunction, 416);
    vecJournal.push_back(Journal::Removal(sIdentifier));
    Log(QelLogInfo,
        std::string("ConnMan: Deleting settings directory ") + Journal::pRemovedDirectory,
        pFunction, 435);
}

/** Of several records of a path the last one counts. */
const ServiceRecord* Model::Find(const std::string& sPath) const
{
    const auto found =
        std::find_if(vecServices.rbegin(), vecServices.rend(),
                     [&](const ServiceRecord& record) { return record.sPath == sPath; });
    return found == vecServices.rend() ? nullptr : &*found;
}

void Model::LogBadVersion(const char* pContext)
{
    Log(QelLogError,
        std::string("ConnMan: ") + pContext +
            ": Message from incompatible connmand version (1.29 required)",
        "BadVersion", 42);
}

void Model::Log(QelLogLevel level, const std::string& sText, const char* pFunction, int nLine)
{
    constexpr const char* pFile = "Libraries/TargetSpecificKX22/../../Common/ConnMan";
    if (level >= threshold)
        vecJournal.push_back(Journal::Log({level, sText, pFunction, pFile, nLine}));
}

std::vector<std::string> Model::TakeJournal()
{
    return std::exchange(vecJournal, {});
}

} // namespace Tovra::ConnManModel
