#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

#include <algorithm>
#include <random>

// Window, tray, bubble, terminal, editor and synchronising program act in any order on a list of namesakes. Each line
// carries a number that Tacla does not read, by which the test knows the task that the user meant.
namespace tacla::testing {

using Lines = std::vector<std::string>;
using Outcome = LiveDocument::Outcome;
constexpr Day today{2025, 3, 4}, tomorrow{2025, 3, 5};

static std::string textOf(const Lines& lines) {
    std::string text;
    for (const auto& line : lines) text += line + "\n";
    return text;
}

static std::string numberOf(const std::string& line) {
    const auto at = std::min(line.find("n°"), line.size());
    return line.substr(at, std::min(line.find(' ', at), line.size()) - at);
}

static std::string folded(const TaskItem& task) { return dravel::lowerCased(TaskFile::dropStrongMark(task.title)); }

static bool looksLike(const TaskItem& seen, const TaskItem& task) {
    return folded(seen) == folded(task) && seen.day == task.day && seen.time == task.time && seen.done == task.done;
}

static bool isAlone(const Tasks& tasks, const TaskItem& task) {
    return std::ranges::count(tasks, folded(task), folded) == 1;
}

// A task as somebody saw it, some time ago.
struct Seen {
    TaskItem task;
    std::string number;
    bool alone;
};

class Interleaving {
  public:
    explicit Interleaving(std::uint32_t seed) : random_(seed) { world_.start(); }

    int written = 0, refused = 0;
    std::string wrong; // the first thing that went wrong

    void run() {
        Lines lines;
        for (auto count = 1 + below(5); count > 0; --count) lines.push_back(newLine());
        save(lines);
        world_.model.checkFile();
        look();
        for (int step = 0; step < 4 && wrong.empty(); ++step) {
            if (below(2) == 0) actOutside();
            if (below(4) == 0) world_.model.checkFile();
            act();
            if (below(3) == 0) look();
        }
    }

  private:
    std::size_t below(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_); }

    std::string newLine() {
        const char *boxes[] = {"- [ ] ", "- [ ] ", "- [x] "}, *titles[] = {"Pain", "pain", "❗ Pain", "Vin"};
        const char* marks[] = {"", " · 2025-03-03", " · 2025-03-04", " · 2025-03-04 9:05", " · 2025-03-11"};
        return std::string(boxes[below(3)]) + titles[below(4)] + marks[below(5)] + " · n°" + std::to_string(++last_);
    }

    void look() {
        const auto tasks = TaskFile::parse(world_.text());
        if (tasks != world_.state().tasks) return; // what shows is older: its lines have other numbers by now
        const auto lines = linesOf(world_.text());
        seen_.clear();
        for (const auto& task : tasks)
            seen_.push_back({task, numberOf(lines[static_cast<std::size_t>(task.line)]), isAlone(tasks, task)});
    }

    void save(const Lines& lines) {
        older_ = world_.text();
        world_.save(textOf(lines));
    }

    void actOutside() {
        auto lines = linesOf(world_.text());
        if (lines.empty() || below(8) == 0) return world_.save(older_); // another version is brought
        auto& line = lines[below(lines.size())];
        const auto at = lines.begin() + (&line - lines.data());
        switch (below(5)) {
        case 0: lines.erase(at); break;
        case 1: lines.insert(at, newLine()); break;
        case 2: std::swap(line, lines.front()); break;
        case 3: line = newLine(); break;
        case 4: // the same task on another day
            line = line.substr(0, line.find(" · ")) + " · 2025-03-11 · " + numberOf(line);
            break;
        }
        save(lines);
    }

    void act() {
        if (seen_.empty()) return;
        const auto seen = seen_[below(seen_.size())];
        const auto before = world_.text();
        auto& list = world_.list();
        switch (below(7)) {
        case 0: list.toggle(seen.task); return judge(seen, before, true);
        case 1: list.apply(UserEdit::setDone(seen.task, true, today)); return judge(seen, before, !seen.task.done);
        case 2:
            list.reschedule(seen.task, tomorrow, {});
            return judge(seen, before, seen.task.day != tomorrow || seen.task.time);
        case 3: list.remove(seen.task); return judge(seen, before, true);
        case 4: return rename(seen, before);
        case 5: return checkInTerminal(seen, before);
        case 6: return addAndUndo(before);
        }
    }

    void rename(const Seen& seen, const std::string& before) {
        std::optional<Outcome> outcome;
        world_.list().edit(seen.task, {.title = "Sel " + std::to_string(++last_)}, [&](auto told) { outcome = told; });
        if ((outcome == Outcome::saved) != (world_.text() != before)) note("an editor is told wrong", before);
        judge(seen, before, true);
    }

    void checkInTerminal(const Seen& seen, const std::string& before) {
        TaskDocument terminal(world_.file, world_.folders);
        const auto edit = UserEdit::setDone(seen.task, true, today);
        const auto failure = terminal.failureOfEdit(edit.apply, world_.loop.now(), "refused");
        if (failure.has_value() != (world_.text() == before)) note("a terminal says nothing", before);
        world_.model.checkFile();
        judge(seen, before, !seen.task.done);
    }

    void addAndUndo(const std::string& before) {
        world_.list().add({{"Pain", today}});
        if (world_.text().size() <= before.size()) note("a task that was typed is lost", before);
        const auto added = world_.text();
        if (below(2) == 0) actOutside();
        const auto now = world_.text();
        world_.list().undo();
        if (world_.text() != (now == added ? before : now)) note("undone", now);
    }

    // One line at most has changed: the one that was meant, or one that nobody can tell from it.
    void judge(const Seen& seen, const std::string& text, bool changes) {
        const auto before = linesOf(text), after = linesOf(world_.text());
        const auto tasks = TaskFile::parse(text);
        if (before == after) {
            ++refused;
            const auto asSeen = [&](const TaskItem& task) {
                return task.key == seen.task.key && looksLike(seen.task, task);
            };
            if (changes && std::ranges::any_of(tasks, asSeen)) note("an edit is lost", text);
            if (world_.state().tasks != tasks) note("the page shows an older list", text);
            return;
        }
        ++written;
        const auto at = std::ranges::mismatch(before, after).in1 - before.begin();
        auto expected = before;
        if (after.size() < before.size())
            expected.erase(expected.begin() + at);
        else
            expected[static_cast<std::size_t>(at)] = after[static_cast<std::size_t>(at)];
        if (expected != after) return note("more than one line changed", text);
        const auto hit = std::ranges::find(tasks, at, &TaskItem::line);
        if (hit == tasks.end()) return note("no task changed", text);
        const bool meant = numberOf(before[static_cast<std::size_t>(at)]) == seen.number ||
                           looksLike(seen.task, *hit) ||
                           (folded(seen.task) == folded(*hit) && seen.alone && isAlone(tasks, *hit));
        if (!meant) note("another task than " + seen.task.title + " " + seen.task.when() + " changed", text);
    }

    void note(const std::string& what, const std::string& text) {
        if (wrong.empty()) wrong = what + " in\n" + text + "which became\n" + world_.text();
    }

    std::mt19937 random_;
    ModelWorld world_{"2025-03-04 08:00", "\n"};
    std::vector<Seen> seen_;
    std::string older_ = "\n";
    int last_ = 0;
};

class Interleavings : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(Interleavings, NeverChangeAnotherTaskNorLoseAnEdit) {
    const int cases = std::getenv("TACLA_LONG_TESTS") != nullptr ? 12'500 : 250;
    Interleaving all(GetParam());
    for (int i = 0; i < cases && all.wrong.empty(); ++i) all.run();
    EXPECT_EQ(all.wrong, "");
    EXPECT_GT(all.written, cases);
    EXPECT_GT(all.refused, cases / 10);
}

INSTANTIATE_TEST_SUITE_P(All, Interleavings, ::testing::Range(1U, 9U));

}
