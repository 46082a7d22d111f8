#pragma once

#include "tests/support/HostLog.h"

#include <string>
#include <vector>

/** How what the client does is written down, one line for each thing. */
namespace Tovra::ConnManModel::Journal
{

/** A callback's word; not of one for a changed strength, which must not read the lists, the lists
 * too. */
std::string Callback(std::size_t nCallback, unsigned nWord);
std::string Callback(std::size_t nCallback, unsigned nWord,
                     const std::vector<std::string>& vecServicePaths,
                     const std::vector<std::string>& vecTechnologyPaths);

std::string Command(const std::string& sCommand);

/** All settings but these are removed. */
std::string Removal(const std::string& sConnectedIdentifier);

std::string Log(const TestSupport::LogMessage& message);

/** The one directory that each removal finds, so that there is something to log. */
constexpr const char* pRemovedDirectory = "wifi_forgotten_managed_psk";

} // namespace Tovra::ConnManModel::Journal
