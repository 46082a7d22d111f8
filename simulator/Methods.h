#pragma once

#include "simulator/Technologies.h"

#include <string>
#include <vector>

namespace Tovra::Simulator
{

/** What the methods work on. */
struct Parts {
    World& world;
    Storage& storage;
    Agents& agents;
    Announcer& announcer;
    Connections& connections;
    Technologies& technologies;
};

/** A method of ConnMan's: found by interface, member and signature, as in ConnMan. */
struct Method {
    using Handler = void (*)(const Parts& parts, const Call& call, const Answer& fnAnswer);

    const char* pInterface;
    const char* pMember;
    const char* pSignature;
    Handler pHandler;
    Version since = Version::V1_29;
};

const std::vector<Method>& GetManagerMethods();
const std::vector<Method>& GetTechnologyMethods();
const std::vector<Method>& GetServiceMethods();

/** What ConnMan does with the call. `fnAnswer` is called once, now or later. */
void Handle(const Parts& parts, const Call& call, const Answer& fnAnswer);

// For the methods

std::string GetText(const Call& call, std::size_t nArgument);

/** What the variant that is the second argument of "SetProperty" holds. */
Value GetVariant(const Call& call);

Reply MakeReply(Arguments arguments);
Reply MakeReply(const Properties& properties);

} // namespace Tovra::Simulator
