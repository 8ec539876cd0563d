#include "tests/SafeFile/SafeFileWorld.h"

#include <algorithm>
#include <random>

using namespace tacla::testing;

namespace {

// A text that shows by itself whether it is whole.
std::string numbered(int number) {
    return std::to_string(number) + "\n" + std::string(20'000 + static_cast<std::size_t>(number), 'a');
}

int numberOf(std::string_view text) { return std::stoi(std::string(text.substr(0, text.find('\n')))); }

}

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

TEST(SafeFile, isWholeAfterKillsAtRandomMoments) {
    const SafeFileWorld world(numbered(0));
    std::mt19937 random(20250304);
    for (int round = longTests() ? 1000 : 50; round > 0; --round) {
        const auto child = start([&]() -> int {
            while (true) world.failure([](auto text) { return numbered(numberOf(text) + 1); });
        });
        ::usleep(static_cast<useconds_t>(random() % 12'000));
        ::kill(child, SIGKILL);
        EXPECT_EQ(finished(child), killedStatus);
        ASSERT_EQ(world.text(), numbered(numberOf(world.text())));
    }
    EXPECT_EQ(world.failure(), "");
    EXPECT_EQ(world.entries(), 1);
}
