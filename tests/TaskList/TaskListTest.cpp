#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/MomentWords.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskFinder.h"
#include "Tacla/TaskList/TaskViews.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tacla;

namespace {

// The tasks of a text, each as one line of a transcript.
std::string told(std::string_view text) {
    std::string lines;
    for (const auto& task : TaskFile::parse(text)) {
        lines += std::to_string(task.line) + (task.done ? " [x] " : " [ ] ") + task.title;
        if (task.day) lines += " | " + task.when();
        if (task.due) lines += " | due " + task.due->description();
        if (task.doneOn) lines += " | done " + task.doneOn->description();
        lines += "\n";
    }
    return lines;
}

constexpr Day today{2025, 3, 5};
const std::string nothing = "(nothing)";

// The key of the n-th task of a text.
std::string key(std::string_view text, std::size_t n = 0) { return TaskFile::parse(text).at(n).key; }

std::string checked(std::string_view text, bool done = true) {
    return TaskFile::setDone(text, key(text), done, today).value_or(nothing);
}
std::string renamed(std::string_view text, std::string_view title) {
    const auto result = TaskFile::rename(text, key(text), title);
    return result ? result->text : nothing;
}
std::string moved(std::string_view text, Day to, std::optional<Clock> time = {}) {
    return TaskFile::reschedule(text, key(text), to, time, today).value_or(nothing);
}

}

TEST(UsualNotation, IsWhateverTheEditsWrite) {
    for (std::int64_t year = 0; year < 10'000; ++year)
        for (const auto& [month, day] :
             {std::pair<std::int64_t, std::int64_t>{1, 1}, {year % 12 + 1, year % 31 + 1}, {12, 31}})
            ASSERT_EQ(unpackedDay(usualDay((Day{year, month, day}.description()))), (Day{year, month, day}));
    for (std::int64_t minute = 0; minute < 24 * 60; ++minute) {
        const Clock clock{minute / 60, minute % 60};
        ASSERT_EQ(unpackedClock(usualClock(clock.description())), clock);
    }
}

TEST(Day, MovesThroughTheCalendar) {
    for (const auto day : {3, 8, 9}) EXPECT_EQ((Day{2025, 3, day}).nextMonday(), (Day{2025, 3, 10}));
    EXPECT_EQ((Day{2025, 12, 31}).plusDays(1), (Day{2026, 1, 1}));
    EXPECT_EQ((Day{2025, 2, 30}).plusDays(0), (Day{2025, 3, 2}));
    EXPECT_EQ(Day::of((Day{2025, 2, 31}).date()), (Day{2025, 3, 3}));
    EXPECT_LT((Day{2025, 3, 4}), (Day{2025, 10, 1}));
    EXPECT_EQ((Day{-5, 1, 1}).description(), "-005-01-01");
}

TEST(TaskItem, FallsDueAtItsTimeOrAtNine) {
    const auto due = [](std::optional<Day> day, std::optional<Clock> time) {
        return TaskItem{0, false, "A", day, time, {}, {}, ""}.at();
    };
    EXPECT_EQ(due({}, {}), std::nullopt);
    EXPECT_EQ(Clock::of(*due(Day{2025, 3, 30}, {})), (Clock{9, 0}));
    EXPECT_EQ(Clock::of(*due(Day{2025, 3, 30}, Clock{2, 30})), (Clock{3, 0})); // the night without 02:30
    EXPECT_EQ(due(Day{2025, 10, 26}, Clock{3, 0}).value() - due(Day{2025, 10, 26}, Clock{2, 0}).value(),
              std::chrono::hours(2));
}

TEST(TaskFile, ReadsTheTasksOfADocumentAndNothingElse) {
    EXPECT_EQ(told("# Tâches\n"
                   "\n"
                   "`- [ ] Titre · AAAA-MM-JJ HH:MM`\n"
                   "- [ ] Appeler le garage · 2025-03-04 14:30 · ✅ 2025-03-04\n"
                   "  - [x] Payer · 2025-03-01 · ✅ 2025-03-02\n"
                   "\t- [X] ❗ TVA · due 2025-03-01 · 2025-03-03 9:05\n"
                   "-[ ] Non\n- [ ]Non\n* [ ] Non\n- [] Non\n- [y] Non\n- [ ] \n- [ ]  · 2025-01-01\n"
                   "- [ ] Dernière"),
              "3 [ ] Appeler le garage | 2025-03-04 14:30 | done 2025-03-04\n"
              "4 [x] Payer | 2025-03-01 | done 2025-03-02\n"
              "5 [x] ❗ TVA | 2025-03-03 09:05 | due 2025-03-01\n"
              "13 [ ] Dernière\n");
    EXPECT_TRUE(TaskFile::parse("").empty());
    EXPECT_TRUE(TaskFile::parse(TaskFile::newFileText).empty());
}

TEST(TaskFile, GivesEachTaskTheKeyOfItsTitle) {
    const auto tasks = TaskFile::parse("- [ ] Pain\n- [x] ❗ pain\n- [ ] ❗❗PAIN\n- [ ] pain#2\n- [ ] ❗\uFE0F Pain");
    ASSERT_EQ(tasks.size(), 5U);
    const char* const bases[] = {"pain", "pain#2", "pain#3", "pain#2", "\uFE0F pain"};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(tasks[i].key, TaskFile::hash(bases[i]));
    EXPECT_EQ(TaskFile::hash("abc"), "ba7816bf8f01cfea"); // FIPS 180-4
    EXPECT_TRUE(tasks[4].strong());
    EXPECT_EQ(TaskFile::dropStrongMark("❗ ❗ Banque "), "❗ Banque");
}

TEST(Check, MarksTheLineAndKeepsEverythingElse) {
    EXPECT_EQ(checked("- [ ] Payer le loyer · 2025-03-01"), "- [x] Payer le loyer · 2025-03-01 · ✅ 2025-03-05");
    EXPECT_EQ(checked("# T\n\n  - [ ] ❗ Banque\r\nfin"), "# T\n\n  - [x] ❗ Banque\r · ✅ 2025-03-05\nfin");
    EXPECT_EQ(checked("- [x] A"), nothing);
    EXPECT_EQ(checked("  - [x] ❗ Banque · ✅ 2025-03-04", false), "  - [ ] ❗ Banque");
    EXPECT_EQ(checked("- [X] A · ✅ 2025-03-01 · 2025-03-02 · ✅ 2025-03-03", false), "- [ ] A · 2025-03-02");
    EXPECT_EQ(checked("- [x] A ·  x · due 2025-01-01 ·  ✅", false), "- [ ] A ·  x · due 2025-01-01");
    EXPECT_EQ(TaskFile::setDone("- [ ] A", "0123456789abcdef", true, today), std::nullopt);
}

TEST(Rename, ReplacesTheTitleAloneAndKeepsTheMark) {
    EXPECT_EQ(renamed("- [x] ❗ Vieux titre · 2025-03-04 · ✅ 2025-03-04", "Nouveau"),
              "- [x] ❗ Nouveau · 2025-03-04 · ✅ 2025-03-04");
    EXPECT_EQ(renamed("a\n \t- [ ]   Vieux  \nb", "Nouveau"), "a\n \t- [ ] Nouveau\nb");
    EXPECT_EQ(renamed("- [ ] ❗ Pain", "Pain"), nothing);
    EXPECT_EQ(renamed("- [ ] Pain", "pain"), "- [ ] pain");
    EXPECT_EQ(renamed("- [ ] Pain", "Pain\nLait"), nothing);
    EXPECT_EQ(TaskFile::rename("- [ ] A", "0123456789abcdef", "B"), std::nullopt);
}

TEST(Rename, TellsWhichKeysMoved) {
    using Map = std::map<std::string, std::string>;
    const std::string text = "- [ ] Pain\n- [ ] Lait\n- [ ] pain\n";
    EXPECT_EQ(TaskFile::rename(text, key(text), "")->keys, (Map{{TaskFile::hash("pain#2"), TaskFile::hash("pain")}}));
    const auto a = "- [ ] A", ab = "- [ ] A\n- [ ] B", b = "\n- [ ] B", twice = "- [ ] A\n- [ ] a";
    const std::pair<const char*, const char*> without[] = {
        {ab, ab}, {ab, b}, {b, ab}, {a, ab}, {twice, "- [ ] A\n- [ ] a#2"}};
    for (const auto& [from, to] : without) EXPECT_EQ(TaskFile::renamedKeys(from, to), Map{}) << from << " -> " << to;
}

TEST(Reschedule, ReplacesTheDateAndRemembersWhenALateTaskWasFirstDue) {
    EXPECT_EQ(moved("- [ ] Déclarer la TVA · 2025-03-03 09:00", {2025, 3, 6}),
              "- [ ] Déclarer la TVA · 2025-03-06 · due 2025-03-03");
    EXPECT_EQ(moved("- [ ] A · lieu: bureau · 2025-03-01 · 2025-03-02 14:00", {2025, 3, 10}, Clock{14, 30}),
              "- [ ] A · lieu: bureau · 2025-03-10 14:30 · due 2025-03-02");
    EXPECT_EQ(moved("- [ ] A", {2025, 3, 10}), "- [ ] A · 2025-03-10");
    EXPECT_EQ(moved("- [ ] A · 2025-03-05 ·  b ", {2025, 3, 10}), "- [ ] A · 2025-03-10 ·  b ");
    EXPECT_EQ(moved("- [ ] A · 2025-03-03 · due 2025-03-01", {2025, 3, 10}), "- [ ] A · 2025-03-10 · due 2025-03-01");
    EXPECT_EQ(moved("- [ ] A · 2025-03-03", {2025, 3, 3}, Clock{8, 0}), "- [ ] A · 2025-03-03 08:00");
    EXPECT_EQ(moved("- [ ] A · 2025-03-04\r", {2025, 3, 10}), "- [ ] A · 2025-03-04\r · 2025-03-10");
}

TEST(Add, FindsItsPlaceInTheDocument) {
    const auto added = [](std::string_view text) { return TaskFile::add(text, "Pain", today, {}, false); };
    const std::string line = "- [ ] Pain · 2025-03-05";
    EXPECT_EQ(added(TaskFile::newFileText), std::string(TaskFile::newFileText) + line + "\n");
    EXPECT_EQ(added("## À faire\n- [ ] A\nprose\n \n\n# Fin\n- [ ] Z"),
              "## À faire\n- [ ] A\nprose\n" + line + "\n \n\n# Fin\n- [ ] Z");
    EXPECT_EQ(added(" ## À faire\t\n\n\n"), " ## À faire\t\n" + line + "\n\n\n");
    EXPECT_EQ(added("## À faire"), "## À faire\n" + line);
    EXPECT_EQ(added("## À faire\n# Fin"), "## À faire\n" + line + "\n# Fin");
    EXPECT_EQ(added("- [ ] A\n\n"), "- [ ] A\n" + line + "\n\n");
    EXPECT_EQ(added("- [ ] A\n  "), "- [ ] A\n  \n" + line);
    EXPECT_EQ(added(""), line + "\n");
    EXPECT_EQ(added("\n\n"), line + "\n\n\n");
}

TEST(Add, WritesATitleThatReadsBackWhole) {
    EXPECT_EQ(TaskFile::add("", "❗ Appel · urgent · vite ", today, Clock{9, 5}, true),
              "- [ ] ❗ Appel - urgent - vite · 2025-03-05 09:05\n");
}

TEST(Remove, TakesTheWholeLine) {
    const auto removed = [](std::string_view text, std::size_t n) { return TaskFile::remove(text, key(text, n)); };
    EXPECT_EQ(removed("# T\n- [ ] A\r\n- [ ] B", 0), "# T\n- [ ] B");
    EXPECT_EQ(removed("# T\n- [ ] A\n- [ ] B", 1), "# T\n- [ ] A");
    EXPECT_EQ(removed("- [ ] A", 0), "");
    EXPECT_EQ(removed("- [ ] A\n", 0), "");
    EXPECT_EQ(key(*removed("- [ ] Pain\n- [ ] pain", 0)), TaskFile::hash("pain"));
    EXPECT_EQ(TaskFile::remove("- [ ] A", "x"), std::nullopt);
}

TEST(TaskFinder, FindsWordsWhateverTheirCaseAccentsAndOrder) {
    const TaskList tasks("- [x] Été fini\n- [ ] Photos de l’ÉTÉ\n- [ ] ❗ Pain et œufs\n- [ ] Fe\u0301te\n");
    const TaskFinder finder(tasks);
    const auto marked = [&](std::string_view typed) {
        std::string text;
        for (const auto found : finder.find(typed)) {
            auto title = tasks[found].title;
            const auto ranges = SoughtWords(typed).rangesIn(title);
            for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)
                title.insert(range->end, "]").insert(range->begin, "[");
            text += title + "\n";
        }
        return text;
    };
    EXPECT_EQ(marked("ete"), "Photos de l’[ÉTÉ]\nF[e\u0301te]\n[Été] fini\n");
    EXPECT_EQ(marked("L'été PHOTO"), "[Photo]s de [l’ÉTÉ]\n");
    EXPECT_EQ(marked("lete"), "Photos de [l’ÉTÉ]\n");
    EXPECT_EQ(marked("oeuf"), "❗ Pain et [œuf]s\n");
    EXPECT_EQ(marked("pain ain a"), "❗ [Pain] et œufs\n");
    EXPECT_EQ(marked("pain été"), "");
    for (const auto* none : {"", "  ", "'", "\xC3"}) EXPECT_EQ(marked(none), "") << none;
}

TEST(TaskViews, SortEachTaskIntoItsList) {
    const TaskList tasks("- [ ] demain 8h · 2025-03-06 08:00\n"
                         "- [ ] 14:06 · 2025-03-05 14:06\n"
                         "- [ ] 14:05 · 2025-03-05 14:05\n"
                         "- [ ] 14:04 · 2025-03-05 14:04\n"
                         "- [ ] sans heure · 2025-03-05\n"
                         "- [x] faite 8:00 · 2025-03-05 08:00\n"
                         "- [ ] demain · 2025-03-06\n"
                         "- [ ] hier · 2025-03-04 23:00\n"
                         "- [ ] un jour\n"
                         "- [x] faite hier · 2025-03-04 · ✅ 2025-03-05\n"
                         "- [x] sans rien\n"
                         "- [x] vieille · 2025-03-06 · ✅ 2025-01-01\n"
                         "- [ ] aussi hier 23h · 2025-03-04 23:00\n");
    const auto now = *TaskItem{0, false, "", today, Clock{14, 5}, {}, {}, ""}.at() + std::chrono::seconds(30);
    const auto shown = [&](Places places) {
        std::string titles;
        for (const auto& task : TaskSelection{tasks, std::move(places)}) titles += task.title + ", ";
        return titles;
    };
    EXPECT_EQ(shown(late(tasks, now)), "hier, aussi hier 23h, 14:04, ");
    EXPECT_EQ(shown(todays(tasks, now)), "faite 8:00, sans heure, 14:05, 14:06, ");
    EXPECT_EQ(shown(upcoming(tasks, today, 9)), "demain 8h, demain, ");
    EXPECT_EQ(shown(undated(tasks)), "un jour, ");
    std::string done;
    for (auto& [day, places] : doneByDay(tasks, today)) done += shown(std::move(places)) + "/ ";
    EXPECT_EQ(done, "faite 8:00, faite hier, sans rien, / vieille, / ");
    EXPECT_EQ(openCount(tasks, now), 6U);
    EXPECT_EQ(shown(late(tasks, now + std::chrono::seconds(30))), "hier, aussi hier 23h, 14:04, 14:05, ");
}

// A line of the table has one of two forms. "Dentiste + le 12 / le 12 décembre → samedi 12 décembre | demain → demain":
// the words behind the title, and what the chip says; the title is what is left. With "< " the words come first.
// "Demain : Paul | Demain, Paul → Paul → demain": whole titles as typed, what is left of each, and what the chip says;
// "–" where nothing is offered.
// "= 2026-11-18 10:00" sets the clock; "_" is a no-break space.
TEST(MomentWords, AreTheOnesOfTheTable) {
    std::ifstream table(TACLA_PHRASES);
    Day day{};
    Clock now{};
    int phrases = 0;
    const std::string arrow = " → ";
    const auto check = [&](const std::string& typed, std::string_view expected) {
        const auto told = momentWords(typed, day, now);
        EXPECT_EQ(told ? withoutWords(typed, *told) + arrow + label(*told, day) : "–", expected) << typed;
        ++phrases;
    };
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line.starts_with("# ")) continue;
        if (line.starts_with("= ")) {
            day = Day::parse(line.substr(2, 10)).value();
            now = Clock::parse(line.substr(13)).value();
            continue;
        }
        line = dravel::replacedAll(line, "_", "\u00A0");
        const auto plus = line.find(" + "), end = line.find(arrow);
        const bool before = line.starts_with("< ");
        const auto title = before ? line.substr(2, plus - 2) : line.substr(0, plus);
        if (plus == line.npos) {
            for (const auto typed : dravel::split(std::string_view(line).substr(0, end), " | "))
                check(std::string(typed), line.substr(end + arrow.size()));
            continue;
        }
        for (const auto moment : dravel::split(std::string_view(line).substr(plus + 3), " | "))
            for (const auto words : dravel::split(moment.substr(0, moment.find(arrow)), " / "))
                check(before ? std::string(words) + " " + title : title + " " + std::string(words),
                      title + std::string(moment.substr(moment.find(arrow))));
    }
    EXPECT_GE(phrases, 271);
}
