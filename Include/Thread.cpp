#include "D-Bus.h"

#include <boost/thread/lock_types.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <pthread.h>
#include <thread>

namespace Tovra::DBus
{

namespace
{

struct ThreadRecord {
    std::string sName;
    std::thread thread;
};

constexpr int nDispatchTimeout = 500; // ms

} // namespace

class Thread::Impl
{
public:
    Impl() : connection(Connection::SystemBus()) {}

    ~Impl()
    {
        std::unique_ptr<ThreadRecord> pStopped;
        {
            const boost::unique_lock<boost::shared_mutex> lock(mtxRecord);
            pStopped = std::move(pRecord);
        }
        if (!pStopped)
            return;
        if (pStopped->thread.get_id() == std::this_thread::get_id())
            pStopped->thread.detach(); // a callback has called exit(), which does not return
        else
            pStopped->thread.join();
    }

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void RunIfNotRunning()
    {
        if (!connection)
            return;
        const boost::unique_lock<boost::shared_mutex> lock(mtxRecord);
        if (pRecord)
            return;
        auto pStarted = std::make_unique<ThreadRecord>(ThreadRecord{"DBusThread", {}});
        // Its first look at the record waits for the lock.
        pStarted->thread = std::thread(&Impl::ThreadFunc, this);
        pthread_setname_np(pStarted->thread.native_handle(), pStarted->sName.c_str());
        pRecord = std::move(pStarted);
    }

    Connection connection; // empty when there is no system bus

private:
    bool IsRunning()
    {
        const boost::shared_lock<boost::shared_mutex> lock(mtxRecord);
        return pRecord != nullptr;
    }

    void ThreadFunc()
    {
        while (IsRunning()) {
            // True only once the bus has closed the connection: then this never ends.
            while (connection.Dispatch(nDispatchTimeout)) {
            }
        }
    }

    boost::shared_mutex mtxRecord;         // guards pRecord; never held while dispatching
    std::unique_ptr<ThreadRecord> pRecord; // the thread runs for as long as there is one
};

Thread::Thread() : pImpl(std::make_unique<Impl>()) {}

Thread::~Thread() = default;

void Thread::RunIfNotRunning()
{
    pImpl->RunIfNotRunning();
}

Connection& Thread::GetDbusConnection() const
{
    return pImpl->connection;
}

} // namespace Tovra::DBus
