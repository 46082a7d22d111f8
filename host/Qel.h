#pragma once

/**
 * The host's logging, from libfundra.so.5.0. The functions are the host's: the plug-in calls them
 * through their dynamic symbols, from any thread, some with the network lock held exclusively and
 * some with a lock of its own. So they take no lock that is held while the plug-in is called, and
 * call none of its operations.
 */

#include <cstddef>
#include <string>

enum QelLogLevel : int {
    QelLogDebug = 0,
    QelLogInfo = 1,
    QelLogWarning = 2,
    QelLogError = 3,
};

using qel_string = std::string;

/** Whether messages of this level are written at all; asked before one is composed. */
[[gnu::visibility("default")]] bool QelLoggingStateIsActive(QelLogLevel level);

/** Writes one message with where it came from. The texts are copied or written before it returns.
 */
[[gnu::visibility("default")]] void QelLog(QelLogLevel level, const char* message,
                                           const char* function, const char* file, int line);

/** Composes one message. */
class qel_stringstream
{
public:
    void reserve(std::size_t nCharacters) { sBuffer.reserve(nCharacters); }

    qel_stringstream& operator<<(const char* pText)
    {
        sBuffer += pText;
        return *this;
    }

    qel_stringstream& operator<<(const qel_string& sText)
    {
        sBuffer += sText;
        return *this;
    }

    qel_stringstream& operator<<(unsigned int nNumber)
    {
        sBuffer += std::to_string(nNumber);
        return *this;
    }

    const qel_string& str() const { return sBuffer; }

private:
    qel_string sBuffer;
};
