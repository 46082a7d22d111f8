#pragma once

#include "tests/support/WireMessage.h"

#include <string>
#include <vector>

namespace Tovra::ConnManModel
{

constexpr const char* pManager = "net.connman.Manager";
constexpr const char* pService = "net.connman.Service";
constexpr const char* pTechnology = "net.connman.Technology";

/** What the daemon sends at one time, if anything. */
struct Traffic {
    enum class Way {
        Silence,
        Signal,
        ServicesAnswer, ///< to the oldest open call of "GetServices"; silence if there is none
        TechnologiesAnswer,
    };

    Way way = Way::Silence;
    std::vector<TestSupport::WireValue> vecArguments;
    TestSupport::WireOrigin origin; ///< of a signal
    bool bError = false;            ///< of an answer
};

std::string Describe(const Traffic& traffic);

} // namespace Tovra::ConnManModel
