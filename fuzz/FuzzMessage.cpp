// A message as it comes from the bus: read, copied, searched for its alternatives, written again.

#include "fuzz/FuzzSupport.h"
#include "tests/support/DataText.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <typeinfo>

using Tovra::DBus::Data;
using Tovra::DBus::Message;
using Tovra::Fuzz::Require;
using Tovra::TestSupport::Describe;

namespace
{

constexpr std::size_t nFixedHeader = 16;

/** Makes the length of the body right; nearly every change to an input would be refused for it. */
void MendBodyLength(std::string& sBytes)
{
    if (sBytes.size() < nFixedHeader || sBytes[0] != 'l')
        return;
    std::uint32_t nFields = 0;
    std::memcpy(&nFields, &sBytes[12], sizeof nFields);
    const std::size_t nHeader = nFixedHeader + (std::size_t{nFields} + 7) / 8 * 8;
    if (nHeader > sBytes.size())
        return;
    const auto nBody = static_cast<std::uint32_t>(sBytes.size() - nHeader);
    std::memcpy(&sBytes[4], &nBody, sizeof nBody);
}

template <class T> bool HandsOut(const Data& data)
{
    try {
        data.As<T>();
        return true;
    } catch (const std::bad_cast&) {
        return false;
    }
}

void RequireOneAlternative(const Data& data)
{
    const auto type = data.GetType();
    Require(HandsOut<bool>(data) == (type == Data::Bool), "bool");
    Require(HandsOut<std::uint32_t>(data) == (type == Data::UInt32), "number");
    Require(HandsOut<std::string>(data) == (type == Data::String), "string");
    Require(HandsOut<std::vector<Data>>(data) == (type == Data::Array), "vector");
    Require(HandsOut<std::map<std::string, Data>>(data) == (type == Data::Dictionary), "map");
}

void RequireCopies(const Data& data)
{
    const std::string sText = Describe(data);
    Data copy(data);
    Require(Describe(copy) == sText, "a copy is alike");
    Data assigned = Data::MakeString("old");
    assigned = std::move(copy);
    // NOLINTNEXTLINE(bugprone-use-after-move): what a moved-from value is, is promised
    Require(Describe(copy) == "Empty", "what was moved from is empty");
    copy = assigned;
    Require(Describe(copy) == sText, "an assigned copy is alike");
    if (copy.GetType() == Data::Array) {
        const std::string sFirst = Describe(copy.As<std::vector<Data>>()[0]);
        copy = copy.As<std::vector<Data>>()[0];
        Require(Describe(copy) == sFirst, "a value may be assigned from its element");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Tovra::Fuzz::SilenceWarnings();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t nSize)
{
    std::string sBytes(pBytes, pBytes + nSize);
    MendBodyLength(sBytes);
    const Message message = Tovra::Fuzz::Demarshal(sBytes);
    if (!message)
        return 0;

    const std::vector<Data> vecArguments = message.Contents(0);
    Require(!vecArguments.empty(), "there is one value at least");
    Require(Describe(message.Contents()) == Describe(vecArguments[0]), "the first is the first");
    const std::vector<Data> vecThree = message.Contents(3);
    Require(vecThree.size() == 3, "as many as asked for");
    for (std::size_t nArgument = 0; nArgument < vecThree.size(); ++nArgument) {
        const bool bThere = nArgument < vecArguments.size();
        Require(Describe(vecThree[nArgument]) ==
                    Describe(bThere ? vecArguments[nArgument] : Data()),
                "the same, the missing ones empty");
    }
    for (const Data& data : vecArguments) {
        RequireOneAlternative(data);
        RequireCopies(data);
        Tovra::Fuzz::RequireTravels(data);
    }
    return 0;
}
