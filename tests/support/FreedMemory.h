#pragma once

#include <string>

/**
 * Looks at every block of memory that C++ frees. A test program that needs it names the .cpp among
 * its sources: it replaces the program's operator new and delete. What C libraries allocate goes
 * past it.
 */
namespace Tovra::TestSupport::FreedMemory
{

/** From now on counts the freed blocks that contain the text. Not while other threads free. */
void Watch(const std::string& sText);

/** Ends the watch; returns how many there were. */
unsigned Unwatch();

} // namespace Tovra::TestSupport::FreedMemory
