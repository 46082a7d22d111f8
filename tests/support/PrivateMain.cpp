#include "tests/support/PrivateMounts.h"
#include "tests/support/TestMain.h"

/** For test programs that need an /opt of their own; they name this file among their sources. */
int main(int argc, char** argv)
{
    Tovra::TestSupport::EnterPrivateMounts(argv);
    return Tovra::TestSupport::RunTests(argc, argv);
}
