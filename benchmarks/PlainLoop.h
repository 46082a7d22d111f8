#pragma once

#include <atomic>
#include <string>
#include <thread>

struct DBusConnection;

namespace Tovra::Benchmarks
{

/**
 * What the dispatch thread is to be compared with: a thread that does nothing but libdbus's own
 * read-write-dispatch, with the same time-out.
 */
class PlainLoop
{
public:
    PlainLoop(); ///< on a connection of its own to the system bus; throws std::runtime_error
    ~PlainLoop();

    PlainLoop(const PlainLoop&) = delete;
    PlainLoop& operator=(const PlainLoop&) = delete;

    /** Sends a method call of ConnMan's, without arguments and without waiting. */
    void Send(const std::string& sPath, const char* pInterface, const char* pMember);

    pid_t GetThread() const { return nThread; }

private:
    void Run();

    DBusConnection* pConnection;
    std::atomic<bool> bStop = false;
    std::atomic<pid_t> nThread = 0;
    std::thread thread;
};

} // namespace Tovra::Benchmarks
