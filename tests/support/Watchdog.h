#pragma once

#include "tests/support/Waiting.h"

#include <unistd.h>

namespace Tovra::TestSupport
{

/** Ends the process (SIGALRM) when its scope takes too long: for what would hang if it failed. */
class Watchdog
{
public:
    explicit Watchdog(std::chrono::seconds limit = deadline)
    {
        alarm(static_cast<unsigned>(limit.count()));
    }

    ~Watchdog() { alarm(0); }

    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
};

} // namespace Tovra::TestSupport
