#include "Common/ConnManLog.h"

namespace Tovra
{

void LogBadVersion(const char* pContext)
{
    LogConnMan(QelLogError, "BadVersion", 42, "ConnMan: ", pContext,
               ": Message from incompatible connmand version (", "1.29", " required)");
}

} // namespace Tovra
