#include "tests/support/HostLog.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <ostream>
#include <set>

namespace Tovra::TestSupport
{

namespace
{

struct Recorder {
    std::mutex mtxRecorder; // guards all that follows
    std::vector<LogMessage> vecMessages;
    QelLogLevel threshold = QelLogDebug;
    std::set<QelLogLevel> setInactive;
    std::function<void(const LogMessage&)> fnOnMessage;
};

// Never destroyed: the dispatch thread logs until the last static object is gone.
Recorder& GetRecorder()
{
    static auto& recorder = *new Recorder;
    return recorder;
}

template <class Predicate> std::vector<LogMessage> Select(const Predicate& predicate)
{
    const std::vector<LogMessage> vecAll = HostLog::GetMessages();
    std::vector<LogMessage> vecSelected;
    std::copy_if(vecAll.begin(), vecAll.end(), std::back_inserter(vecSelected), predicate);
    return vecSelected;
}

} // namespace

bool operator==(const LogMessage& left, const LogMessage& right)
{
    return left.level == right.level && left.sText == right.sText &&
           left.sFunction == right.sFunction && left.sFile == right.sFile &&
           left.nLine == right.nLine;
}

bool operator!=(const LogMessage& left, const LogMessage& right)
{
    return !(left == right);
}

std::ostream& operator<<(std::ostream& stream, const LogMessage& message)
{
    return stream << "level " << message.level << " \"" << message.sText << "\" ("
                  << message.sFunction << ", " << message.sFile << ", " << message.nLine << ")";
}

void HostLog::Reset()
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxRecorder);
    recorder.vecMessages.clear();
    recorder.threshold = QelLogDebug;
    recorder.setInactive.clear();
    recorder.fnOnMessage = nullptr;
}

void HostLog::SetThreshold(QelLogLevel threshold)
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxRecorder);
    recorder.threshold = threshold;
}

void HostLog::SetActive(QelLogLevel level, bool bActive)
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxRecorder);
    if (bActive)
        recorder.setInactive.erase(level);
    else
        recorder.setInactive.insert(level);
}

void HostLog::SetOnMessage(std::function<void(const LogMessage&)> fn)
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxRecorder);
    recorder.fnOnMessage = std::move(fn);
}

std::vector<LogMessage> HostLog::GetMessages()
{
    Recorder& recorder = GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxRecorder);
    return recorder.vecMessages;
}

std::vector<LogMessage> HostLog::GetMessagesWithText(const std::string& sText)
{
    return Select([&](const LogMessage& message) { return message.sText == sText; });
}

std::vector<LogMessage> HostLog::GetMessagesOfFunction(const std::string& sFunction)
{
    return Select([&](const LogMessage& message) { return message.sFunction == sFunction; });
}

std::vector<LogMessage> HostLog::GetMessagesOfLevel(QelLogLevel level)
{
    return Select([&](const LogMessage& message) { return message.level == level; });
}

bool HostLog::Mentions(const std::string& sPart)
{
    return !Select([&](const LogMessage& message) {
                return (message.sText + '\n' + message.sFunction + '\n' + message.sFile)
                           .find(sPart) != std::string::npos;
            }).empty();
}

bool HostLog::Await(const LogMessage& message, std::chrono::milliseconds limit)
{
    const auto isIt = [&](const LogMessage& logged) { return logged == message; };
    return Eventually([&] { return !Select(isIt).empty(); }, limit);
}

bool HostLog::AwaitText(const std::string& sText, std::chrono::milliseconds limit)
{
    return AwaitTexts(sText, 1, limit);
}

bool HostLog::AwaitTexts(const std::string& sText, std::size_t nCount,
                         std::chrono::milliseconds limit)
{
    return Eventually([&] { return GetMessagesWithText(sText).size() >= nCount; }, limit);
}

} // namespace Tovra::TestSupport

using Tovra::TestSupport::LogMessage;

bool QelLoggingStateIsActive(QelLogLevel level)
{
    auto& recorder = Tovra::TestSupport::GetRecorder();
    const std::lock_guard<std::mutex> lock(recorder.mtxRecorder);
    return level >= recorder.threshold && recorder.setInactive.count(level) == 0;
}

void QelLog(QelLogLevel level, const char* message, const char* function, const char* file,
            int line)
{
    const LogMessage logged{level, message, function, file, line};
    auto& recorder = Tovra::TestSupport::GetRecorder();
    std::unique_lock<std::mutex> lock(recorder.mtxRecorder);
    recorder.vecMessages.push_back(logged);
    const auto fnOnMessage = recorder.fnOnMessage;
    lock.unlock();
    if (fnOnMessage)
        fnOnMessage(logged);
}
