#include "tests/connman/model/Subject.h"

#include "tests/connman/model/Journal.h"

namespace Tovra::ConnManModel
{

using namespace TestSupport;

namespace
{

template <class Record> std::vector<std::string> PathsOf(const std::vector<Record>& vecRecords)
{
    std::vector<std::string> vecPaths;
    for (const Record& record : vecRecords)
        vecPaths.push_back(record.sPath);
    return vecPaths;
}

} // namespace

Subject::Subject(DBus::Connection& connection)
    : pImpl(std::make_shared<ConnMan::Impl>(connection, MakeActions()))
{
    HostLog::Reset();
    HostLog::SetOnMessage(
        [this](const LogMessage& message) { vecJournal.push_back(Journal::Log(message)); });
}

Subject::~Subject()
{
    HostLog::Reset();
}

void Subject::Prepare(const History& history)
{
    HostLog::SetThreshold(history.GetThreshold());
    for (std::size_t nCallback = 0; nCallback < history.vecMasks.size(); ++nCallback)
        pImpl->SetOnNetworksChanged([=](unsigned nWord) { OnChange(nCallback, nWord); },
                                    history.vecMasks[nCallback]);
}

ConnMan::Impl::SystemActions Subject::MakeActions()
{
    return {
        [this](const std::string& sCommand) { vecJournal.push_back(Journal::Command(sCommand)); },
        [this](const std::string& sIdentifier, const auto& fnRemoving) {
            vecJournal.push_back(Journal::Removal(sIdentifier));
            fnRemoving(Journal::pRemovedDirectory);
        },
    };
}

void Subject::OnChange(std::size_t nCallback, unsigned nWord)
{
    const bool bMayRead = nWord != ConnMan::StrengthChanged;
    vecJournal.push_back(bMayRead ? Journal::Callback(nCallback, nWord, PathsOf(GetServices()),
                                                      PathsOf(GetTechnologies()))
                                  : Journal::Callback(nCallback, nWord));
}

void DirectSubject::Receive(const Traffic& traffic, unsigned nFlags)
{
    const auto read = [&] {
        return (traffic.bError ? WireError : WireReply)(traffic.vecArguments).Contents();
    };
    if (traffic.way == Traffic::Way::Signal)
        ReceiveSignal(traffic);
    else if (traffic.way == Traffic::Way::ServicesAnswer)
        GetImpl().UpdateNetworks(read(), nFlags);
    else if (traffic.way == Traffic::Way::TechnologiesAnswer)
        GetImpl().UpdateTechnologies(read());
}

void DirectSubject::ReceiveSignal(const Traffic& signal)
{
    const DBus::Message message = WireSignal(signal.origin, signal.vecArguments);
    const std::string& sPath = signal.origin.sPath;
    if (signal.origin.sInterface == pService)
        GetImpl().Signal_Service_PropertyChanged(sPath, message);
    else if (signal.origin.sInterface == pTechnology)
        GetImpl().Signal_Technology_PropertyChanged(sPath, message);
    else if (signal.origin.sMember == "ServicesChanged")
        GetImpl().Signal_Manager_ServicesChanged(sPath, message);
    else
        GetImpl().Signal_Manager_TechnologyAddedOrRemoved(sPath, message);
}

} // namespace Tovra::ConnManModel
