#pragma once

namespace Tovra::TestSupport
{

/** To be called before threads start: they tell where they are when `DumpStacksAndAbort` asks. */
void PrepareStackDump();

/** For a process that does not get on: writes the stack of each of its threads, and aborts. */
[[noreturn]] void DumpStacksAndAbort(const char* pReason);

} // namespace Tovra::TestSupport
