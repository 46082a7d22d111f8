#include "Include/D-Bus.h"
#include "tests/support/DataText.h"

#include <gtest/gtest.h>

namespace Tovra::DBus
{

using TestSupport::Describe;

#ifndef NDEBUG
TEST(DataAssignDeathTest, OfAnotherTypeIsAProgrammingError)
{
    Data data = Data::MakeString("a");
    EXPECT_DEATH(data.Assign(Data::MakeObjectPath("/a")), "m_type == data.m_type");
}
#else
TEST(DataAssign, OfAnotherTypeChangesNothingInARelease)
{
    Data data = Data::MakeString("a");
    data.Assign(Data::MakeUInt32(1));
    EXPECT_EQ(Describe(data), "String \"a\"");
}
#endif

} // namespace Tovra::DBus
