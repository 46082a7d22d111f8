#pragma once

#include "D-Bus.h"

#include <map>
#include <string>

namespace Tovra::DBus
{

/**
 * Empty a value after overwriting every text that is a value in it, not keys or paths: for copies
 * of credentials, which must not stay readable in freed memory. Plain: any thread.
 */
void Wipe(std::string& sText) noexcept;
void Wipe(Data& data) noexcept;
void Wipe(std::map<std::string, std::string>& mapTexts) noexcept;

/** Wipes a value when the scope ends, however it ends. */
template <class Value> class WipedAtEnd
{
public:
    explicit WipedAtEnd(Value& valueToWipe) : value(valueToWipe) {}
    ~WipedAtEnd() { Wipe(value); }

    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    Value& value;
};

} // namespace Tovra::DBus
