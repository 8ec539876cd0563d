#include "Tacla/Preferences/NotifiedTasks.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <set>

namespace tacla::testing {

using namespace std::chrono_literals;
using std::chrono::minutes;

namespace {

const std::vector<std::string> titles{"Pain", "pain", "❗ Pain", "Lait", "Banque", "TVA", "Été", "🎉 Fête", "Vélo"};
const std::vector<const char*> zones{"Europe/Paris", "America/New_York", "Pacific/Apia", "Asia/Tokyo", "UTC"};

// Days of a user who edits, sleeps, travels and sets the clock; after each step, what must hold of the reminders.
class Simulation {
  public:
    Simulation() : world_("2025-03-04 08:00", "## À faire\n") { world_.start(); }
    ~Simulation() { travelTo("Europe/Paris"); }

    void day() {
        for (int step = 0; step < 4; ++step) act(pick(12));
        sleep(minutes(1080));
        check();
    }
    std::size_t shown() const { return shown_.size(); }

  private:
    int pick(int count) { return std::uniform_int_distribution(0, count - 1)(random_); }
    template <class List>
    auto& oneOf(const List& list) {
        return list[static_cast<std::size_t>(pick(static_cast<int>(list.size())))];
    }
    Day someDay() { return Day::of(world_.loop.now()).plusDays(pick(6) - 1); }
    std::optional<Clock> someTime() { return pick(3) == 0 ? std::optional<Clock>() : Clock{pick(24), pick(60)}; }

    void act(int what) {
        switch (what) {
        case 0: pass(minutes(pick(10)), [this](auto time) { world_.loop.advance(time); }); break;
        case 1:
        case 2:
        case 3: sleep(minutes(pick(720))); break;
        case 4:
            pass(minutes(pick(9000) - 4000), [this](auto by) { world_.loop.setClock(world_.loop.now() + by); });
            break;
        case 5: travelTo(oneOf(zones)); break;
        case 6: world_.notifications.setReachable(pick(3) > 0); break;
        case 7: editorSaves(); break;
        case 8: terminalRenames(); break;
        default: applicationEdits();
        }
        check();
    }

    // What the clock passes on its way is owed to the user.
    template <class Move>
    void pass(milliseconds time, Move move) {
        for (const auto& [identifier, when] : ringing(false)) {
            if (when <= world_.loop.now() + time) owed_.insert(identifier);
        }
        move(time);
    }

    void sleep(minutes time) {
        pass(time, [this](auto asleep) { world_.loop.suspend(asleep); });
        world_.model.wokeUp();
    }

    void travelTo(const char* zone) {
        ::setenv("TZ", zone, 1);
        world_.loop.advance(2s);
    }

    void editorSaves() {
        auto text = world_.text();
        for (int added = pick(6); added > 0; --added) {
            text = TaskFile::add(text, oneOf(titles), someDay(), someTime(), false);
        }
        if (text.size() > 4000) text.erase(0, text.find('\n', text.size() / 2) + 1);
        world_.save(text);
        if (pick(2) == 0) world_.loop.advance(2s); // seen by the poll
    }

    void terminalRenames() {
        const auto tasks = TaskFile::parse(world_.text());
        if (tasks.empty()) return;
        const auto renamed = TaskFile::rename(world_.text(), oneOf(tasks).key, TaskFile::dropStrongMark(oneOf(titles)));
        if (!renamed) return;
        world_.save(renamed->text);
        world_.preferences.updateNotifiedTasks(
            [&](auto list) { return NotifiedTasks::rekeyed(std::move(list), renamed->keys); });
    }

    void applicationEdits() {
        auto& model = world_.model;
        const auto& tasks = world_.state().tasks;
        if (tasks.empty() || pick(3) == 0) return model.add(oneOf(titles), someDay(), someTime(), pick(4) == 0);
        const auto task = oneOf(tasks);
        switch (pick(4)) {
        case 0: return model.toggle(task);
        case 1: model.edit(task, {oneOf(titles), someDay(), someTime()}); return;
        case 2: return model.reschedule(task, someDay(), someTime());
        default: return model.remove(task);
        }
    }

    // Reckoned here without the plan: what has not rung and is due, or the first sixty of the file that are to come.
    std::map<std::string, Instant> ringing(bool due) const {
        std::map<std::string, Instant> result;
        const auto notified = world_.preferences.notifiedTasks();
        std::set<std::string> silenced(notified.begin(), notified.end());
        for (const auto& task : world_.state().tasks) {
            if (task.done || !task.day || (*task.at() <= world_.loop.now()) != due) continue;
            const auto identifier = task.key + "@" + task.when();
            if (silenced.contains(identifier) || world_.model.reminders()->shown.contains(identifier)) continue;
            if (due || result.size() < 60) result.emplace(identifier, *task.at());
        }
        return result;
    }

    void check() {
        world_.model.reload();
        world_.loop.runPosted();
        for (const auto& [at, request] : std::exchange(world_.notifications.shown, {})) {
            EXPECT_TRUE(shown_.insert(request.identifier).second) << "rang twice: " << request.identifier;
        }
        auto toCome = world_.model.reminders()->pending;
        std::erase_if(toCome, [this](const auto& entry) { return entry.second <= world_.loop.now(); });
        EXPECT_EQ(toCome, ringing(false));
        // Nothing is owed of a task that went away meanwhile, be it to come back.
        std::erase_if(owed_, [due = ringing(true)](const auto& owed) { return !due.contains(owed); });
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
