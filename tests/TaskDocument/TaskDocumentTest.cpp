#include "Tacla/TaskDocument/TaskDocument.h"
#include "DravelKit/Foundation/FileCopies.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
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

struct List {
    TemporaryFolder folder;
    fs::path file = folder / "taches.md";
    dravel::UserFolders folders;

    List() {
        folders.state = folder / "state";
        folders.locks = folder / "locks";
    }

    bool write(const std::string& text, Instant now) const {
        return TaskDocument(file, folders).edit([&](std::string_view) { return text; }, now) != nullptr;
    }
    std::map<std::string, std::string> copies() const {
        std::map<std::string, std::string> texts;
        if (!fs::exists(copiesFolder(folders))) return texts;
        for (const auto& entry : fs::directory_iterator(copiesFolder(folders)))
            texts[entry.path().filename()] = readBytes(entry.path());
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
    EXPECT_EQ(permissions(copiesFolder(list.folders) / "2025-03-04 08h00m01s taches.md"), 0600);
}

TEST(TaskDocument, SavesWhetherOrNotACopyCanBeKept) {
    const List list;
    writeBytes(list.file, "one");
    const auto tooLong = std::string((20 << 20) + 1, 'x');
    EXPECT_FALSE(dravel::FileCopies::keep(list.folder / "copies", list.file, tooLong, start));
    writeBytes(list.folders.state, "in the way");
    EXPECT_TRUE(list.write("two", start));
    EXPECT_EQ(readBytes(list.file), "two");
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

TEST(FileCopies, AreAtMostFiftyTwentyMebibytesAndThirtyDays) {
    using dravel::FileCopies::Copy;
    const auto left = [](std::vector<Copy> copies, std::optional<std::uintmax_t> joining) {
        std::set<std::string> names;
        for (const auto& copy : copies) names.insert(copy.path);
        for (const auto& copy : dravel::FileCopies::surplus(copies, start, joining)) names.erase(copy.path);
        return names;
    };
    std::vector<Copy> many;
    for (int age = 0; age < 60; ++age) many.push_back({"copy", 1, start - std::chrono::minutes(age)});
    EXPECT_EQ(dravel::FileCopies::surplus(many, start).size(), 10U);
    EXPECT_EQ(dravel::FileCopies::surplus(many, start, 1).size(), 11U);
    const std::uintmax_t third = 7 << 20;
    const std::vector<Copy> large{{"a", third, start - 3h}, {"b", third, start - 2h}, {"c", 1, start - 4h}};
    EXPECT_EQ(left(large, {}), (std::set<std::string>{"a", "b", "c"}));
    EXPECT_EQ(left(large, third), (std::set<std::string>{"b"}));
    const std::vector<Copy> old{{"a", 1, start - 720h}, {"b", 1, start - 720h - 1ms}, {"future", 1, start + 9h}};
    EXPECT_EQ(left(old, {}), (std::set<std::string>{"a", "future"}));
}

}
