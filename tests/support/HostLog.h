#pragma once

#include "host/Qel.h"
#include "tests/support/Waiting.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/**
 * The host's logging functions for test programs: linking this library defines them. What is logged
 * in the process is recorded, on whichever thread. Any thread may use everything here.
 */
namespace Tovra::TestSupport
{

/** One call of QelLog. */
struct LogMessage {
    QelLogLevel level;
    std::string sText;
    std::string sFunction;
    std::string sFile;
    int nLine;
};

bool operator==(const LogMessage& left, const LogMessage& right);
bool operator!=(const LogMessage& left, const LogMessage& right);
std::ostream& operator<<(std::ostream& stream, const LogMessage& message);

namespace HostLog
{

/** Forgets all messages; all levels are active and nothing is called on a message. */
void Reset();

/**
 * Which levels QelLoggingStateIsActive reports; from the threshold upwards. QelLog records what it
 * is given all the same, so that a message that was logged without asking shows.
 */
void SetThreshold(QelLogLevel threshold);
void SetActive(QelLogLevel level, bool bActive);

/**
 * Has `fn` called for each message, once it is recorded, on the thread that logs it and without a
 * lock. What it throws leaves QelLog.
 */
void SetOnMessage(std::function<void(const LogMessage&)> fn);

/** All messages since the last Reset, in the order of logging. */
std::vector<LogMessage> GetMessages();

/** Those with this text, of this function, or of this level. */
std::vector<LogMessage> GetMessagesWithText(const std::string& sText);
std::vector<LogMessage> GetMessagesOfFunction(const std::string& sFunction);
std::vector<LogMessage> GetMessagesOfLevel(QelLogLevel level);

/** Whether a text, function or file that was logged contains `sPart`. */
bool Mentions(const std::string& sPart);

/** Whether the message, or one with the text, was or is logged before the time is over. */
bool Await(const LogMessage& message, std::chrono::milliseconds limit = deadline);
bool AwaitText(const std::string& sText, std::chrono::milliseconds limit = deadline);

/** The same for the n-th message with the text. */
bool AwaitTexts(const std::string& sText, std::size_t nCount,
                std::chrono::milliseconds limit = deadline);

} // namespace HostLog

} // namespace Tovra::TestSupport
