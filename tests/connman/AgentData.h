#pragma once

#include "tests/connman/RecordChange.h"

/** What ConnMan asks its agent, as the D-Bus layer reads it. */
namespace Tovra::AgentData
{

inline ListData::Properties Field(const std::string& sType, const std::string& sRequirement)
{
    return {{"Type", ListData::Text(sType)}, {"Requirement", ListData::Text(sRequirement)}};
}

/** Fields by name, as the second argument of "RequestInput". */
inline DBus::Data Fields(const std::map<std::string, ListData::Properties>& mapFields)
{
    ListData::Properties entries;
    for (const auto& [sName, properties] : mapFields)
        entries[sName] =
            DBus::Data::MakeDictionary(DBus::Data::Variant, properties).SetVariant(true);
    return DBus::Data::MakeDictionary(DBus::Data::Variant, entries);
}

} // namespace Tovra::AgentData
