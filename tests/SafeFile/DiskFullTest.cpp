#include "DravelKit/Foundation/SafeFile.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <sched.h>

#include <cerrno>

using namespace tacla::testing;
namespace SafeFile = dravel::SafeFile;
using Path = std::filesystem::path;

namespace {

constexpr int notPermitted = 77;

bool mountSmallDisk(const Path& at, const std::string& size) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", at.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
}

// 0 when the edit was saved, the system's error when it was refused and the file is as it was, else -1.
int outcomeOfGrowing(const Path& file, const Path& locks, std::size_t by) {
    const auto before = readBytes(file);
    try {
        SafeFile::edit(
            file, [&](auto text) { return std::string(text) + std::string(by, 'b'); }, locks);
        return readBytes(file) == before + std::string(by, 'b') ? 0 : -1;
    } catch (const dravel::FileError& error) {
        return readBytes(file) == before ? error.code : -1;
    }
}

}

TEST(SafeFile, keepsTheOldFileWhenTheDiskFillsUp) {
    const TemporaryFolder folder, locks;
    for (const bool hardLinked : {false, true}) {
        const int status = inChild([&] {
            const auto disk = folder.path();
            if (!mountSmallDisk(disk, "256k")) return notPermitted;
            writeBytes(disk / "taches.md", std::string(30'000, 'a'));
            if (hardLinked) std::filesystem::create_hard_link(disk / "taches.md", disk / "other.md");
            // Grows until nothing more fits, then frees nothing: every later save is refused as well.
            int saved = 0, refused = 0;
            for (int round = 0; round < 60; ++round) {
                const int outcome = outcomeOfGrowing(disk / "taches.md", locks.path(), 4'000);
                if (outcome != 0 && outcome != ENOSPC) return 1;
                ++(outcome == 0 ? saved : refused);
            }
            const auto names = std::distance(std::filesystem::directory_iterator(disk), {});
            return saved > 5 && refused > 5 && names == (hardLinked ? 2 : 1) ? 0 : 2;
        });
        if (status == notPermitted) GTEST_SKIP() << "mounting a small disk is not permitted here";
        EXPECT_EQ(status, 0) << (hardLinked ? "in place" : "by exchange");
    }
}

TEST(SafeFile, keepsTheOldFileAtTheFileSizeLimit) {
    const TemporaryFolder folder;
    writeBytes(folder / "taches.md", std::string(30'000, 'a'));
    EXPECT_EQ(inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{32'000, 32'000};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return outcomeOfGrowing(folder / "taches.md", folder / "locks", 4'000);
              }),
              EFBIG);
}
