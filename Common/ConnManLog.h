#pragma once

#include "Common/Log.h"

namespace Tovra
{

/** Writes one message as the ConnMan client. As `WriteLog`. */
template <class... Parts>
void LogConnMan(QelLogLevel level, const char* pFunction, int nLine, const Parts&... parts)
{
    WriteLog(level, {pFunction, "Libraries/TargetSpecificKX22/../../Common/ConnMan", nLine},
             parts...);
}

/** Reports a message, or an entry of a list, that does not have the shape that is known. */
void LogBadVersion(const char* pContext);

} // namespace Tovra
