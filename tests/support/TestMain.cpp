#include "tests/support/TestMain.h"

#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>
#include <optional>

namespace Tovra::TestSupport
{

namespace
{

std::optional<PrivateBus> systemBus;

/** One bus for the process: libdbus reads the system bus's address once and keeps its connection.
 */
class BusEnvironment : public testing::Environment
{
public:
    explicit BusEnvironment(std::string sBusConfiguration)
        : sConfiguration(std::move(sBusConfiguration))
    {
    }

    void SetUp() override
    {
        systemBus.emplace(sConfiguration);
        systemBus->BecomeSystemBus();
    }

private:
    std::string sConfiguration;
};

} // namespace

PrivateBus& GetSystemBus()
{
    return systemBus.value();
}

int RunTests(int nArguments, char** pArguments, const std::string& sBusConfiguration)
{
    testing::InitGoogleTest(&nArguments, pArguments);
    // A child that runs the test anew has a bus and threads of its own.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    testing::AddGlobalTestEnvironment(new BusEnvironment(sBusConfiguration));
    return RUN_ALL_TESTS();
}

} // namespace Tovra::TestSupport
