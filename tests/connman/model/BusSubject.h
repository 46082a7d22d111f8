#pragma once

#include "tests/connman/model/Subject.h"

#include "tests/support/PrivateBus.h"
#include "tests/support/WirePeer.h"

namespace Tovra::ConnManModel
{

namespace Detail
{

/** The bus, the daemon's and the client's connection to it; there before the client is. */
struct BusEnds {
    BusEnds();

    TestSupport::PrivateBus bus;
    TestSupport::WirePeer peer;
    DBus::Connection connection;
};

} // namespace Detail

/** The client on a bus of its own, where a peer plays the daemon; it is dispatched step by step. */
class BusSubject : private Detail::BusEnds, public Subject
{
public:
    /** Throws std::runtime_error if the client does not ask for its agent to be registered. */
    BusSubject();

    void Receive(const Traffic& traffic, unsigned nFlags) override;
    bool AwaitsAnswers(std::size_t nServices, std::size_t nTechnologies) override;

private:
    DBus::Message MakeMessage(const Traffic& traffic);
};

} // namespace Tovra::ConnManModel
