#pragma once

#include "Common/ConnMan.h"

/** ConnMan's agent call "RequestInput", read and answered. Plain functions: no bus, any thread. */
namespace Tovra::AgentFields
{

/**
 * The fields that are asked for, by name, without those that only inform. Calls `fnRetry` when
 * ConnMan tells the passphrase that was wrong before. Throws std::bad_cast when `fields` is no
 * dictionary of dictionaries with the texts Type and Requirement and, where they are a list, texts
 * in Alternates.
 */
std::map<std::string, ConnMan::AgentRequest> Read(const DBus::Data& fields,
                                                  const std::function<void()>& fnRetry);

/** The dictionary a{sv} that answers the call. */
DBus::Data MakeAnswer(const std::map<std::string, std::string>& mapAnswer);

} // namespace Tovra::AgentFields
