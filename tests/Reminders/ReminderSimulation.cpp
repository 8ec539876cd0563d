#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/Preferences/NotifiedTasks.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>

namespace tacla::testing {

using namespace std::chrono_literals;
using std::chrono::minutes;

namespace {

constexpr const char* titles[] = {"Pain", "pain", "❗ Pain", "Lait", "Banque", "TVA", "Été", "🎉 Fête", "Vélo", "Thé"};
constexpr const char* zones[] = {"Europe/Paris", "America/New_York", "Pacific/Apia", "Asia/Tokyo", "UTC"};

// Days of a user who edits, sleeps, travels and sets the clock; after each step, what must hold of the reminders.
class Simulation {
  public:
    Simulation() : world_("2025-03-04 08:00", "## À faire\n") { world_.start(); }
    ~Simulation() { travelTo("Europe/Paris"); }

    void day() {
        for (int step = 0; step < 4; ++step) {
            act(pick(12));
            check();
        }
        sleep(minutes(1080)); // the night
        check();
    }
    std::size_t shown() const { return shown_.size(); }

  private:
    int pick(int count) { return std::uniform_int_distribution(0, count - 1)(random_); }
    std::string title() { return titles[static_cast<std::size_t>(pick(std::ssize(titles)))]; }
    Day someDay() { return Day::of(world_.loop.now()).plusDays(pick(6) - 1); }
    std::optional<Clock> someTime() { return pick(3) == 0 ? std::optional<Clock>() : Clock{pick(24), pick(60)}; }

    void act(int what) {
        switch (what) {
        case 0: return pass(minutes(pick(10)), [this](auto time) { world_.loop.advance(time); });
        case 1:
        case 2:
        case 3: return sleep(minutes(pick(720)));
        case 4: return setClock(minutes(pick(9000) - 4000));
        case 5: return travelTo(zones[static_cast<std::size_t>(pick(std::ssize(zones)))]);
        case 6: return world_.notifications.setReachable(pick(3) > 0);
        case 7: return editorSaves();
        case 8: return terminalRenames();
        default: return applicationEdits();
        }
    }

    // Everything scheduled that the clock passes on its way is owed to the user.
    template <class Move>
    void pass(milliseconds time, Move move) {
        for (const auto& [identifier, when] : wanted()) {
            if (when <= world_.loop.now() + time) owed_.insert(identifier);
        }
        move(time);
    }

    void sleep(minutes time) {
        pass(time, [this](auto asleep) {
            world_.loop.suspend(asleep);
            world_.model.wokeUp();
        });
    }

    void setClock(minutes by) {
        const auto set = [&](milliseconds time) { world_.loop.setClock(world_.loop.now() + time); };
        if (by > 0min)
            pass(by, set);
        else
            set(by);
    }

    void travelTo(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
        world_.loop.advance(2s);
    }

    void editorSaves() {
        auto lines = world_.text();
        for (int added = pick(6); added > 0; --added) {
            const auto time = someTime();
            lines +=
                "- [ ] " + title() + " · " + someDay().description() + (time ? " " + time->description() : "") + "\n";
        }
        if (lines.size() > 4000) lines = "## À faire\n" + lines.substr(lines.find('\n', lines.size() / 2) + 1);
        world_.save(lines);
        if (pick(2) == 0) world_.loop.advance(2s); // seen by the poll
    }

    void terminalRenames() {
        const auto tasks = TaskFile::parse(world_.text());
        if (tasks.empty()) return;
        const auto key = tasks[static_cast<std::size_t>(pick(static_cast<int>(tasks.size())))].key;
        auto renamed = TaskFile::rename(world_.text(), key, TaskFile::dropStrongMark(title()));
        if (!renamed) return;
        world_.save(renamed->text);
        Preferences(world_.folder / "preferences.json", world_.folder / "locks").updateNotifiedTasks([&](auto list) {
            return NotifiedTasks::rekeyed(std::move(list), renamed->keys);
        });
    }

    void applicationEdits() {
        auto& model = world_.model;
        const auto& tasks = world_.state().tasks;
        if (tasks.empty() || pick(3) == 0) return model.add(title(), someDay(), someTime(), pick(4) == 0);
        const auto task = tasks[static_cast<std::size_t>(pick(static_cast<int>(tasks.size())))];
        switch (pick(4)) {
        case 0: return model.toggle(task);
        case 1: return model.edit(task, title(), someDay(), someTime());
        case 2: return model.reschedule(task, someDay(), someTime());
        default: return model.remove(task);
        }
    }

    // Reckoned here without the plan: identifier to moment of the first sixty of the file that are still to ring.
    std::map<std::string, Instant> wanted() const {
        std::map<std::string, Instant> result;
        const auto notified = world_.preferences.notifiedTasks();
        const std::set<std::string> silenced(notified.begin(), notified.end());
        const auto& seen = world_.model.reminders()->shown;
        for (const auto& task : world_.state().tasks) {
            if (task.done || !task.day || *task.at() <= world_.loop.now() || result.size() == 60) continue;
            const auto identifier = task.key + "@" + task.when();
            if (!silenced.contains(identifier) && !seen.contains(identifier)) result.emplace(identifier, *task.at());
        }
        return result;
    }

    bool stillRings(const std::string& identifier) const {
        const auto notified = world_.preferences.notifiedTasks();
        if (std::ranges::find(notified, identifier) != notified.end()) return false;
        return std::ranges::any_of(world_.state().tasks, [&](const TaskItem& task) {
            return !task.done && task.key + "@" + task.when() == identifier && *task.at() <= world_.loop.now();
        });
    }

    void check() {
        world_.model.reload();
        world_.loop.runPosted();
        for (const auto& [at, request] : std::exchange(world_.notifications.shown, {})) {
            EXPECT_TRUE(shown_.insert(request.identifier).second) << "rang twice: " << request.identifier;
        }
        std::map<std::string, Instant> toCome;
        for (const auto& [identifier, when] : world_.model.reminders()->pending) {
            if (when > world_.loop.now()) toCome.emplace(identifier, when);
        }
        EXPECT_EQ(toCome, wanted());
        // Nothing is owed of a task that went away meanwhile, be it to come back.
        std::erase_if(owed_, [this](const auto& owed) { return shown_.contains(owed) || !stillRings(owed); });
        if (!world_.notifications.capabilities.reachable) return;
        for (const auto& identifier : std::exchange(owed_, {})) ADD_FAILURE() << "missed: " << identifier;
    }

    ModelWorld world_;
    std::mt19937 random_{20250304};
    std::set<std::string> shown_, owed_;
};

}

TEST(Reminders, RingOnceAndNeverFailOverDaysOfEditsSleepTravelAndClockChanges) {
    const int days = std::getenv("TACLA_LONG_TESTS") != nullptr ? 10000 : 300;
    if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 1); // a hundred thousand saves
    Simulation simulation;
    for (int day = 0; day < days && !HasFailure(); ++day) simulation.day();
    EXPECT_GT(simulation.shown(), static_cast<std::size_t>(days) / 2);
}

}
