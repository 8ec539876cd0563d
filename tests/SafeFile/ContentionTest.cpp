#include "tests/SafeFile/SafeFileWorld.h"

#include <vector>

using namespace tacla::testing;

TEST(SafeFile, losesNoEditOfTwentyProcessesAtOnce) {
    const SafeFileWorld world("");
    std::vector<pid_t> children;
    for (int process = 0; process < 20; ++process)
        children.push_back(start([&] {
            for (int edit = 0; edit < 5; ++edit) SafeFile::edit(world.file, marked, world.locks);
            return 0;
        }));
    for (const auto child : children) EXPECT_EQ(finished(child), 0);
    EXPECT_EQ(world.text().size(), 100 * mark.size());
}
