#pragma once

#include "tests/support/SdBusPeer.h"

#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace Tovra
{

/** Sees all that passes over a bus from its construction on, as the bus itself hands it on. */
class BusMonitor
{
public:
    /** Throws std::runtime_error if the bus does not let it. */
    explicit BusMonitor(const std::string& sAddress);

    /**
     * The method calls that this connection made, up to the first of the member `sLast`; fewer if
     * that does not come before the deadline.
     */
    std::vector<TestSupport::PeerMessage> TakeCalls(const std::string& sSender,
                                                    const std::string& sLast);

private:
    struct Unref {
        void operator()(sd_bus* pBus) const { sd_bus_flush_close_unref(pBus); }
    };

    std::unique_ptr<sd_bus, Unref> pConnection;
};

} // namespace Tovra
