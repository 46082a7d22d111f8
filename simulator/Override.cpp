#include "simulator/Override.h"

#include <algorithm>

namespace Tovra::Simulator
{

namespace
{

template <class Table> auto Find(Table& properties, const std::string& sName)
{
    return std::find_if(properties.begin(), properties.end(),
                        [&](const auto& property) { return property.first == sName; });
}

} // namespace

void Apply(const Overrides& overrides, Properties& properties)
{
    for (const auto& [sName, value] : overrides) {
        const auto property = Find(properties, sName);
        if (!value && property != properties.end())
            properties.erase(property);
        else if (value && property != properties.end())
            property->second = *value;
        else if (value)
            properties.emplace_back(sName, *value);
    }
}

Properties Compare(const Properties& before, const Properties& after)
{
    Properties changes;
    for (const auto& [sName, value] : after) {
        const auto old = Find(before, sName);
        if (old == before.end() || old->second != value)
            changes.emplace_back(sName, value);
    }
    for (const auto& [sName, value] : before)
        if (Find(after, sName) == after.end())
            changes.emplace_back(sName, MakeEmpty(value.sSignature));
    return changes;
}

} // namespace Tovra::Simulator
