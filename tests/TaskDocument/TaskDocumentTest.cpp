#include "Tacla/TaskDocument/TaskDocument.h"
#include "DravelKit/Foundation/FileCopies.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <set>

namespace tacla {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using dravel::Instant;
using namespace testing;

namespace {

constexpr Instant start{std::chrono::sys_days{std::chrono::year{2025} / 3 / 4} + 7h};

std::string withoutMark(std::string name) { return name.erase(name.find(' ', 11) + 1, 9); }

struct List {
    TemporaryFolder folder;
    fs::path file = folder / "taches.md";
    dravel::UserFolders folders;

    List() {
        folders.state = folder / "state";
        folders.locks = folder / "locks";
    }

    bool write(const std::string& text, Instant now) const {
        return TaskDocument(file, folders).edit([&](std::string_view) { return text; }, now).has_value();
    }
    std::map<std::string, std::string> copies() const {
        std::map<std::string, std::string> texts;
        if (!fs::exists(copiesFolder(folders))) return texts;
        for (const auto& entry : fs::directory_iterator(copiesFolder(folders)))
            texts[withoutMark(entry.path().filename())] = readBytes(entry.path());
        return texts;
    }
};

}

// Against a model that knows each task by its place: its key of now, and the one that the calendar knows it by.
TEST(RenamedKeys, LeadFromWhatTheCalendarKnowsToTheKeysOfNowOverRandomRenamesDuringSyncs) {
    std::mt19937 random(20250304);
    const auto pick = [&](std::size_t n) { return random() % n; };
    for (int history = 0; history < 300; ++history) {
        RenamedKeys keys;
        std::vector<std::string> now{"a", "b", "c", "d"}, known = now, sent;
        RenamedKeys::Map given;
        for (int step = 0; step < 30; ++step) {
            const auto task = pick(now.size());
            const auto to = std::string(1, static_cast<char>('a' + pick(7)));
            const auto other = std::ranges::find(now, to);
            RenamedKeys::Map renamed{{now[task], to}};
            if (other != now.end()) { // takes the title of another one, which is numbered anew
                const auto place = static_cast<std::size_t>(other - now.begin());
                if (place == task) continue;
                renamed[to] = now[place] = now[task];
            }
            now[task] = to;
            keys.remember(renamed);
            if (sent.empty() && pick(3) == 0) {
                given = keys.sinceSync();
                sent = now;
            } else if (!sent.empty() && pick(2) == 0) {
                keys.synced(given);
                known = std::exchange(sent, {});
            }
            for (std::size_t i = 0; i < now.size(); ++i) {
                const auto found = keys.sinceSync().find(known[i]);
                ASSERT_EQ(found == keys.sinceSync().end() ? known[i] : found->second, now[i]);
            }
        }
    }
}

TEST(TaskDocument, KeepsTheTextThatItReplacesForTheUserAlone) {
    const List list;
    writeBytes(list.file, "one");
    EXPECT_FALSE(list.write("one", start));
    EXPECT_TRUE(list.write("two", start));
    EXPECT_TRUE(list.write("three", start + 999ms));
    fs::create_directory(copiesFolder(list.folders) / "a folder of the user's");
    EXPECT_TRUE(list.write("four", start + 1s));
    fs::remove(copiesFolder(list.folders) / "a folder of the user's");
    EXPECT_EQ(list.copies(), (std::map<std::string, std::string>{{"2025-03-04 08h00m00s taches.md", "one"},
                                                                 {"2025-03-04 08h00m00s-2 taches.md", "two"},
                                                                 {"2025-03-04 08h00m01s taches.md", "three"}}));
    const auto permissions = [](const fs::path& path) { return static_cast<int>(fs::status(path).permissions()); };
    EXPECT_EQ(permissions(copiesFolder(list.folders)), 0700);
    for (const auto& copy : fs::directory_iterator(copiesFolder(list.folders))) EXPECT_EQ(permissions(copy), 0600);
}

TEST(TaskDocument, LeavesNoCopyOfWhatWasNotReplaced) {
    const List list;
    writeBytes(list.file, "one");
    EXPECT_THROW(list.write("two\xFF", start), dravel::FileError);
    EXPECT_EQ(list.copies().size(), 0U);
    int calls = 0;
    const auto edit = [&](std::string_view text) -> std::optional<std::string> {
        if (++calls == 1) writeBytes(list.file, "by an editor");
        return std::string(text) + " and us";
    };
    TaskDocument(list.file, list.folders).edit(edit, start);
    EXPECT_EQ(readBytes(list.file), "by an editor and us");
    EXPECT_EQ(list.copies(), (std::map<std::string, std::string>{{"2025-03-04 08h00m00s taches.md", "by an editor"}}));
}

TEST(TaskDocument, SeesASaveThatKeepsTheModificationTime) {
    const List list;
    writeBytes(list.file, "- [ ] Pain\n");
    TaskDocument document(list.file, list.folders);
    document.read();
    EXPECT_FALSE(document.isStale(document.onDisk()));
    const auto modified = fs::last_write_time(list.file);
    writeBytes(list.folder / "new", "- [ ] Lait\n");
    fs::last_write_time(list.folder / "new", modified);
    fs::rename(list.folder / "new", list.file); // as a program that synchronises folders does
    EXPECT_TRUE(document.isStale(document.onDisk()));
}

TEST(FileCopies, AreThinnedByAgeAndByListWithinTheirTotal) {
    using dravel::FileCopies::Copy;
    const auto left = [](std::vector<Copy> copies, std::optional<Copy> joining = {}) {
        std::set<std::string> names;
        for (const auto& copy : copies) names.insert(copy.path);
        for (const auto& copy : dravel::FileCopies::surplus(copies, start, joining)) names.erase(copy.path);
        return names;
    };
    using Names = std::set<std::string>;
    const auto at = [](const char* name, auto age, std::uintmax_t bytes = 1, const char* of = "A") {
        return Copy{name, of, bytes, start - age};
    };
    std::vector<Copy> busy; // a copy a minute for forty days
    for (int age = 0; age < 40 * 24 * 60; ++age)
        busy.push_back({"copy" + std::to_string(age), "A", 1, start - std::chrono::minutes(age)});
    EXPECT_EQ(left(busy).size(), 8 * 60 + 1 + 7 * 24 - 8 + 24U);
    EXPECT_EQ(left({at("a", 30h - 1min), at("b", 30h), at("c", 30h + 1min, 1, "B"), at("d", 240h), at("e", 241h),
                    at("f", 720h), at("g", 720h + 1ms), at("future", -9h)}),
              (Names{"a", "c", "d", "f", "future"}));
    constexpr std::uintmax_t third = 70'000'000;
    EXPECT_EQ(left({at("a", 2h, third), at("b", 3h, third), at("c", 700h, third, "B")}), (Names{"a", "c"}));
    EXPECT_EQ(left({at("a", 2h, third), at("b", 3h, third), at("c", 700h, third, "B")}, at("new", 0h, third)),
              (Names{"c"}));
}

TEST(FileCopies, TellListsApartTakeLongNamesAndLeaveOthersAlone) {
    const List list;
    const auto folder = list.folder / "copies";
    const fs::path other = "/b/taches.md";
    fs::create_directories(folder);
    for (const auto* name : {"notes.md", "2025-01-04 notes.md", "2025-01-04 08h00m00s"}) {
        writeBytes(folder / name, "x");
        fs::last_write_time(folder / name, fs::file_time_type::min() + 1h);
    }
    EXPECT_TRUE(dravel::FileCopies::keep(folder, "/a/taches.md", "one", start));
    EXPECT_TRUE(dravel::FileCopies::keep(folder, other, "two", start));
    EXPECT_TRUE(dravel::FileCopies::keep(folder, "/a/" + std::string(250, 'x') + "é.md", "long", start));
    EXPECT_FALSE(dravel::FileCopies::keep(folder, other, std::string(200'000'001, 'x'), start));
    dravel::FileCopies::prune(folder, start + 24h);
    const auto copies = dravel::FileCopies::of(folder, other);
    ASSERT_EQ(copies.size(), 1U);
    EXPECT_EQ(readBytes(copies[0].path), "two");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 6);
}

TEST(TaskDocument, CountsDatesBehindCarriageReturnsAndTakesTheseAway) {
    const List list;
    const std::string crlf = "# Liste\r\n- [ ] A · 2025-03-04\r\n- [x] B · 2025-03-04 · ✅ 2025-03-05\r\n"
                             "- [ ] C\r\n- [ ] D\rE\n- [ ] F · 2025-03-04\r";
    writeBytes(list.file, crlf);
    TaskDocument document(list.file, list.folders);
    document.read();
    EXPECT_EQ(document.unreadDates(), 3U);
    document.edit(UserEdit::plainLineEnds().apply, start);
    document.read();
    EXPECT_EQ(document.unreadDates(), 0U);
    EXPECT_EQ(readBytes(list.file), "# Liste\n- [ ] A · 2025-03-04\n- [x] B · 2025-03-04 · ✅ 2025-03-05\n"
                                    "- [ ] C\n- [ ] D\rE\n- [ ] F · 2025-03-04");
    document.undo(start);
    EXPECT_EQ(readBytes(list.file), crlf);
}

TEST(TaskFileLocation, TakesTheFirstThatIsSet) {
    const TemporaryFolder home;
    dravel::UserFolders folders;
    folders.home = home.path();
    folders.documents = "/documents";
    Preferences preferences(home / "preferences.json", home / "locks");
    const auto resolved = [&](const std::string& variable) { return resolvedFile(variable, preferences, folders); };

    EXPECT_EQ(resolved(""), "/documents/Tacla/taches.md");
    fs::create_directory(home / "quillo");
    writeBytes(home / "quillo/taches.md", "");
    EXPECT_EQ(resolved(""), home / "quillo/taches.md");
    writeBytes(home / "preferences.json", "{");
    EXPECT_EQ(resolved(""), home / "quillo/taches.md");
    preferences.setTaskFilePath("");
    EXPECT_EQ(resolved(""), home / "quillo/taches.md");
    preferences.setTaskFilePath("/chosen.md");
    EXPECT_EQ(resolved(""), "/chosen.md");
    EXPECT_EQ(resolved("/variable.md"), "/variable.md");
    EXPECT_EQ(resolved("relative.md"), fs::current_path() / "relative.md");
    EXPECT_EQ(resolved("~/list.md"), fs::current_path() / "~/list.md");
}

TEST(UserFolders, FollowTheBaseDirectoryRules) {
    const TemporaryFolder home;
    const fs::path config = std::getenv("XDG_CONFIG_HOME"), runtime = std::getenv("XDG_RUNTIME_DIR");
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

}
