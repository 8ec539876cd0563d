#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/Numbering.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskViews.h"
#include "tests/TaskList/EditChecks.h"

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

    // A moment, or nearly one.
    std::string moment() {
        std::string text(any({"2025-03-04", "2025-12-31 23:59", "9999-01-10 00:00", "2025-10-09 9:05"}));
        for (auto changes = pick(4); changes > 0; --changes)
            text.replace(pick(text.size()), pick(2), any({"0", "1", "2", "3", "6", "9", "-", ":", " ", "/", "x", "é"}));
        return text;
    }
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
            result += any({"", "", "", " ", "due ", "Due ", "✅ ", "✅", "✅ jamais", "lieu: ici", "x\r", "\u00A0"});
            if (!chance(5)) result += moment();
            if (chance(10)) result += any({" ", "  ", " demain", "\u2028", "\r", "\t· 2025-03-04"});
        }
        return result;
    }
};

// What the quick reading must come to, written down as the rules say it and without a thought of speed.
std::optional<Day> plainDay(std::string_view text) {
    const auto pieces = dravel::split(text, "-", false);
    if (pieces.size() != 3 || pieces[0].size() != 4) return {};
    const auto year = dravel::parsedDigits(pieces[0]), month = dravel::parsedDigits(pieces[1]),
               day = dravel::parsedDigits(pieces[2]);
    if (!year || !month || !day || *month < 1 || *month > 12 || *day < 1 || *day > 31) return {};
    return Day{*year, *month, *day};
}

std::optional<Clock> plainClock(std::string_view text) {
    const auto pieces = dravel::split(text, ":", false);
    if (pieces.size() != 2 || pieces[0].size() > 2 || pieces[1].size() != 2) return {};
    const auto hour = dravel::parsedDigits(pieces[0]), minute = dravel::parsedDigits(pieces[1]);
    if (!hour || !minute || *hour > 23 || *minute > 59) return {};
    return Clock{*hour, *minute};
}

void readPlainly(TaskItem& task, std::string_view part) {
    const auto pieces = dravel::split(part, " ", false);
    const auto day = pieces.empty() ? std::nullopt : plainDay(pieces[0]);
    const auto time = pieces.size() < 2 ? std::nullopt : plainClock(pieces[1]);
    if (part.starts_with("✅"))
        task.doneOn = plainDay(dravel::trimmedOfWhiteSpace(part.substr(3)));
    else if (part.starts_with("due "))
        task.due = plainDay(part.substr(4)) ? plainDay(part.substr(4)) : task.due;
    else if (day && (pieces.size() == 1 || (pieces.size() == 2 && time)))
        task.day = day, task.time = time;
}

template <class Value>
std::vector<std::uint32_t> plainNumbers(const std::vector<Value>& values) {
    std::map<Value, std::uint32_t> seen;
    std::vector<std::uint32_t> numbers;
    for (const auto& value : values) numbers.push_back(++seen[value]);
    return numbers;
}

Tasks plainlyParsed(std::string_view text) {
    Tasks tasks;
    std::vector<std::string> titles;
    for (std::int64_t number = -1; auto line : dravel::split(text, "\n")) {
        ++number;
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with("- [ ] ") && !line.starts_with("- [x] ") && !line.starts_with("- [X] ")) continue;
        const auto parts = dravel::split(line.substr(6), " · ");
        const auto title = dravel::trimmedOfWhiteSpaceAndLineBreaks(parts[0]);
        if (title.empty()) continue;
        tasks.push_back({number, line[3] != ' ', std::string(title), {}, {}, {}, {}, ""});
        for (const auto part : parts)
            if (&part != &parts[0]) readPlainly(tasks.back(), dravel::trimmedOfWhiteSpace(part));
        titles.push_back(dravel::lowerCased(TaskFile::dropStrongMark(title)));
    }
    const auto numbers = plainNumbers(titles);
    for (std::size_t i = 0; i < tasks.size(); ++i)
        tasks[i].key = TaskFile::hash(numbers[i] == 1 ? titles[i] : titles[i] + "#" + std::to_string(numbers[i]));
    return tasks;
}

}

TEST(QuickReading, ComesToWhatPlainReadingComesTo) {
    RandomTexts random;
    for (int i = 0; i < 5'000; ++i) {
        const auto text = random.text();
        ASSERT_EQ(TaskFile::parse(text), plainlyParsed(text)) << text;
    }
    for (int day = 0; day < 40 * 100; ++day) { // each day and time of two digits, and those next to them
        std::string text = "2025-00-00";
        text[5] = static_cast<char>('/' + day / 1000), text[6] = static_cast<char>('/' + day / 100 % 10);
        text[8] = static_cast<char>('/' + day / 10 % 10), text[9] = static_cast<char>('0' + day % 10);
        ASSERT_EQ(Day::parse(text), plainDay(text)) << text;
    }
}

TEST(TaskList, ShowsOfALongListWhatThePlainViewsShow) {
    RandomTexts random;
    for (int i = 0; i < 2'000; ++i) {
        const auto text = random.text();
        const auto plain = TaskFile::parse(text);
        const TaskList list(text);
        ASSERT_EQ(list, plain) << text;
        ASSERT_EQ(TaskList(text + "\nprose"), list);
        const auto one = random.pick(plain.size());
        if (!plain.empty()) {
            ASSERT_EQ(list[*list.find(plain[one].key)].key, plain[one].key);
            ASSERT_EQ(list[one].alone, plain[one].alone);
            ASSERT_EQ(TaskList(*TaskFile::remove(text, plain[one].key)) == list, false) << text;
        }
        // The day and time of one of them, and those around it.
        const auto now = (plain.empty() ? std::nullopt : plain[one].at()).value_or(today.date()) +
                         std::chrono::minutes(random.pick(3)) - std::chrono::minutes(1);
        const auto day = Day::of(now);
        const auto shown = [&](const Places& places) {
            Tasks tasks;
            for (const auto place : places) tasks.push_back(list[place]);
            return tasks;
        };
        const auto shownByDay = [&](const std::vector<DayPlaces>& days) {
            Places all;
            for (const auto& [dayOf, places] : days) all.insert(all.end(), places.begin(), places.end());
            return shown(all);
        };
        const auto plainly = [&](auto wanted) {
            Tasks tasks;
            std::ranges::copy_if(plain, std::back_inserter(tasks), wanted);
            return tasks;
        };
        const auto completed = [&](const TaskItem& task) { return task.doneOn.value_or(task.day.value_or(day)); };
        auto next = plainly([&](const TaskItem& task) { return !task.done && task.day && *task.day > day; });
        std::ranges::stable_sort(next, {}, [](const TaskItem& task) { return *task.at(); });
        auto done = plainly([](const TaskItem& task) { return task.done; });
        std::ranges::stable_sort(done, std::ranges::greater(), completed);
        ASSERT_EQ(shown(late(list, now)), late(plain, now)) << text;
        ASSERT_EQ(shown(todays(list, now)), todays(plain, now)) << text;
        ASSERT_EQ(shown(upcoming(list, day, next.size())), next) << text;
        ASSERT_EQ(shownByDay(upcomingByDay(list, day)), next) << text;
        ASSERT_EQ(shownByDay(doneByDay(list, day)), done) << text;
        ASSERT_EQ(shown(undated(list)), plainly([](const auto& task) { return !task.done && !task.day; })) << text;
        auto open = todays(plain, now);
        std::erase_if(open, [](const TaskItem& task) { return task.done; });
        ASSERT_EQ(openCount(list, now), late(plain, now).size() + open.size()) << text;
    }
}

TEST(Numbering, ComesToWhatCountingInAMapComesTo) {
    RandomTexts random;
    for (int round = 0; round < 300; ++round) {
        std::vector<std::uint64_t> digests(random.pick(200));
        for (auto& digest : digests) digest = random.pick(4) << 62 | random.pick(100);
        ASSERT_EQ(numbered(digests), plainNumbers(digests));
    }
}

TEST(Edits, ChangeNoByteBeyondTheirLine) {
    RandomTexts random;
    const int texts = std::getenv("TACLA_LONG_TESTS") ? 100'000 : 2'000;
    for (int i = 0; i < texts && !HasFatalFailure(); ++i) {
        const auto text = random.text();
        ASSERT_EQ(tacla::testing::wrongEdit(text, random.title(), today), "") << text;
    }
}

TEST(Edits, TellEveryKeyThatRenamingMovesAndNoOther) {
    RandomTexts random;
    for (int i = 0; i < 5'000; ++i) {
        const auto text = random.text();
        const auto before = TaskFile::parse(text);
        const auto one = random.pick(before.size());
        const auto renamed = before.empty() ? std::nullopt : TaskFile::rename(text, before[one].key, random.title());
        if (!renamed) continue;
        std::map<std::string, std::string> moved;
        for (const auto& task : TaskFile::parse(renamed->text)) {
            const auto old = std::ranges::find(before, task.line, &TaskItem::line);
            if (old != before.end() && old->key != task.key) moved[old->key] = task.key;
        }
        ASSERT_EQ(renamed->keys, moved) << text << "\n--\n" << renamed->text;
    }
}
