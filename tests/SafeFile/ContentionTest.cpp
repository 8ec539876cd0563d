#include "DravelKit/Foundation/SafeFile.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace tacla::testing;
namespace SafeFile = dravel::SafeFile;

namespace {

// A text that shows by itself whether it is whole: a number, and as many thousands of letters.
std::string numbered(int number) {
    return std::to_string(number) + "\n" + std::string(static_cast<std::size_t>(20'000 + number), 'a');
}

int numberOf(std::string_view text) { return std::stoi(std::string(text.substr(0, text.find('\n')))); }

}

TEST(SafeFile, losesNoEditOfTwentyProcessesAtOnce) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md";
    writeBytes(file, "");
    constexpr int processes = 20, edits = 5;
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process)
        children.push_back(start([&] {
            for (int edit = 0; edit < edits; ++edit)
                SafeFile::edit(
                    file, [&](auto text) { return std::string(text) + std::to_string(process) + "\n"; },
                    folder / "locks");
            return 0;
        }));
    for (const auto child : children) EXPECT_EQ(finished(child), 0);
    const auto text = readBytes(file);
    EXPECT_EQ(std::ranges::count(text, '\n'), processes * edits);
}

TEST(SafeFile, isWholeAfterKillsAtRandomMoments) {
    const TemporaryFolder folder;
    const auto file = folder / "list/taches.md", locks = folder / "locks";
    SafeFile::create(file, numbered(0));
    std::mt19937 random(20250304);
    for (int round = longTests() ? 1000 : 50; round > 0; --round) {
        const auto child = start([&]() -> int {
            while (true)
                SafeFile::edit(
                    file, [](auto text) { return numbered(numberOf(text) + 1); }, locks);
        });
        ::usleep(static_cast<useconds_t>(random() % 12'000));
        ::kill(child, SIGKILL);
        EXPECT_EQ(finished(child), killedStatus);
        const auto text = readBytes(file);
        ASSERT_EQ(text, numbered(numberOf(text)));
    }
    EXPECT_TRUE(SafeFile::edit(
        file, [](auto) { return "end"; }, locks));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder / "list"), {}), 1);
}
