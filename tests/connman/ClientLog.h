#pragma once

#include "tests/support/HostLog.h"

/** What the client writes to the host's log. */
namespace Tovra::ClientLog
{

constexpr const char* pFile = "Libraries/TargetSpecificKX22/../../Common/ConnMan";

inline TestSupport::LogMessage BadVersion(const std::string& sContext)
{
    return {QelLogError,
            "ConnMan: " + sContext + ": Message from incompatible connmand version (1.29 required)",
            "BadVersion", pFile, 42};
}

/** What the guard of a handler leaves of an exception. */
inline TestSupport::LogMessage Dropped(const std::string& sHandler, const std::string& sText)
{
    return {QelLogError, "ConnMan: " + sHandler + ": dropped after an exception: " + sText,
            sHandler, pFile, 57};
}

inline TestSupport::LogMessage Retry()
{
    return {QelLogInfo, "ConnMan: Retrying AgentRequest after using incorrect WiFi password",
            "Object_Agent", pFile, 541};
}

/** Of the network-state notification. */
inline TestSupport::LogMessage Notification(int nLine, const std::string& sText)
{
    return {QelLogDebug, "ConnMan: " + sText, "UpdateNetworkStateIpc", pFile, nLine};
}

/** Of the removal of settings. */
inline TestSupport::LogMessage Removal(QelLogLevel level, int nLine, const std::string& sText)
{
    return {level, "ConnMan: " + sText, "DeleteOldWifiSettings", pFile, nLine};
}

} // namespace Tovra::ClientLog
