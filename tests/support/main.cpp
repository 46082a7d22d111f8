#include "tests/support/TestMain.h"

int main(int argc, char** argv)
{
    return Tovra::TestSupport::RunTests(argc, argv);
}
