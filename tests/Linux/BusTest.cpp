#include "Tacla/Linux/Bus.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace tacla;

TEST(BusProbe, KnowsAddressesWhereNobodyListens) {
    const tacla::testing::TemporaryFolder folder;
    const auto nobody = "unix:path=" + (folder / "nobody").string();
    for (const auto& address : {std::string(), std::string("disabled:"), nobody, "unix:path=" + std::string(200, 'x'),
                                std::string("unix:abstract=tacla/nobody%2"), std::string("unix:guid,runtime=yes")})
        EXPECT_NE(BusProbe(address).state(), BusProbe::State::silent) << address;
    EXPECT_EQ(BusProbe(nobody).state(), BusProbe::State::absent);
}
