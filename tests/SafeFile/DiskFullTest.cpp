#include "tests/SafeFile/SafeFileWorld.h"

#include <sys/mount.h>
#include <sys/resource.h>

#include <sched.h>

using namespace tacla::testing;

namespace {

constexpr int notPermitted = 77;

bool mountSmallDisk(const Path& at) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", at.c_str(), "tmpfs", 0, "size=256k") == 0;
}

// Lets the text grow until nothing more fits, and on. 0 when some edits were saved whole, and then all were refused
// for that reason with the file as it was.
int growUntilRefused(const SafeFileWorld& world, const std::string& reason) {
    const std::string block(4'000, 'b');
    int saved = 0, refused = 0;
    for (int round = 0; round < 60; ++round) {
        const auto before = world.text();
        const auto failure = world.failure([&](auto text) { return std::string(text) + block; });
        if (!failure.empty() && failure != reason) return 1;
        if (world.text() != (failure.empty() ? before + block : before)) return 2;
        ++(failure.empty() ? saved : refused);
    }
    return saved > 0 && refused > 0 ? 0 : 3;
}

}

TEST(SafeFile, KeepsTheOldFileWhenTheDiskFillsUp) {
    for (const bool hardLinked : {false, true}) {
        const SafeFileWorld world;
        const int status = inChild([&] {
            if (!mountSmallDisk(world.list)) return notPermitted;
            writeBytes(world.file, mark);
            if (hardLinked) std::filesystem::create_hard_link(world.file, world.list / "other.md");
            const int failure = growUntilRefused(world, "Il n'y a plus de place sur le disque");
            return failure == 0 && world.entries() != (hardLinked ? 2 : 1) ? 4 : failure;
        });
        if (status == notPermitted) GTEST_SKIP() << "mounting a small disk is not permitted here";
        EXPECT_EQ(status, 0) << (hardLinked ? "in place" : "by exchange");
    }
}

TEST(SafeFile, KeepsTheOldFileAtTheFileSizeLimit) {
    const SafeFileWorld world;
    EXPECT_EQ(inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{32'000, 32'000};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return growUntilRefused(world, "Le fichier est trop volumineux");
              }),
              0);
}
