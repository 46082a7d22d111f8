#pragma once

#include "host/Qel.h"

namespace Tovra
{

/** Where a message comes from, as the host's log shows it. */
struct LogOrigin {
    const char* pFunction;
    const char* pFile;
    int nLine;
};

/**
 * Writes one message to the host's log, composed of the parts only when the level is active. Any
 * thread; may throw what the host's functions throw.
 */
template <class... Parts>
void WriteLog(QelLogLevel level, const LogOrigin& origin, const Parts&... parts)
{
    if (!QelLoggingStateIsActive(level))
        return;
    qel_stringstream message;
    message.reserve(128);
    (message << ... << parts);
    QelLog(level, message.str().c_str(), origin.pFunction, origin.pFile, origin.nLine);
}

} // namespace Tovra
