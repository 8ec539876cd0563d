#include "tests/SafeFile/SafeFileWorld.h"

#include <sys/stat.h>
#include <sys/xattr.h>

using namespace tacla::testing;

namespace {

constexpr const char *accessList = "system.posix_acl_access", *ofNewFiles = "system.posix_acl_default";

// Lets user 1234 read, as the kernel stores it: version 2, then (tag, rights, identifier) five times.
constexpr std::string_view readableBy1234("\2\0\0\0\1\0\6\0\xFF\xFF\xFF\xFF\2\0\4\0\xD2\4\0\0\4\0\4\0\xFF\xFF\xFF\xFF"
                                          "\x10\0\4\0\xFF\xFF\xFF\xFF\x20\0\0\0\xFF\xFF\xFF\xFF",
                                          44);

std::string attribute(const Path& file, const char* name) {
    std::string value(256, '\0');
    value.resize(static_cast<std::size_t>(std::max(::getxattr(file.c_str(), name, value.data(), 256), ssize_t{0})));
    return value;
}

bool setAttribute(const Path& file, const char* name, std::string_view value) {
    return ::setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

auto ownership(const Path& file) {
    struct stat status = {};
    ::stat(file.c_str(), &status);
    return std::tuple(status.st_mode, status.st_uid, status.st_gid, status.st_nlink);
}

}

TEST(SafeFile, KeepsModeOwnerAccessListAndAttributes) {
    const SafeFileWorld world;
    ::chmod(world.file.c_str(), 0640);
    giveToNobody(world.file);
    if (!setAttribute(world.file, "user.note", "à garder") || !setAttribute(world.file, accessList, readableBy1234))
        GTEST_SKIP() << "this file system keeps no attributes";
    const auto old = ownership(world.file);
    ASSERT_TRUE(setAttribute(world.list, ofNewFiles, readableBy1234)); // a new file has it from the start
    EXPECT_EQ(world.failure(), "");
    EXPECT_EQ(ownership(world.file), old);
    EXPECT_EQ(attribute(world.file, "user.note"), "à garder");
    EXPECT_EQ(attribute(world.file, accessList), readableBy1234);

    const SafeFileWorld without;
    const auto own = ownership(without.file);
    ASSERT_TRUE(setAttribute(without.list, ofNewFiles, readableBy1234)); // which the file did not get
    EXPECT_EQ(without.failure(), "");
    EXPECT_EQ(attribute(without.file, accessList), "");
    EXPECT_EQ(ownership(without.file), own);
}

TEST(SafeFile, WritesInPlaceWhereARenameWouldLoseALinkOrTheOwner) {
    const SafeFileWorld linked, shared;
    std::filesystem::create_hard_link(linked.file, linked.list / "other.md");
    EXPECT_EQ(linked.failure(), "");
    EXPECT_EQ(readBytes(linked.list / "other.md"), mark + "- [ ] Pain\n");

    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a file of somebody else's";
    shared.forEachPath([](const Path& path) { ::chmod(path.c_str(), 0777); });
    const auto old = ownership(shared.file);
    EXPECT_TRUE(shared.nobodyMeets(""));
    EXPECT_EQ(ownership(shared.file), old);
    EXPECT_EQ(shared.text(), mark + "- [ ] Pain\n");
}
