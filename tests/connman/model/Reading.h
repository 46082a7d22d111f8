#pragma once

#include "tests/support/WireValue.h"

namespace Tovra::ConnManModel
{

/** What a value off the wire is to the client. */
enum class Kind {
    Nothing, ///< no value, or a container without contents
    Unknown, ///< of a type that is not carried
    Flag,
    Number, ///< y, q or u
    Text,
    Path,
    List, ///< an array or a struct
    Dictionary,
};

/**
 * A value as the client sees it: variants do not count, however many. It may stand for a value that
 * is missing.
 */
class Seen
{
public:
    Seen() = default;
    explicit Seen(const TestSupport::WireValue& value);

    Kind GetKind() const { return kind; }

    /** Of a List its first member's, of a Dictionary that of the value under the smallest key. */
    Kind GetFirstKind() const;

    // Each of these throws std::bad_cast on any other kind.
    const std::string& AsText() const;
    const std::string& AsPath() const;
    std::uint32_t AsNumber() const;
    bool AsFlag() const;
    std::vector<Seen> AsList() const;

    /** A Dictionary's value under the key, the last one of several; Nothing if there is none. */
    Seen Find(const std::string& sKey) const;
    bool Has(const std::string& sKey) const { return FindValue(sKey) != nullptr; }

private:
    const TestSupport::WireValue& Expect(Kind expected) const;
    const TestSupport::WireValue* FindValue(const std::string& sKey) const;
    Seen FirstValue() const;

    const TestSupport::WireValue* pValue = nullptr;
    Kind kind = Kind::Nothing;
};

/** The argument at the position; Nothing if there are fewer. */
Seen ReadArgument(const std::vector<TestSupport::WireValue>& vecArguments, std::size_t nPosition);

} // namespace Tovra::ConnManModel
