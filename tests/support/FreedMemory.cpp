#include "tests/support/FreedMemory.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace Tovra::TestSupport
{

namespace
{

/** In front of each block. */
struct alignas(std::max_align_t) Header {
    std::size_t nSize;
};

// Not allocated, and so never freed.
std::array<char, 256> watched = {};
std::atomic<std::size_t> nWatched = 0;
std::atomic<unsigned> nFound = 0;

// Zeroed: what an earlier owner left in it must not be taken for what this one leaves.
void* Allocate(std::size_t nSize) noexcept
{
    void* pBlock = std::calloc(1, sizeof(Header) + nSize);
    if (!pBlock)
        return nullptr;
    static_cast<Header*>(pBlock)->nSize = nSize;
    return static_cast<Header*>(pBlock) + 1;
}

void* AllocateOrThrow(std::size_t nSize)
{
    void* pContents = Allocate(nSize);
    if (!pContents)
        throw std::bad_alloc();
    return pContents;
}

void Free(void* pContents) noexcept
{
    if (!pContents)
        return;
    Header* pHeader = static_cast<Header*>(pContents) - 1;
    const std::size_t nLength = nWatched;
    if (nLength > 0 && memmem(pContents, pHeader->nSize, watched.data(), nLength))
        ++nFound;
    std::free(pHeader);
}

} // namespace

void FreedMemory::Watch(const std::string& sText)
{
    if (sText.empty() || sText.size() > watched.size())
        std::abort();
    std::memcpy(watched.data(), sText.data(), sText.size());
    nFound = 0;
    nWatched = sText.size();
}

unsigned FreedMemory::Unwatch()
{
    nWatched = 0;
    return nFound;
}

} // namespace Tovra::TestSupport

// All of them: the sanitizers' own would not go together with ours.

void* operator new(std::size_t nSize)
{
    return Tovra::TestSupport::AllocateOrThrow(nSize);
}

void* operator new[](std::size_t nSize)
{
    return Tovra::TestSupport::AllocateOrThrow(nSize);
}

void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Tovra::TestSupport::Allocate(nSize);
}

void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept
{
    return Tovra::TestSupport::Allocate(nSize);
}

void operator delete(void* pContents) noexcept
{
    Tovra::TestSupport::Free(pContents);
}

void operator delete[](void* pContents) noexcept
{
    Tovra::TestSupport::Free(pContents);
}

void operator delete(void* pContents, std::size_t) noexcept
{
    Tovra::TestSupport::Free(pContents);
}

void operator delete[](void* pContents, std::size_t) noexcept
{
    Tovra::TestSupport::Free(pContents);
}

void operator delete(void* pContents, const std::nothrow_t&) noexcept
{
    Tovra::TestSupport::Free(pContents);
}

void operator delete[](void* pContents, const std::nothrow_t&) noexcept
{
    Tovra::TestSupport::Free(pContents);
}
