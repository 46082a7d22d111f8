#include "tests/plugin/Stage.h"
#include "tests/support/FreedMemory.h"

/** What the host stored and the next reading throws away. */
namespace Tovra
{

class ReadingSecrets : public Stage, public testing::WithParamInterface<const char*>
{
};

TEST_P(ReadingSecrets, LeavesNoneInFreedMemory)
{
    Start(Scenes::Quiet({Scenes::Wifi("Home")}));
    host.Edit([](DeviceConfig& config) {
        config.mapNetworkServices.at("Home52F50EAE").sPassphrase = GetParam();
    });
    Settle();
    TestSupport::FreedMemory::Watch(std::string(GetParam(), 8));
    Read();
    EXPECT_EQ(TestSupport::FreedMemory::Unwatch(), 0U);
    EXPECT_EQ(host.FindNetwork("Home52F50EAE")->sPassphrase, "");
}

INSTANTIATE_TEST_SUITE_P(Of, ReadingSecrets,
                         testing::Values("abcdefghij",
                                         "0123456789abcdef0123456789abcdef0123456789abcdef"),
                         [](const testing::TestParamInfo<const char*>& tested) {
                             return tested.param[0] == 'a' ? "FewCharacters" : "ManyCharacters";
                         });

} // namespace Tovra
