#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/FileLock.h"
#include "DravelKit/Foundation/FilePaths.h"
#include "DravelKit/Foundation/TemporaryFile.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

using namespace tacla::testing;
using dravel::FileError;
namespace SafeFile = dravel::SafeFile;
using Path = std::filesystem::path;

namespace {

std::optional<std::string> marked(std::string_view text) { return std::string(text) + "- [ ] Lait\n"; }

// What went wrong, as a user would read it; "" when nothing did.
template <class Work>
std::string failure(Work work) {
    try {
        work();
        return "";
    } catch (const FileError& error) {
        return error.description();
    }
}

std::string failureOfEdit(const Path& file, const Path& locks) {
    return failure([&] { SafeFile::edit(file, marked, locks); });
}

std::size_t entries(const Path& folder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

}

TEST(SafeFile, changesOnlyWhatTheEditChanges) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md", locks = folder / "locks";
    const std::string strange("\xEF\xBB\xBF- [ ] Pain\r\n\0\xE2\x80\xA8"
                              "e\xCC\x81\n",
                              25);
    writeBytes(file, strange);
    EXPECT_EQ(SafeFile::readText(file), strange);
    const auto change = SafeFile::edit(file, marked, locks);
    EXPECT_EQ(change->before, strange);
    EXPECT_EQ(readBytes(file), strange + "- [ ] Lait\n");

    const auto untouched = SafeFile::modified(file);
    EXPECT_FALSE(SafeFile::edit(
        file, [](auto) { return std::nullopt; }, locks));
    EXPECT_FALSE(SafeFile::edit(
        file, [](auto text) { return std::string(text); }, locks));
    EXPECT_EQ(SafeFile::modified(file), untouched);
}

TEST(SafeFile, keepsLinksAndReplacesWhatTheyLeadTo) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md", link = folder / "link", chain = folder / "chain", locks = folder / "locks";
    writeBytes(file, "- [ ] Pain\n");
    std::filesystem::create_symlink("taches.md", link);
    std::filesystem::create_symlink(link, chain);
    EXPECT_TRUE(SafeFile::edit(chain, marked, locks));
    EXPECT_EQ(readBytes(file), "- [ ] Pain\n- [ ] Lait\n");
    EXPECT_EQ(std::filesystem::read_symlink(chain), link);
    EXPECT_EQ(std::filesystem::read_symlink(link), "taches.md");

    const auto dangling = folder / "dangling";
    std::filesystem::create_symlink("far/away.md", dangling);
    EXPECT_EQ(failureOfEdit(dangling, locks), "Aucun fichier ou dossier de ce nom");
    EXPECT_TRUE(SafeFile::create(dangling, "- [ ] Neuf\n"));
    EXPECT_TRUE(std::filesystem::is_symlink(dangling));
    EXPECT_EQ(readBytes(folder / "far/away.md"), "- [ ] Neuf\n");
    EXPECT_FALSE(SafeFile::create(dangling, "autre"));

    std::filesystem::create_symlink("loop", folder / "loop");
    EXPECT_EQ(failureOfEdit(folder / "loop", locks), "Trop de liens symboliques");
}

TEST(SafeFile, saysWhatIsWrongWithAFile) {
    const TemporaryFolder folder;
    const auto locks = folder / "locks";
    std::filesystem::create_directory(folder / "folder");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    writeBytes(folder / "latin1", "- [ ] Caf\xE9\n");
    writeBytes(folder / "huge", "");
    std::filesystem::resize_file(folder / "huge", 1ULL << 40);
    const std::pair<const char*, const char*> expected[] = {
        {"missing", "Aucun fichier ou dossier de ce nom"},
        {"folder", "C'est un dossier"},
        {"pipe", "Ce n'est pas un fichier ordinaire"},
        {"latin1", "Le texte n'est pas en UTF-8"},
        {"huge", "Le fichier est trop volumineux"},
        {"latin1/below", "Un élément du chemin n'est pas un dossier"},
    };
    for (const auto& [name, description] : expected) {
        EXPECT_EQ(failureOfEdit(folder / name, locks), description) << name;
        EXPECT_EQ(failure([&, file = folder / name] { SafeFile::readText(file); }), description) << name;
    }
    EXPECT_EQ(readBytes(folder / "latin1"), "- [ ] Caf\xE9\n");
}

TEST(SafeFile, refusesWhatTheUserMayNotWrite) {
    const TemporaryFolder folder;
    const auto file = folder / "list/taches.md", locks = folder / "locks";
    std::filesystem::create_directory(folder / "list");
    writeBytes(file, "- [ ] Pain\n");
    for (const auto& path : {folder.path(), folder / "list", file})
        if (::geteuid() == 0) {
            EXPECT_EQ(::chown(path.c_str(), 65534, 65534), 0);
        }
    const auto refusal = [&] {
        return inChild([&] {
            becomeNobody();
            return failureOfEdit(file, locks) == "Permission non accordée" ? 0 : 1;
        });
    };
    ::chmod(file.c_str(), 0400);
    EXPECT_EQ(refusal(), 0);
    ::chmod(file.c_str(), 0600);
    ::chmod((folder / "list").c_str(), 0500);
    EXPECT_EQ(refusal(), 0);
    ::chmod((folder / "list").c_str(), 0700);
    EXPECT_EQ(readBytes(file), "- [ ] Pain\n");
    EXPECT_EQ(entries(folder / "list"), 1U);
}

TEST(SafeFile, appliesTheEditAgainWhenAnEditorSavedInBetween) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md";
    writeBytes(file, "0");
    int calls = 0;
    const auto whileSomebodySaves = [&](int times) {
        return [&, times](std::string_view text) {
            if (++calls <= times) writeBytes(file, std::to_string(calls));
            return marked(text);
        };
    };
    EXPECT_EQ(SafeFile::edit(file, whileSomebodySaves(3), folder / "locks")->after, "3- [ ] Lait\n");
    calls = 0;
    EXPECT_EQ(failure([&] { SafeFile::edit(file, whileSomebodySaves(4), folder / "locks"); }),
              "Un autre programme ne cesse de modifier le fichier");
    EXPECT_EQ(readBytes(file), "4");
}

TEST(SafeFile, removesItsOwnLeftoversAndNothingElse) {
    const TemporaryFolder folder;
    const auto list = folder / "list", file = list / "taches.md";
    std::filesystem::create_directory(list);
    for (const auto* name : {"taches.md", ".taches.md.tacla-abc123", ".taches.md.tacla-abc12",
                             ".taches.md.tacla-copies", ".taches.md.tacla-Abc123", ".other.md.tacla-abc123"})
        writeBytes(list / name, "x");
    const dravel::TemporaryFile live(file, 0600); // of another process that is still writing
    EXPECT_TRUE(SafeFile::edit(file, marked, folder / "locks"));
    EXPECT_FALSE(std::filesystem::exists(list / ".taches.md.tacla-abc123"));
    EXPECT_FALSE(std::filesystem::exists(list / ".taches.md.tacla-copies"));
    EXPECT_TRUE(std::filesystem::exists(live.path()));
    EXPECT_EQ(entries(list), 5U);
}

TEST(SafeFile, takesTheLongestName) {
    const TemporaryFolder folder;
    const auto file = folder / std::string(255, 'n');
    writeBytes(file, "");
    EXPECT_TRUE(SafeFile::edit(file, marked, folder / "locks"));
    std::filesystem::create_hard_link(file, folder / "other");
    EXPECT_TRUE(SafeFile::edit(file, marked, folder / "locks"));
    EXPECT_EQ(readBytes(folder / "other"), "- [ ] Lait\n- [ ] Lait\n");
}

TEST(SafeFile, makesFilesForTheUserAndForItself) {
    const TemporaryFolder folder;
    const auto mode = [](const Path& path) {
        return static_cast<unsigned>(std::filesystem::status(path).permissions());
    };
    const auto umask = ::umask(0027);
    EXPECT_TRUE(SafeFile::create(folder / "Documents/Tacla/taches.md", "# Tâches\n"));
    EXPECT_FALSE(SafeFile::create(folder / "Documents/Tacla/taches.md", "autre"));
    EXPECT_TRUE(SafeFile::editOwn(folder / "config/own.json", marked, folder / "locks"));
    ::umask(umask);
    EXPECT_EQ(readBytes(folder / "Documents/Tacla/taches.md"), "# Tâches\n");
    EXPECT_EQ(mode(folder / "Documents/Tacla/taches.md"), 0640U);
    EXPECT_EQ(mode(folder / "Documents"), 0700U);
    EXPECT_EQ(mode(folder / "config/own.json"), 0600U);
}

TEST(SafeFile, waitsForALockNoLongerThanTwoSeconds) {
    const TemporaryFolder folder;
    const auto file = folder / "taches.md";
    writeBytes(file, "- [ ] Pain\n");
    const dravel::FileLock held(dravel::followedLinks(file), folder / "locks");
    EXPECT_EQ(failureOfEdit(file, folder / "locks"), "Tacla est déjà en train d'écrire ce fichier");
    EXPECT_EQ(failureOfEdit(file, folder / "otherLocks"), "");
}
