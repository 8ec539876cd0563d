#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskViews.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>

using namespace tacla;

namespace {

constexpr Day today{2025, 3, 5};

// Texts with everything that a user, an editor or a bad day can put into a file.
class RandomTexts {
  public:
    std::string text() {
        std::string result = chance(8) ? "\xEF\xBB\xBF" : "";
        for (std::size_t lines = pick(chance(10) ? 60 : 12); lines > 0; --lines)
            result += line() + (chance(30) ? "\r\n" : "\n");
        return chance(2) ? result : result + line();
    }

    std::size_t pick(std::size_t below) {
        return below == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, below - 1)(engine_);
    }
    std::string title() {
        return std::string(any(
            {"Pain", "❗ pain", "Été", "R&D <b>", "👨‍👩‍👧 · x", "a\tb", "e\u0301", "- [ ] A", "Ｐain"}));
    }

  private:
    std::mt19937 engine_{20250305};

    bool chance(std::size_t outOf) { return pick(outOf) == 0; }
    std::string_view any(std::initializer_list<std::string_view> all) { return all.begin()[pick(all.size())]; }
    std::string line() {
        if (chance(4))
            return std::string(
                any({"", "# Tâches", "## À faire", "prose · 2025-01-01", " ", "\t", "- [ ] ", "\u2028"}));
        if (chance(200)) return "- [ ] " + std::string(1 << 16, 'x');
        std::string result(any({"", "  ", "\t"}));
        result += any({"- [ ] ", "- [x] ", "- [X] "});
        result += title();
        if (chance(20)) result += std::string("\0", 1);
        for (std::size_t parts = pick(4); parts > 0; --parts) {
            result += " · ";
            result += any({"2025-03-04", "2025-03-09 9:05", "due 2025-03-01", "✅ 2025-03-02", "✅", "lieu: ici", " ",
                           "2025-13-01", "x\r"});
        }
        return result;
    }
};

using Lines = std::vector<std::string_view>;

// The lines of both texts agree but for the one at that place, which `gone` and `come` count on either side.
void expectOnlyOneLineDiffers(std::string_view before, std::string_view after, std::size_t at, std::size_t gone,
                              std::size_t come) {
    const Lines old = dravel::split(before, "\n"), now = dravel::split(after, "\n");
    ASSERT_EQ(old.size() - gone, now.size() - come) << before << "\n--\n" << after;
    for (std::size_t i = 0; i < at; ++i) ASSERT_EQ(old[i], now[i]);
    for (std::size_t i = at + gone; i < old.size(); ++i) ASSERT_EQ(old[i], now[i + come - gone]);
}

std::size_t firstDifference(std::string_view before, std::string_view after) {
    const Lines old = dravel::split(before, "\n"), now = dravel::split(after, "\n");
    std::size_t i = 0;
    while (i < old.size() && i < now.size() && old[i] == now[i]) ++i;
    return i;
}

void checkAdding(RandomTexts& random, const std::string& text) {
    const auto title = random.title();
    const auto after = TaskFile::add(text, title, today, {}, false);
    expectOnlyOneLineDiffers(text, after, firstDifference(text, after), 0, 1);
    ASSERT_EQ(TaskFile::parse(after).size(), TaskFile::parse(text).size() + 1);
}

void checkEditing(RandomTexts& random, const std::string& text, const TaskItem& task) {
    const auto at = static_cast<std::size_t>(task.line);
    std::optional<std::string> after;
    switch (random.pick(4)) {
    case 0: after = TaskFile::setDone(text, task.key, !task.done, today); break;
    case 1: after = TaskFile::reschedule(text, task.key, {2025, 3, 10}, Clock{14, 30}, today); break;
    case 2:
        if (auto renamed = TaskFile::rename(text, task.key, "Nouveau titre")) after = renamed->text;
        break;
    default: {
        after = TaskFile::remove(text, task.key);
        ASSERT_TRUE(after);
        if (text.find('\n') != text.npos) expectOnlyOneLineDiffers(text, *after, at, 1, 0);
        return;
    }
    }
    if (after) expectOnlyOneLineDiffers(text, *after, at, 1, 1);
}

}

TEST(Edits, changeNoByteBeyondTheirLine) {
    RandomTexts random;
    const int edits = std::getenv("TACLA_LONG_TESTS") ? 1'000'000 : 20'000;
    for (int i = 0; i < edits && !HasFatalFailure(); ++i) {
        const auto text = random.text();
        const auto tasks = TaskFile::parse(text);
        if (tasks.empty() || random.pick(5) == 0) {
            checkAdding(random, text);
            continue;
        }
        // Of two tasks with one key ("pain#2" may be written by hand) the first is meant.
        const auto& any = tasks[random.pick(tasks.size())];
        checkEditing(random, text, *std::ranges::find(tasks, any.key, &TaskItem::key));
    }
}

// The keys as their rule tells them, by counting titles in a map.
std::vector<std::string> keysByTheRule(const Tasks& tasks) {
    std::map<std::string, int> counts;
    std::vector<std::string> keys;
    for (const auto& task : tasks) {
        const auto base = dravel::lowerCased(TaskFile::dropStrongMark(task.title));
        const int n = ++counts[base];
        keys.push_back(TaskFile::hash(n == 1 ? base : base + "#" + std::to_string(n)));
    }
    return keys;
}

TEST(Edits, renamingTellsEveryKeyThatMovesAndNoOther) {
    RandomTexts random;
    for (int i = 0; i < 5'000; ++i) {
        const auto text = random.text();
        const auto before = TaskFile::parse(text);
        const auto keys = keysByTheRule(before);
        for (std::size_t n = 0; n < before.size(); ++n) ASSERT_EQ(before[n].key, keys[n]) << text;
        if (before.empty()) continue;
        const auto renamed = TaskFile::rename(text, keys[random.pick(keys.size())], random.title());
        if (!renamed) continue;
        ASSERT_EQ(renamed->keys, TaskFile::renamedKeys(text, renamed->text)) << text << "\n--\n" << renamed->text;
        std::map<std::string, std::string> moved;
        for (const auto& task : TaskFile::parse(renamed->text)) {
            const auto old = std::ranges::find(before, task.line, &TaskItem::line);
            if (old != before.end() && old->key != task.key) moved[old->key] = task.key;
        }
        ASSERT_EQ(renamed->keys, moved) << text << "\n--\n" << renamed->text;
    }
}

TEST(Edits, uncheckingRestoresWhatCheckingChanged) {
    RandomTexts random;
    for (int i = 0; i < 3'000; ++i) {
        const auto text = random.text();
        for (const auto& task : TaskFile::parse(text)) {
            if (task.done || task.doneOn || text.find("✅") != text.npos || text.find("#2") != text.npos) continue;
            const auto checked = TaskFile::setDone(text, task.key, true, today);
            ASSERT_TRUE(checked);
            ASSERT_EQ(TaskFile::setDone(*checked, task.key, false, today), text);
        }
    }
}
