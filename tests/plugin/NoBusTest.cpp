#include "tests/plugin/ChildProcess.h"

#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tovra
{

namespace
{

/** A socket in the place of a bus, which tells whether anybody came. */
class DoorBell
{
public:
    DoorBell()
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        // An abstract name: it begins with a zero byte and leaves no file behind.
        std::memcpy(address.sun_path + 1, sName.data(), sName.size());
        const auto nLength =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + sName.size());
        if (bind(nSocket, reinterpret_cast<sockaddr*>(&address), nLength) != 0 ||
            listen(nSocket, 1) != 0)
            throw std::runtime_error("cannot listen");
    }

    ~DoorBell() { close(nSocket); }

    DoorBell(const DoorBell&) = delete;
    DoorBell& operator=(const DoorBell&) = delete;

    std::string GetAddress() const { return "unix:abstract=" + sName; }

    bool HasRung() const
    {
        pollfd descriptor = {nSocket, POLLIN, 0};
        return poll(&descriptor, 1, 0) == 1;
    }

private:
    std::string sName = "corvane-test-door-" + std::to_string(getpid());
    int nSocket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

} // namespace

// What a program does before its main(), it does when it only lists its tests.
TEST(PlainFunctions, AreLinkedWithoutMeetingABus)
{
    const DoorBell bell;
    TestSupport::ChildProcess program({"/proc/self/exe", "--gtest_list_tests"},
                                      {{"DBUS_SYSTEM_BUS_ADDRESS", bell.GetAddress()}});
    EXPECT_TRUE(TestSupport::Eventually([&] { return bell.HasRung() || program.HasEnded(); }));
    EXPECT_FALSE(bell.HasRung());
    EXPECT_TRUE(program.Await().IsSuccess());
}

} // namespace Tovra
