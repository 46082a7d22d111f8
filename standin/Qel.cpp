#include "host/Qel.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace
{

// Levels at or above this are written. Anything but a number counts as 0: everything is.
int ReadThreshold()
{
    const char* pText = std::getenv("FUNDRA_LOG_LEVEL");
    return pText ? std::atoi(pText) : static_cast<int>(QelLogWarning);
}

} // namespace

bool QelLoggingStateIsActive(QelLogLevel level)
{
    static const int nThreshold = ReadThreshold();
    return level >= nThreshold;
}

void QelLog(QelLogLevel level, const char* message, const char* function, const char* file,
            int line)
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    std::array<char, 32> time = {};
    std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M:%S", &local);
    std::fprintf(stderr, "%s [%d] %s (%s, %s:%d)\n", time.data(), static_cast<int>(level), message,
                 function, file, line);
}
