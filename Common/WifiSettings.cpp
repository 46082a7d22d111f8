#include "Common/WifiSettings.h"

#include "Common/Lists.h"

#include <boost/filesystem.hpp>

namespace Tovra::WifiSettings
{

std::optional<std::string>
FindConnectedIdentifier(const std::vector<ConnMan::NetworkService>& vecServices)
{
    for (const ConnMan::NetworkService& service : vecServices) {
        if (!Lists::IsConnected(service))
            continue;
        const std::size_t nSlash = service.sPath.rfind('/');
        if (nSlash != std::string::npos)
            return service.sPath.substr(nSlash + 1);
    }
    return std::nullopt;
}

bool IsOld(const std::string& sDirectoryName, const std::string& sConnectedIdentifier)
{
    return sDirectoryName.compare(0, 4, "wifi") == 0 && sDirectoryName != sConnectedIdentifier;
}

void RemoveOld(const std::string& sStorageDirectory, const std::string& sConnectedIdentifier,
               const std::function<void(const std::string&)>& fnRemoving)
{
    namespace fs = boost::filesystem;
    if (!fs::exists(fs::status(sStorageDirectory)))
        return;
    for (const fs::directory_entry& entry : fs::directory_iterator(sStorageDirectory)) {
        // The path, not the entry's own status: that one remembers what it was told before.
        if (!fs::is_directory(fs::status(entry.path())))
            continue;
        const std::string sName = entry.path().filename().string();
        if (!IsOld(sName, sConnectedIdentifier))
            continue;
        fnRemoving(sName);
        fs::remove_all(entry.path());
    }
}

} // namespace Tovra::WifiSettings
