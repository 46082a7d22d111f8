#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace Tovra::TestSupport
{

/** What D-Bus allows in no header field of the kind; libdbus aborts the process on each. */
struct BadText {
    const char* pWhat; ///< fit for the name of a test
    const char* pText; ///< null once
};

/** For the names of tests. */
inline void PrintTo(const BadText& text, std::ostream* pStream)
{
    *pStream << text.pWhat;
}

const std::vector<BadText>& GetBadPaths();
const std::vector<BadText>& GetBadInterfaces();
const std::vector<BadText>& GetBadMembers();
const std::vector<BadText>& GetBadBusNames();

/** The longest name that D-Bus allows: 255 bytes. */
std::string MakeLongestName();

} // namespace Tovra::TestSupport
