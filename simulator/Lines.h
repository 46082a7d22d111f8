#pragma once

#include <string>

namespace Tovra::Simulator
{

/** Writes the text and a newline, whole, whichever threads write. A reader who is gone is no error.
 */
void WriteLine(int nFile, std::string sLine);

} // namespace Tovra::Simulator
