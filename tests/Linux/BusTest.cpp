#include "Tacla/Linux/Bus.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tacla;

TEST(BusProbe, KnowsAddressesWhereNobodyListensOrSomebodyHangsUp) {
    const tacla::testing::TemporaryFolder folder;
    const auto nobody = "unix:path=" + (folder / "nobody").string();
    for (const auto& address : {std::string(), std::string("disabled:"), nobody, "unix:path=" + std::string(200, 'x'),
                                std::string("unix:abstract=tacla/nobody%2"), std::string("unix:guid,runtime=yes")})
        EXPECT_NE(BusProbe(address).state(), BusProbe::State::silent) << address;
    EXPECT_EQ(BusProbe(nobody).state(), BusProbe::State::absent);

    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (folder / "nobody").string().copy(address.sun_path, sizeof address.sun_path);
    const int bus = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(bus, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(bus, 1), 0);
    BusProbe probe(nobody);
    EXPECT_EQ(probe.state(), BusProbe::State::silent);
    ::close(bus); // hangs up before it has answered
    EXPECT_EQ(probe.state(), BusProbe::State::absent);
}
