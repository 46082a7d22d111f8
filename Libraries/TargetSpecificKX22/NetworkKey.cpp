#include "Libraries/TargetSpecificKX22/NetworkKey.h"

#include <cstdint>

namespace Tovra
{

namespace
{

// Not std::isalnum: that depends on the host's locale.
bool IsLetterOrDigit(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9');
}

std::uint32_t HashFnv1a(const std::string& sText)
{
    std::uint32_t nHash = 0x811c9dc5;
    for (const char* pByte = sText.c_str(); *pByte; ++pByte) {
        nHash ^= static_cast<unsigned char>(*pByte);
        nHash *= 16777619u;
    }
    return nHash;
}

} // namespace

std::string MakeNetworkKey(const std::string& sName)
{
    std::string sKey;
    for (const char character : sName) {
        if (IsLetterOrDigit(character))
            sKey += character;
    }
    const std::uint32_t nHash = HashFnv1a(sName);
    for (int nShift = 28; nShift >= 0; nShift -= 4)
        sKey += "0123456789ABCDEF"[(nHash >> nShift) & 0xF];
    return sKey;
}

} // namespace Tovra
