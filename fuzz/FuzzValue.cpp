// A value as a program may build it, however malformed: written to a message and read back.

#include "fuzz/FuzzSupport.h"
#include "tests/support/DataTrees.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Tovra::Fuzz::SilenceWarnings();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t nSize)
{
    Tovra::TestSupport::Choices choices(pBytes, nSize);
    Tovra::Fuzz::RequireTravels(Tovra::TestSupport::MakeAnyTree(choices));
    return 0;
}
