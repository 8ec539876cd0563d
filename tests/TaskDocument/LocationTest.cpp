#include "Tacla/TaskDocument/TaskDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

using namespace tacla;
using namespace tacla::testing;
using std::filesystem::path;

TEST(TaskFileLocation, TakesTheFirstThatIsSet) {
    const TemporaryFolder home;
    dravel::UserFolders folders;
    folders.home = home.path();
    folders.documents = "/documents";
    Preferences preferences(home / "preferences.json", home / "locks");
    const auto resolved = [&](const std::string& variable) { return resolvedFile(variable, preferences, folders); };

    EXPECT_EQ(resolved(""), "/documents/Tacla/taches.md");
    std::filesystem::create_directory(home / "quillo");
    writeBytes(home / "quillo/taches.md", "");
    EXPECT_EQ(resolved(""), home / "quillo/taches.md");
    writeBytes(home / "preferences.json", "{");
    EXPECT_EQ(resolved(""), home / "quillo/taches.md");
    preferences.setTaskFilePath("");
    EXPECT_EQ(resolved(""), home / "quillo/taches.md");
    preferences.setTaskFilePath("/chosen.md");
    EXPECT_EQ(resolved(""), "/chosen.md");
    EXPECT_EQ(resolved("/variable.md"), "/variable.md");
    EXPECT_EQ(resolved("relative.md"), std::filesystem::current_path() / "relative.md");
    EXPECT_EQ(resolved("~/list.md"), std::filesystem::current_path() / "~/list.md");
}

TEST(UserFolders, FollowTheBaseDirectoryRules) {
    const TemporaryFolder home;
    const path config = std::getenv("XDG_CONFIG_HOME"), runtime = std::getenv("XDG_RUNTIME_DIR");
    ::setenv("HOME", home.path().c_str(), 1);
    ::setenv("XDG_DATA_HOME", "relative/is/invalid", 1);
    const auto documentsFor = [&](const char* userDirectories) {
        writeBytes(config / "user-dirs.dirs", userDirectories);
        return dravel::UserFolders::fromEnvironment().documents;
    };
    EXPECT_EQ(documentsFor(""), home / "Documents");
    EXPECT_EQ(documentsFor("# XDG_DOCUMENTS_DIR=\"/no\"\nXDG_DOCUMENTS_DIR=\"$HOME/Mes papiers\"\n"),
              home / "Mes papiers");
    EXPECT_EQ(documentsFor(" XDG_DOCUMENTS_DIR=\"/srv/\\\"d\\\"\"\nXDG_MUSIC_DIR=\"/m\""), "/srv/\"d\"");
    EXPECT_EQ(documentsFor("XDG_DOCUMENTS_DIR=\"relative\"\n"), home / "Documents");
    EXPECT_EQ(documentsFor("XDG_DOCUMENTS_DIR=\"/cut\\"), "/cut\\");

    const auto folders = dravel::UserFolders::fromEnvironment();
    EXPECT_EQ(folders.config, config);
    EXPECT_EQ(folders.data, home / ".local/share");
    EXPECT_EQ(folders.locks, runtime / "Tacla");
    for (const auto* variable : {"HOME", "XDG_RUNTIME_DIR"}) ::unsetenv(variable); // as cron leaves them
    const auto bare = dravel::UserFolders::fromEnvironment();
    EXPECT_TRUE(bare.home.is_absolute() && bare.locks.is_absolute() && bare.locks.filename() == "Tacla");
}
