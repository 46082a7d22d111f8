#pragma once

#include "tests/connman/model/History.h"
#include "tests/connman/model/Traffic.h"

#include "Common/ConnManImpl.h"

namespace Tovra::ConnManModel
{

/**
 * The client under test. It writes down what it does as the model does; in place of a shell and of
 * ConnMan's storage directory there is the journal alone.
 */
class Subject
{
public:
    explicit Subject(DBus::Connection& connection);
    virtual ~Subject();

    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /** Registers the callbacks and sets the levels to log. */
    void Prepare(const History& history);

    /** `nFlags`: of the request that is answered, where this is the way that an answer takes. */
    virtual void Receive(const Traffic& traffic, unsigned nFlags) = 0;

    /** Whether the daemon has so many calls to answer. */
    virtual bool AwaitsAnswers(std::size_t nServices, std::size_t nTechnologies) = 0;

    std::vector<ConnMan::NetworkService> GetServices() const { return pImpl->GetNetworks(); }
    std::vector<ConnMan::NetworkTechnology> GetTechnologies() const
    {
        return pImpl->GetTechnologies();
    }

    std::vector<std::string> TakeJournal() { return std::exchange(vecJournal, {}); }

protected:
    ConnMan::Impl& GetImpl() { return *pImpl; }

private:
    ConnMan::Impl::SystemActions MakeActions();
    void OnChange(std::size_t nCallback, unsigned nWord);

    std::vector<std::string> vecJournal;
    std::shared_ptr<ConnMan::Impl> pImpl;
};

/**
 * The client without a bus: its handlers are called with messages as a wire brings them, and its
 * calls go nowhere.
 */
class DirectSubject : public Subject
{
public:
    DirectSubject() : Subject(connection) {}

    void Receive(const Traffic& traffic, unsigned nFlags) override;
    bool AwaitsAnswers(std::size_t, std::size_t) override { return true; }

private:
    void ReceiveSignal(const Traffic& signal);

    DBus::Connection connection;
};

} // namespace Tovra::ConnManModel
