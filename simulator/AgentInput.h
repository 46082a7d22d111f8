#pragma once

#include "simulator/Service.h"

#include <optional>
#include <string>

namespace Tovra::Simulator
{

/** Whether somebody has to be asked before the service can be connected to. */
bool NeedsInput(const Service& service);

/** The fields of "RequestInput" for the service: the JSON of an a{sv}. */
Json MakeRequest(const Service& service);

/** What an agent answered to "RequestInput". */
struct AgentInput {
    std::string sError;   ///< its error's name, or that of what is wrong with its values
    bool bValues = false; ///< whether it answered with a dictionary at all
    std::optional<std::string> sName;
    std::optional<std::string> sPassphrase;
    std::optional<std::string> sWps; ///< empty: the push button
};

/** In order up to "WPS", which ends the reading, or to the first value of a wrong type. */
AgentInput ReadInput(const Reply& reply);

enum class Verdict {
    Good,
    NotAllowed, ///< the network takes no passphrase
    InvalidKey,
};

/** Whether ConnMan takes the text as a passphrase: of the right length, or hexadecimal. */
Verdict JudgePassphrase(const Service& service, const std::string& sPassphrase);
Verdict JudgeWpsPin(const std::string& sPin);

bool OffersWps(const Network& network);

/** Whether nothing goes on before the access point's WPS button is pushed. */
bool WaitsForButton(const Service& service);

/** Whether the access point lets the service in with what ConnMan knows. */
bool IsAdmitted(const Service& service);

} // namespace Tovra::Simulator
