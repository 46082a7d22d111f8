#pragma once

#include "tests/connman/model/Reading.h"
#include "tests/connman/model/Traffic.h"

#include "tests/support/HostLog.h"

#include <cstddef>
#include <deque>

namespace Tovra::ConnManModel
{

/** What a service is to the client, in the order of the record's fields. */
struct ServiceRecord {
    std::string sPath;
    std::string sInterface;
    std::string sMacAddress;
    std::string sName;
    std::string sType;
    std::string sState;
    std::string sIPv4Address;
    std::string sIPv4Netmask;
    std::string sIPv4Gateway;
    std::string sIPv4Method;
    std::vector<std::string> vecNameservers;
    std::vector<std::string> vecSecurity;
    std::uint32_t nStrength = 255;
};

struct TechnologyRecord {
    std::string sPath;
    std::string sName;
    std::string sType;
    bool bPowered = false;
    bool bConnected = false;
};

/**
 * The client as it ought to be, as simply as can be: it reads what the daemon sends, keeps lists
 * without an index, without locks and without messages, and writes down all that it does.
 */
class Model
{
public:
    /** As after the start: both lists are empty, and the daemon has been asked for them. */
    Model(std::vector<unsigned> vecCallbackMasks, QelLogLevel threshold);

    /** An answer goes to the oldest open request. */
    void Receive(const Traffic& traffic);

    /** The flags of the open requests for services, the oldest first. */
    const std::deque<unsigned>& GetOpenServices() const { return requests; }
    std::size_t CountOpenTechnologies() const { return nTechnologyRequests; }

    const std::vector<ServiceRecord>& GetServices() const { return vecServices; }
    const std::vector<TechnologyRecord>& GetTechnologies() const { return vecTechnologies; }

    /** Callbacks, commands, removals and log messages since the last call: see Journal.h. */
    std::vector<std::string> TakeJournal();

private:
    void ReceiveSignal(const Traffic& signal);
    void ReceiveProperty(const std::string& sPath, const Seen& name, const Seen& value);
    void ChangeStrength(const std::string& sPath, std::uint32_t nStrength);
    void UpdateServices(const Seen& list, unsigned nFlags);
    void UpdateTechnologies(const Seen& list);
    void AddService(std::vector<ServiceRecord>& vecList, const Seen& entry) const;
    bool HasConnectionChanged(const ServiceRecord* pOld, const ServiceRecord* pNew);
    void Notify(unsigned nWord);
    void TellHost();
    void RemoveSettings();
    const ServiceRecord* Find(const std::string& sPath) const;
    void LogBadVersion(const char* pContext);
    void Log(QelLogLevel level, const std::string& sText, const char* pFunction, int nLine);

    const std::vector<unsigned> vecMasks;
    const QelLogLevel threshold;
    std::vector<ServiceRecord> vecServices;
    std::vector<TechnologyRecord> vecTechnologies;
    std::deque<unsigned> requests{0};
    std::size_t nTechnologyRequests = 1;
    std::vector<std::string> vecJournal;
};

} // namespace Tovra::ConnManModel
