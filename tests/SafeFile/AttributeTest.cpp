#include "DravelKit/Foundation/SafeFile.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

using namespace tacla::testing;
namespace SafeFile = dravel::SafeFile;
using Path = std::filesystem::path;

namespace {

std::optional<std::string> marked(std::string_view text) { return std::string(text) + "- [ ] Lait\n"; }

std::string attribute(const Path& file, const char* name) {
    std::string value(256, '\0');
    const auto length = ::getxattr(file.c_str(), name, value.data(), value.size());
    value.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return value;
}

bool setAttribute(const Path& file, const char* name, const std::string& value) {
    return ::setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

struct stat statusOf(const Path& file) {
    struct stat result {};
    ::stat(file.c_str(), &result);
    return result;
}

// An access list that lets user 1234 read, as the kernel stores it: version 2, then (tag, rights, identifier).
const std::string readableBy1234("\x02\0\0\0"
                                 "\x01\0\x06\0\xFF\xFF\xFF\xFF"
                                 "\x02\0\x04\0\xD2\x04\0\0"
                                 "\x04\0\x04\0\xFF\xFF\xFF\xFF"
                                 "\x10\0\x04\0\xFF\xFF\xFF\xFF"
                                 "\x20\0\0\0\xFF\xFF\xFF\xFF",
                                 44);

}

TEST(SafeFile, keepsModeOwnerAccessListAndAttributes) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md";
    writeBytes(file, "- [ ] Pain\n");
    ::chmod(file.c_str(), 0640);
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown(file.c_str(), 12, 34), 0);
    }
    if (!setAttribute(file, "user.note", "à garder") || !setAttribute(file, "system.posix_acl_access", readableBy1234))
        GTEST_SKIP() << "this file system keeps no attributes";
    const auto old = statusOf(file);
    EXPECT_TRUE(SafeFile::edit(file, marked, folder / "locks"));
    const auto now = statusOf(file);
    EXPECT_NE(now.st_ino, old.st_ino);
    EXPECT_EQ(std::tuple(now.st_mode, now.st_uid, now.st_gid), std::tuple(old.st_mode, old.st_uid, old.st_gid));
    EXPECT_EQ(attribute(file, "user.note"), "à garder");
    EXPECT_EQ(attribute(file, "system.posix_acl_access"), readableBy1234);
}

TEST(SafeFile, takesNoAccessListFromTheFolder) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md";
    writeBytes(file, "- [ ] Pain\n");
    ::chmod(file.c_str(), 0600);
    if (!setAttribute(folder.path(), "system.posix_acl_default", readableBy1234))
        GTEST_SKIP() << "this file system keeps no access lists";
    EXPECT_TRUE(SafeFile::edit(file, marked, folder / "locks"));
    EXPECT_EQ(attribute(file, "system.posix_acl_access"), "");
    EXPECT_EQ(statusOf(file).st_mode & 07777, 0600U);
}

TEST(SafeFile, keepsHardLinksAndOwnersThatARenameWouldLose) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md", other = folder / "other.md";
    writeBytes(file, "- [ ] Pain\n");
    std::filesystem::create_hard_link(file, other);
    EXPECT_TRUE(SafeFile::edit(file, marked, folder / "locks"));
    EXPECT_EQ(readBytes(other), "- [ ] Pain\n- [ ] Lait\n");
    EXPECT_EQ(statusOf(file).st_nlink, 2U);

    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a file of somebody else's";
    const auto shared = folder / "shared/taches.md";
    std::filesystem::create_directory(folder / "shared");
    writeBytes(shared, "- [ ] Pain\n");
    for (const auto& path : {folder.path(), folder / "shared", shared}) ::chmod(path.c_str(), 0777);
    const auto old = statusOf(shared);
    EXPECT_EQ(inChild([&] {
                  becomeNobody();
                  return SafeFile::edit(shared, marked, folder / "shared/locks") ? 0 : 1;
              }),
              0);
    const auto now = statusOf(shared);
    EXPECT_EQ(std::tuple(now.st_ino, now.st_uid, now.st_gid), std::tuple(old.st_ino, old.st_uid, old.st_gid));
    EXPECT_EQ(readBytes(shared), "- [ ] Pain\n- [ ] Lait\n");
}
