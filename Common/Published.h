#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace Tovra
{

/**
 * A value that one thread may read while another one replaces it, without a lock: each change
 * publishes a new version, and every version stays until the end. For values that change a few
 * times in a process's life.
 */
template <class Value> class Published
{
public:
    Published() : pNewest(new Version{Value(), nullptr}) {}

    ~Published()
    {
        for (const Version* pVersion = pNewest.load(); pVersion;)
            delete std::exchange(pVersion, pVersion->pOlder);
    }

    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    /** The newest version; stays as it is for as long as this object lives. */
    const Value& Get() const noexcept { return pNewest.load(std::memory_order_acquire)->value; }

    /** Publishes what `change` makes of a copy of the newest version; may be called again. */
    template <class Change> void Update(const Change& change)
    {
        const Version* pSeen = pNewest.load(std::memory_order_acquire);
        std::unique_ptr<Version> pNext;
        do {
            pNext = std::make_unique<Version>(Version{pSeen->value, pSeen});
            change(pNext->value);
        } while (!pNewest.compare_exchange_weak(pSeen, pNext.get(), std::memory_order_acq_rel));
        pNext.release();
    }

private:
    struct Version {
        Value value;
        const Version* pOlder;
    };

    std::atomic<const Version*> pNewest;
};

} // namespace Tovra
