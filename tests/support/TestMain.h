#pragma once

#include <string>

namespace Tovra::TestSupport
{

/**
 * What every test program's main() does: starts this process's bus and runs the tests.
 * `sBusConfiguration`: as of `PrivateBus`.
 */
int RunTests(int nArguments, char** pArguments, const std::string& sBusConfiguration = "");

} // namespace Tovra::TestSupport
