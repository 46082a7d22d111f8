#pragma once

#include "Common/ConnMan.h"

#include <optional>

/** ConnMan's stored settings: one directory a service, named as the last element of its path. */
namespace Tovra::WifiSettings
{

constexpr const char* pStorageDirectory = "/opt/userdata/connman";

/**
 * The text after the last "/" of the path of the first connected service that has one; it may be
 * empty. Nothing if no service is connected. Plain: any thread.
 */
std::optional<std::string>
FindConnectedIdentifier(const std::vector<ConnMan::NetworkService>& vecServices);

/** Whether a directory of this name holds the settings of a WiFi network other than the one. */
bool IsOld(const std::string& sDirectoryName, const std::string& sConnectedIdentifier);

/**
 * Removes every old settings directory below the storage directory, after calling `fnRemoving` with
 * its name. A storage directory that does not exist is no error; every other failure of the file
 * system throws boost::filesystem::filesystem_error at that point. Follows a link to a directory to
 * tell what it is, but removes the link.
 */
void RemoveOld(const std::string& sStorageDirectory, const std::string& sConnectedIdentifier,
               const std::function<void(const std::string& sDirectoryName)>& fnRemoving);

} // namespace Tovra::WifiSettings
