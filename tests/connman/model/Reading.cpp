#include "tests/connman/model/Reading.h"

#include <typeinfo>

namespace Tovra::ConnManModel
{

using TestSupport::WireValue;

namespace
{

const WireValue& WithoutVariants(const WireValue& value)
{
    return value.sSignature == "v" ? WithoutVariants(value.vecMembers.front()) : value;
}

Kind KindOf(const WireValue& value)
{
    switch (value.sSignature.front()) {
    case 'b':
        return Kind::Flag;
    case 'y':
    case 'q':
    case 'u':
        return Kind::Number;
    case 's':
        return Kind::Text;
    case 'o':
        return Kind::Path;
    case 'a':
    case '(':
        if (value.vecMembers.empty())
            return Kind::Nothing;
        return value.sSignature[1] == '{' ? Kind::Dictionary : Kind::List;
    default:
        return Kind::Unknown;
    }
}

} // namespace

Seen::Seen(const WireValue& value) : pValue(&WithoutVariants(value)), kind(KindOf(*pValue)) {}

Kind Seen::GetFirstKind() const
{
    if (kind == Kind::List)
        return Seen(pValue->vecMembers.front()).kind;
    return kind == Kind::Dictionary ? FirstValue().kind : Kind::Nothing;
}

const WireValue& Seen::Expect(Kind expected) const
{
    if (kind != expected)
        throw std::bad_cast();
    return *pValue;
}

const std::string& Seen::AsText() const
{
    return Expect(Kind::Text).sText;
}

const std::string& Seen::AsPath() const
{
    return Expect(Kind::Path).sText;
}

std::uint32_t Seen::AsNumber() const
{
    return static_cast<std::uint32_t>(Expect(Kind::Number).nNumber);
}

bool Seen::AsFlag() const
{
    return Expect(Kind::Flag).nNumber != 0;
}

std::vector<Seen> Seen::AsList() const
{
    const std::vector<WireValue>& vecMembers = Expect(Kind::List).vecMembers;
    std::vector<Seen> vecSeen;
    vecSeen.reserve(vecMembers.size());
    for (const WireValue& member : vecMembers)
        vecSeen.emplace_back(member);
    return vecSeen;
}

Seen Seen::Find(const std::string& sKey) const
{
    const WireValue* pFound = FindValue(sKey);
    return pFound ? Seen(*pFound) : Seen();
}

// Keys of another type than text make a dictionary that shows no entries.
const WireValue* Seen::FindValue(const std::string& sKey) const
{
    const WireValue* pFound = nullptr;
    for (const WireValue& entry : Expect(Kind::Dictionary).vecMembers) {
        const WireValue& key = entry.vecMembers.front();
        if (key.sSignature == "s" && key.sText == sKey)
            pFound = &entry.vecMembers.back();
    }
    return pFound;
}

Seen Seen::FirstValue() const
{
    const std::string* pSmallest = nullptr;
    for (const WireValue& entry : pValue->vecMembers) {
        const WireValue& key = entry.vecMembers.front();
        if (key.sSignature == "s" && (!pSmallest || key.sText < *pSmallest))
            pSmallest = &key.sText;
    }
    return pSmallest ? Find(*pSmallest) : Seen();
}

Seen ReadArgument(const std::vector<WireValue>& vecArguments, std::size_t nPosition)
{
    return nPosition < vecArguments.size() ? Seen(vecArguments[nPosition]) : Seen();
}

} // namespace Tovra::ConnManModel
