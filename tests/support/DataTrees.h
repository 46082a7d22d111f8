#pragma once

#include "Include/D-Bus.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tovra::TestSupport
{

/**
 * A sequence of bytes that decides how a tree is built, zeros after its end. A generator of bytes
 * thereby is one of trees, and whatever shortens the bytes makes the tree smaller.
 */
class Choices
{
public:
    Choices(const std::uint8_t* pFirst, std::size_t nSize) : pNext(pFirst), pEnd(pFirst + nSize) {}
    explicit Choices(const std::vector<std::uint8_t>& vecBytes)
        : Choices(vecBytes.data(), vecBytes.size())
    {
    }

    std::uint8_t Next() { return pNext == pEnd ? std::uint8_t{0} : *pNext++; }
    std::uint32_t Below(std::uint32_t nEnd) { return Next() % nEnd; }

private:
    const std::uint8_t* pNext;
    const std::uint8_t* pEnd;
};

/** A tree that can be sent; its texts may need mending. */
DBus::Data MakeSendableTree(Choices& choices);

/** Any tree that this class can hold: most of the larger ones have a flaw somewhere. */
DBus::Data MakeAnyTree(Choices& choices);

/** `Invalid`, which only reading gives; the layer's warning goes to standard error. */
const DBus::Data& GetInvalid();

} // namespace Tovra::TestSupport
