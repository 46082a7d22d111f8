#pragma once

#include "tests/connman/ListData.h"

#include <gtest/gtest.h>
#include <ostream>

/** Dictionaries that differ from a complete one by a single value. */
namespace Tovra::RecordChange
{

using ListData::Properties;

enum class Kind {
    Missing,
    Empty,
    Invalid,
    Number,
    Flag,
    Path,
    Text,
    EmptyTexts,
    Texts,
    TextsAndNumber,
    TextsAfterInvalid,
    Paths,
    ListOfTexts,
    EmptySection,
    Section,
};

/** Another value under a key, or under "Section/Key" inside a section; or none at all. */
struct Change {
    const char* pKey;
    Kind kind;
};

/** The value that is put in place; nothing for `Missing`. */
DBus::Data MakeValue(Kind kind);

/** The value under the key, which is added where it is missing. */
DBus::Data& At(Properties& properties, const std::string& sKey);

Properties Changed(Properties properties, const Change& change);

/** For the names of tests: "IPv4MethodNumber" of a change, "IPv4Method" of a key. */
std::string GetName(const Change& change);
inline void PrintTo(const Change& change, std::ostream* pStream)
{
    *pStream << GetName(change);
}
std::string GetTestName(const testing::TestParamInfo<Change>& info);
std::string GetKeyTestName(const testing::TestParamInfo<const char*>& info);
std::string GetKindTestName(const testing::TestParamInfo<Kind>& info);

DBus::Data MakeTexts(const std::vector<std::string>& vecTexts);
DBus::Data MakeSection(Properties properties);

/** A whole dictionary as text, for comparing. */
std::string Describe(const Properties& properties);

} // namespace Tovra::RecordChange
