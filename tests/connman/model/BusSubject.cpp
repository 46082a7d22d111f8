#include "tests/connman/model/BusSubject.h"

#include "tests/support/Dispatching.h"

#include <stdexcept>
#include <thread>

namespace Tovra::ConnManModel
{

using namespace TestSupport;

Detail::BusEnds::BusEnds() : peer(bus.GetAddress(), "net.connman"), connection(bus.GetAddress())
{
    if (!JoinBus(connection))
        throw std::runtime_error("the client cannot join the private bus");
}

BusSubject::BusSubject() : Subject(connection)
{
    GetImpl().ConnectSignals();
    bool bAsked = false;
    std::thread daemon([&] { // the client waits for the answer
        if (const DBus::Message call = peer.TakeCall("RegisterAgent")) {
            peer.Send(NewWireReply(call, {}));
            bAsked = true;
        }
    });
    GetImpl().Startup();
    daemon.join();
    if (!bAsked)
        throw std::runtime_error("the client does not register its agent");
}

DBus::Message BusSubject::MakeMessage(const Traffic& traffic)
{
    if (traffic.way == Traffic::Way::Signal)
        return NewWireSignal(traffic.origin, traffic.vecArguments);
    const bool bServices = traffic.way == Traffic::Way::ServicesAnswer;
    const DBus::Message call = peer.TakeCall(bServices ? "GetServices" : "GetTechnologies");
    if (!call)
        throw std::runtime_error("the client has asked for no list");
    return (traffic.bError ? NewWireError : NewWireReply)(call, traffic.vecArguments);
}

void BusSubject::Receive(const Traffic& traffic, unsigned)
{
    if (traffic.way == Traffic::Way::Silence)
        return;
    peer.Send(MakeMessage(traffic));
    if (!DispatchAllSoFar(connection))
        throw std::runtime_error("the private bus does not answer the client");
}

bool BusSubject::AwaitsAnswers(std::size_t nServices, std::size_t nTechnologies)
{
    // The bus's answer comes after all that the client has sent before.
    return IsAlive(connection) && peer.CountCalls("GetServices") == nServices &&
           peer.CountCalls("GetTechnologies") == nTechnologies;
}

} // namespace Tovra::ConnManModel
