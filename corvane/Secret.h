#pragma once

#include <cstring>
#include <string>

namespace Tovra::Corvane
{

/** Empties a text after overwriting its memory. */
inline void Clear(std::string& sSecret)
{
    sSecret.resize(sSecret.capacity());
    explicit_bzero(sSecret.data(), sSecret.size());
    sSecret.clear();
}

/** A text that is cleared with this object; it is not copied. */
class Secret
{
public:
    Secret() = default;
    ~Secret() { Clear(sText); }

    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;

    std::string sText;
};

} // namespace Tovra::Corvane
