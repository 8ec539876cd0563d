#include "tests/SafeFile/SafeFileWorld.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <vector>

using namespace tacla::testing;
using namespace std::string_literals;

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

TEST(SafeFile, ChangesOnlyWhatTheEditChanges) {
    const auto strange = "\xEF\xBB\xBF- [ ] Pain\r\n\0\u2028e\u0301\n"s;
    const SafeFileWorld world(strange);
    EXPECT_EQ(world.failure(), "");
    EXPECT_EQ(world.text(), mark + strange);

    const auto untouched = SafeFile::modified(world.file);
    EXPECT_EQ(world.failure([](auto) { return std::nullopt; }), "nothing to change");
    EXPECT_EQ(world.failure([](auto text) { return std::string(text); }), "nothing to change");
    EXPECT_EQ(world.failure([](auto) { return "Caf\xE9"; }), "Le texte n'est pas en UTF-8");
    EXPECT_EQ(SafeFile::modified(world.file), untouched);
}

TEST(SafeFile, ReadsByLinesWhatItReadsWhole) {
    const auto longLine = std::string(700'000, 'a') + "é";
    for (const auto& text : {""s, "\n"s, "a\nb"s, longLine, longLine + "\nb\n" + longLine + "\n"}) {
        const SafeFileWorld world(text);
        std::string read;
        SafeFile::readByLines(world.file, [&](auto lines) {
            EXPECT_TRUE(lines.ends_with('\n') || read.size() + lines.size() == text.size());
            read += lines;
        });
        EXPECT_EQ(read, text);
        EXPECT_EQ(SafeFile::readText(world.file), text);
    }
    const SafeFileWorld broken("- [ ] Pain\n" + longLine + "\nCaf\xE9\n");
    EXPECT_THROW(SafeFile::readByLines(broken.file, [](auto) {}), dravel::FileError);
}

TEST(SafeFile, KeepsLinksAndReplacesWhatTheyLeadTo) {
    const SafeFileWorld world;
    const auto link = world.list / "link", chain = world.list / "chain", dangling = world.list / "dangling";
    std::filesystem::create_symlink("taches.md", link);
    std::filesystem::create_symlink(link, chain);
    EXPECT_EQ(world.failureAt(chain), "");
    EXPECT_EQ(world.text(), mark + "- [ ] Pain\n");
    EXPECT_EQ(std::filesystem::read_symlink(chain), link);
    EXPECT_EQ(std::filesystem::read_symlink(link), "taches.md");

    std::filesystem::create_symlink("far/away.md", dangling);
    EXPECT_EQ(world.failureAt(dangling), "Aucun fichier ou dossier de ce nom");
    EXPECT_TRUE(SafeFile::create(dangling, "- [ ] Neuf\n"));
    EXPECT_FALSE(SafeFile::create(dangling, "autre"));
    EXPECT_TRUE(std::filesystem::is_symlink(dangling));
    EXPECT_EQ(readBytes(world.list / "far/away.md"), "- [ ] Neuf\n");
}

TEST(SafeFile, SaysWhatIsWrongWithAFile) {
    const SafeFileWorld world("");
    std::filesystem::create_directory(world.list / "folder");
    std::filesystem::create_symlink("loop", world.list / "loop");
    ASSERT_EQ(::mkfifo((world.list / "pipe").c_str(), 0600), 0);
    writeBytes(world.list / "latin1", "- [ ] Caf\xE9\n");
    std::filesystem::resize_file(world.file, 1ULL << 40);
    const std::pair<const char*, const char*> expected[] = {
        {"missing", "Aucun fichier ou dossier de ce nom"},
        {"folder", "C'est un dossier"},
        {"loop", "Trop de liens symboliques"},
        {"pipe", "Ce n'est pas un fichier ordinaire"},
        {"latin1", "Le texte n'est pas en UTF-8"},
        {"taches.md", "Le fichier est trop volumineux"},
        {"latin1/below", "Un élément du chemin n'est pas un dossier"},
    };
    for (const auto& [name, description] : expected) EXPECT_EQ(world.failureAt(world.list / name), description) << name;
    EXPECT_EQ(world.failureAt(""), "Aucun fichier ou dossier de ce nom");
    EXPECT_EQ(readBytes(world.list / "latin1"), "- [ ] Caf\xE9\n");
}

TEST(SafeFile, RefusesWhatTheUserMayNotWrite) {
    for (const auto& [fileMode, folderMode] : {std::pair{0400U, 0700U}, {0600U, 0500U}}) {
        const SafeFileWorld world;
        ::chmod(world.file.c_str(), fileMode);
        ::chmod(world.list.c_str(), folderMode);
        world.forEachPath(giveToNobody);
        EXPECT_TRUE(world.nobodyMeets("Permission non accordée"));
        EXPECT_EQ(world.text(), "- [ ] Pain\n");
        EXPECT_EQ(world.entries(), 1);
    }
}

TEST(SafeFile, AppliesTheEditAgainWhenAnEditorSavedInBetween) {
    for (const int times : {3, 4}) {
        const SafeFileWorld world("0");
        const auto edit = [&, calls = 0](std::string_view text) mutable {
            if (++calls <= times) writeBytes(world.file, std::to_string(calls));
            return marked(text);
        };
        EXPECT_EQ(world.failure(edit), times == 3 ? "" : "Un autre programme ne cesse de modifier le fichier");
        EXPECT_EQ(world.text(), times == 3 ? mark + "3" : "4");
    }
}

TEST(SafeFile, RemovesItsOwnLeftoversAndNothingElse) {
    const SafeFileWorld world;
    for (const auto* name : {".taches.md.tacla-abc123", ".taches.md.tacla-abc12", ".taches.md.tacla-live00",
                             ".taches.md.tacla-Abc123", ".other.md.tacla-abc123"})
        writeBytes(world.list / name, "x");
    const int live = ::open((world.list / ".taches.md.tacla-live00").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(live, LOCK_EX), 0); // as one has that another process is still writing
    EXPECT_EQ(world.failure(), "");
    ::close(live);
    EXPECT_FALSE(std::filesystem::exists(world.list / ".taches.md.tacla-abc123"));
    EXPECT_TRUE(std::filesystem::exists(world.list / ".taches.md.tacla-live00"));
    EXPECT_EQ(world.entries(), 5);
}

TEST(SafeFile, UndoesAWriteInPlaceThatAPowerCutLeftHalfDone) {
    const auto old = "- [ ] Pain\n"s, fresh = mark + old, stranger = "- [ ] Beurre\n"s;
    const std::pair<std::string, std::string> cases[] = {
        {fresh.substr(0, 15), old}, {"- [ ] Lain\n", old}, {old, old}, {fresh, fresh}, {stranger, stranger}, {"x", "x"},
        {fresh + "x", fresh + "x"}};
    for (const auto& [found, kept] : cases) {
        const SafeFileWorld world(found);
        writeBytes(world.list / ".taches.md.tacla-old-text-0000001234", old); // of any user
        writeBytes(world.list / ".taches.md.tacla-new-text-0000001234", fresh);
        EXPECT_EQ(world.failure(), "");
        EXPECT_EQ(world.text(), mark + kept);
        EXPECT_EQ(world.entries(), 1);
    }
}

TEST(SafeFile, TakesTheLongestName) {
    const SafeFileWorld world;
    const auto longest = world.list / std::string(255, 'n');
    writeBytes(longest, "");
    EXPECT_EQ(world.failureAt(longest), "");
    std::filesystem::create_hard_link(longest, world.list / "other");
    EXPECT_EQ(world.failureAt(longest), "");
    EXPECT_EQ(readBytes(world.list / "other"), mark + mark);
}

TEST(SafeFile, MakesFilesForTheUserAndForItself) {
    const SafeFileWorld world;
    const auto umask = ::umask(0027);
    EXPECT_TRUE(SafeFile::create(world.folder / "Documents/taches.md", mark));
    EXPECT_TRUE(SafeFile::editOwn(world.folder / "config/own.json", marked, world.locks));
    ::umask(umask);
    for (const auto& [path, mode] :
         {std::pair{"Documents/taches.md", 0640}, {"Documents", 0700}, {"config", 0700}, {"config/own.json", 0600}})
        EXPECT_EQ(std::filesystem::status(world.folder / path).permissions(), std::filesystem::perms(mode)) << path;
}

// By all its names, from all lock folders, and without one.
TEST(SafeFile, WaitsForALockNoLongerThanTwoSeconds) {
    for (const bool withFolder : {true, false}) {
        const SafeFileWorld world;
        std::filesystem::create_hard_link(world.file, world.list / "other.md");
        if (!withFolder) writeBytes(world.locks, "in the way");
        const auto meanwhile = [&](std::string_view) {
            EXPECT_EQ(world.failureAt(world.list / "other.md"), "Tacla est déjà en train d'écrire ce fichier");
            EXPECT_THROW(SafeFile::edit(world.file, marked, world.folder / "other locks"), dravel::FileError);
            return std::nullopt;
        };
        SafeFile::edit(world.file, meanwhile, world.locks);
        EXPECT_EQ(world.text(), "- [ ] Pain\n");
        EXPECT_EQ(world.failure(), "");
    }
}

TEST(SafeFile, LocksOutNoOwnerOfAFolderInWhichRootSaved) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act for somebody else";
    for (const bool asBefore : {false, true}) {
        const SafeFileWorld world;
        world.forEachPath(giveToNobody);
        EXPECT_EQ(world.failure(), "");
        for (const auto& lock : std::filesystem::directory_iterator(world.locks)) {
            if (!asBefore) continue;
            giveToNobody(world.locks);
            EXPECT_TRUE(::chown(lock.path().c_str(), 0, 0) == 0 && ::chmod(lock.path().c_str(), 0600) == 0);
        }
        EXPECT_TRUE(world.nobodyMeets(""));
    }
}

TEST(SafeFile, WaitsForWhoeverStillWritesIntoTheFile) {
    const SafeFileWorld world;
    {
        const std::ofstream writer(world.file, std::ios::app);
        EXPECT_EQ(world.failure(), "Un autre programme est en train d'écrire ce fichier");
    }
    EXPECT_EQ(world.text(), "- [ ] Pain\n");
    EXPECT_EQ(world.entries(), 1);
    EXPECT_EQ(world.failure(), "");
}

TEST(SafeFile, IsNotHeldUpByWhatAKilledUserLeftInASharedFolder) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make a file of somebody else's";
    const SafeFileWorld world;
    for (const auto* name : {".taches.md.tacla-old-text-0000000000", ".taches.md.tacla-new-text-0000000000"}) {
        writeBytes(world.list / name, "x");
        ::chmod((world.list / name).c_str(), 0600);
    }
    world.forEachPath([](const Path& path) { ::chmod(path.c_str(), 01777); });
    EXPECT_TRUE(world.nobodyMeets(""));
    EXPECT_EQ(world.text(), mark + "- [ ] Pain\n");
}

TEST(SafeFile, LeavesNothingInAFolderThatOnlyGrows) {
    const SafeFileWorld world;
    const auto flag = [&](const char* how) {
        return std::system(("chattr " + std::string(how) + " " + world.list.string() + " 2>/dev/null").c_str());
    };
    if (flag("+a") != 0) GTEST_SKIP() << "no such folders here";
    EXPECT_EQ(world.failure(), "Opération non permise");
    EXPECT_EQ(world.entries(), 1);
    EXPECT_EQ(flag("-a"), 0);
}

TEST(SafeFile, LosesNoEditOfTwentyProcessesAtOnce) {
    const SafeFileWorld world("");
    std::vector<pid_t> children;
    for (int process = 0; process < 20; ++process)
        children.push_back(start([&] {
            for (int saved = 0; saved < 5;) saved += world.failure().empty(); // a busy machine makes some wait too long
            return 0;
        }));
    for (const auto child : children) EXPECT_EQ(finished(child), 0);
    EXPECT_EQ(world.text().size(), 100 * mark.size());
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
