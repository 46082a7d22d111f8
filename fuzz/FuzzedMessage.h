#pragma once

#include "Include/D-Bus.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace Tovra::Fuzz
{

/**
 * A sequence of messages out of the fuzzer's bytes. Each is one byte for what it is, one for its
 * signature, two for the length of its body, and the body as it goes over the wire: the header is
 * made here, since nearly every change to one would only be refused.
 */
class MessageSequence
{
public:
    MessageSequence(const std::uint8_t* pBytes, std::size_t nBytes)
        : pNext(pBytes),
          pEnd(pBytes + nBytes)
    {
    }

    /** Goes to the next message; false at the end. */
    bool Next();

    /** What it is: below `nKinds`. */
    unsigned GetKind(unsigned nKinds) const { return nKind % nKinds; }

    /** With one of the signatures; empty if the body does not go with it. */
    DBus::Message Make(std::initializer_list<const char*> signatures) const;

private:
    const std::uint8_t* pNext;
    const std::uint8_t* pEnd;
    const std::uint8_t* pBody = nullptr;
    std::size_t nBody = 0;
    std::uint8_t nKind = 0;
    std::uint8_t nSignature = 0;
};

/** The same the other way round, for the inputs that fuzzing starts from. */
std::string MakeInput(unsigned nKind, unsigned nSignature, const DBus::Message& message);

} // namespace Tovra::Fuzz
