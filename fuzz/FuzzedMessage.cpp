#include "fuzz/FuzzedMessage.h"

#include "fuzz/FuzzSupport.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace Tovra::Fuzz
{

namespace
{

constexpr std::size_t nLeadIn = 4;

template <class Number> void Append(std::string& sBytes, Number nNumber)
{
    std::array<char, sizeof nNumber> bytes = {};
    std::memcpy(bytes.data(), &nNumber, bytes.size());
    sBytes.append(bytes.data(), bytes.size());
}

void Align(std::string& sBytes)
{
    sBytes.resize((sBytes.size() + 7) / 8 * 8);
}

/** A header field that holds a text: code, signature, value. */
void AppendField(std::string& sBytes, char nCode, char nType, const char* pText)
{
    Align(sBytes);
    sBytes.append({nCode, '\1', nType, '\0'});
    const std::size_t nLength = std::strlen(pText);
    if (nType == 'g')
        sBytes += static_cast<char>(nLength);
    else
        Append(sBytes, static_cast<std::uint32_t>(nLength));
    sBytes.append(pText, nLength + 1);
}

/** That of a method call, up to the body. */
std::string MakeHeader(const char* pSignature, std::size_t nBody)
{
    std::string sFields;
    AppendField(sFields, 1, 'o', "/");
    AppendField(sFields, 2, 's', "net.example.Peer");
    AppendField(sFields, 3, 's', "Tell");
    AppendField(sFields, 8, 'g', pSignature);

    std::string sHeader{'l', '\1', '\0', '\1'};
    Append(sHeader, static_cast<std::uint32_t>(nBody));
    Append(sHeader, std::uint32_t{1}); // a message without a serial number is not received
    Append(sHeader, static_cast<std::uint32_t>(sFields.size()));
    sHeader += sFields;
    Align(sHeader);
    return sHeader;
}

} // namespace

bool MessageSequence::Next()
{
    if (static_cast<std::size_t>(pEnd - pNext) < nLeadIn)
        return false;
    nKind = pNext[0];
    nSignature = pNext[1];
    const std::size_t nWanted = pNext[2] + pNext[3] * std::size_t{256};
    pBody = pNext + nLeadIn;
    nBody = std::min(nWanted, static_cast<std::size_t>(pEnd - pBody));
    pNext = pBody + nBody;
    return true;
}

DBus::Message MessageSequence::Make(std::initializer_list<const char*> signatures) const
{
    const char* pSignature = signatures.begin()[nSignature % signatures.size()];
    return Demarshal(MakeHeader(pSignature, nBody) + std::string(pBody, pBody + nBody));
}

std::string MakeInput(unsigned nKind, unsigned nSignature, const DBus::Message& message)
{
    const std::string sBytes = Marshal(message);
    std::uint32_t nBody = 0;
    std::memcpy(&nBody, &sBytes[4], sizeof nBody);
    Require(nBody < 65536, "the body's length has two bytes");
    std::string sInput{static_cast<char>(nKind), static_cast<char>(nSignature)};
    Append(sInput, static_cast<std::uint16_t>(nBody));
    return sInput + sBytes.substr(sBytes.size() - nBody);
}

} // namespace Tovra::Fuzz
