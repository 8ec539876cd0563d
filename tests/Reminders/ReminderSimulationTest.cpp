#include "Tacla/Preferences/NotifiedTasks.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

#include <algorithm>
#include <random>
#include <set>

namespace tacla::testing {

using std::chrono::minutes;

const std::vector<std::string> titles{"Pain", "pain", "❗ Pain", "Lait", "Banque", "TVA", "Été", "🎉 Fête", "Vélo"};
const std::vector<const char*> zones{"Europe/Paris", "America/New_York", "Pacific/Apia", "Asia/Tokyo", "UTC"};

// Who each line of the list is, whatever becomes of it: told by every single edit of the text.
class Identities {
  public:
    void see(const std::string& text) {
        const auto now = linesOf(text);
        const auto place = std::ranges::mismatch(lines_, now).in1 - lines_.begin();
        for (auto more = now.size(); more > lines_.size(); --more) ids_.insert(ids_.begin() + place, ++last_);
        if (now.size() < lines_.size()) ids_.erase(ids_.begin() + place);
        ids_.resize(now.size());
        lines_ = now;
    }
    const std::vector<int>& all() const { return ids_; }

  private:
    std::vector<std::string> lines_;
    std::vector<int> ids_;
    int last_ = 0;
};

// Days of a user who edits in the window, in the terminal and in an editor, takes back, sleeps, travels, sets the clock
// and answers bubbles sooner or later, while processes end; after each step, what must hold of the reminders.
class Simulation {
  public:
    Simulation() : world_("2025-03-04 08:00", "## À faire\n") {
        world_.notifications.whenShown = [this](const auto& shown) { noteShown(shown); };
        world_.start();
        listen();
    }
    ~Simulation() { travelTo("Europe/Paris"); }

    void day() {
        for (int step = 0; step < 6; ++step) act(pick(18));
        sleep(minutes(1080));
        check();
    }

    int shownCount = 0, answered = 0, refused = 0;

  private:
    struct Ring { // whose, and of which moment
        int id;
        std::string when;
        auto operator<=>(const Ring&) const = default;
    };

    int pick(int count) { return std::uniform_int_distribution(0, count - 1)(random_); }
    template <class List>
    decltype(auto) oneOf(const List& list) {
        return list[static_cast<std::size_t>(pick(static_cast<int>(list.size())))];
    }
    Day someDay() { return Day::of(world_.loop.now()).plusDays(pick(6) - 1); }
    std::optional<Clock> someTime() { return pick(3) == 0 ? std::optional<Clock>() : Clock{pick(24), pick(60)}; }

    void listen() {
        windows_ = world_.model.windowAsked.connect([this](const auto&) { ++windowsAsked_; });
        changes_ = world_.model.changed.connect([this] { lookWhetherSeen(); });
    }

    // The model's tasks are those of the present text.
    bool lookWhetherSeen() {
        if (world_.state().tasks != TaskFile::parse(world_.text())) return false;
        track();
        seen_ = ids_.all();
        unseenEdits_ = 0;
        return true;
    }

    void track() {
        const auto text = world_.text();
        if (text == tracked_) return;
        ids_.see(text);
        tracked_ = text;
        // Several edits between two looks: who is who cannot always be told.
        if (++unseenEdits_ > 1) unsure();
    }

    void unsure() {
        rung_.clear();
        owed_.clear();
    }

    void noteShown(const RecordedNotifications::Shown& shown) {
        if (shown.request.content.key.empty()) return;
        lookWhetherSeen();
        const auto& tasks = world_.state().tasks;
        const auto place = tasks.find(shown.request.content.key);
        ASSERT_TRUE(place) << shown.request.content.title;
        const TaskItem task = tasks[*place];
        const Ring ring{idOf(task), task.when()};
        bubbles_[shown.handle] = ring;
        owed_.erase(ring);
        EXPECT_TRUE(rung_.emplace(ring, *task.at()).second) << "rang twice: " << task.title << " " << ring.when;
        ++shownCount;
    }

    void act(int what) {
        track();
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
        case 9: world_.list().undo(); break;
        case 10: restart(); break;
        case 11:
            if (pick(4) == 0) world_.notifications.startAnew();
            break;
        case 12:
        case 13:
        case 14: answerOne(); break;
        default: windowEdits();
        }
        check();
    }

    // What the clock passes on its way is owed to the user.
    template <class Move>
    void pass(milliseconds time, Move move) {
        look();
        for (const auto& task : toCome())
            if (*task.at() <= world_.loop.now() + time) owed_.insert({idOf(task), task.when()});
        move(time);
        mayRingAgain();
    }

    // What is to come once more, by a clock set back.
    void mayRingAgain() {
        std::erase_if(rung_, [now = world_.loop.now()](const auto& rung) { return rung.second > now; });
    }

    void sleep(minutes time) {
        pass(time, [this](auto asleep) { world_.loop.suspend(asleep); });
        world_.model.wokeUp();
    }

    void travelTo(const char* zone) {
        ::setenv("TZ", zone, 1);
        rung_.clear(); // their moments may be to come there
        world_.loop.advance(2s);
    }

    void restart() {
        look();
        const bool edited = pick(2) == 0;
        world_.restart([&] {
            if (!edited) return;
            editorSavesOnce();
            unsure(); // nobody followed
        });
        listen();
        lookWhetherSeen();
        // Of what waited for a server, the next process knows only what is of today.
        const auto today = Day::of(world_.loop.now()).description();
        std::erase_if(owed_, [&](const auto& owed) { return !owed.when.starts_with(today); });
    }

    void save(const std::string& text) {
        world_.save(text);
        track();
    }

    void editorSaves() {
        for (int count = pick(3); count >= 0; --count) editorSavesOnce();
        if (pick(2) == 0) world_.loop.advance(2s); // seen by the poll
    }

    // Of the task of that line, or of any.
    void editorSavesOnce(std::optional<std::ptrdiff_t> line = {}) {
        auto text = world_.text();
        const auto tasks = TaskFile::parse(text);
        const auto meant = std::ranges::find(tasks, line.value_or(-1), &TaskItem::line);
        if (tasks.empty() || (!line && pick(2) == 0 && tasks.size() < 70))
            return save(TaskFile::add(text, oneOf(titles), someDay(), someTime(), false));
        const auto& key = meant != tasks.end() ? meant->key : oneOf(tasks).key;
        const auto today = Day::of(world_.loop.now());
        switch (pick(4)) {
        case 0: return save(TaskFile::remove(text, key).value_or(text));
        case 1: return save(TaskFile::setDone(text, key, pick(3) > 0, today).value_or(text));
        case 2: return save(TaskFile::reschedule(text, key, someDay(), someTime(), today).value_or(text));
        default:
            if (const auto renamed = TaskFile::rename(text, key, TaskFile::dropStrongMark(oneOf(titles))))
                save(renamed->text);
        }
    }

    void terminalRenames() {
        const auto tasks = TaskFile::parse(world_.text());
        if (tasks.empty()) return;
        const auto renamed = TaskFile::rename(world_.text(), oneOf(tasks).key, TaskFile::dropStrongMark(oneOf(titles)));
        if (!renamed) return;
        const auto rekey = [&](auto how) {
            world_.preferences.updateNotifiedTasks([&](auto list) { return how(std::move(list), renamed->keys); });
        };
        rekey(NotifiedTasks::underBothKeys);
        save(renamed->text);
        if (pick(2) == 0) world_.loop.advance(2s); // the application may be faster
        rekey(NotifiedTasks::rekeyed);
    }

    void windowEdits() {
        auto& list = world_.list();
        const auto& tasks = world_.state().tasks;
        if (tasks.empty() || pick(3) == 0) {
            list.add({{oneOf(titles), someDay(), someTime(), pick(4) == 0}});
            return;
        }
        const auto task = oneOf(tasks);
        switch (pick(4)) {
        case 0: return list.toggle(task);
        case 1: list.edit(task, {oneOf(titles), someDay(), someTime()}); return;
        case 2: return list.reschedule(task, someDay(), someTime());
        default: return list.remove(task);
        }
    }

    void answerOne() {
        if (world_.notifications.bubbles.empty()) return;
        auto chosen = world_.notifications.bubbles.begin();
        std::advance(chosen, pick(static_cast<int>(world_.notifications.bubbles.size())));
        const auto handle = chosen->first;
        if (pick(4) == 0) return world_.notifications.close(handle); // put away by the user
        if (pick(2) == 0) editorSavesOnce();                         // nobody has looked since
        if (pick(3) == 0) editorSavesOnce(lineOf(bubbles_.at(handle).id));
        const auto before = linesOf(world_.text());
        const auto windows = windowsAsked_;
        world_.notifications.press(handle, pick(2) == 0 ? NotificationServer::Action::done
                                                        : NotificationServer::Action::tomorrow);
        const auto after = linesOf(world_.text());
        if (before == after) {
            EXPECT_GT(windowsAsked_, windows) << "nothing happened";
            ++refused;
            return;
        }
        ASSERT_EQ(before.size(), after.size());
        const auto place = static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
        const auto& bubble = bubbles_.at(handle);
        const auto line = lineOf(bubble.id);
        ASSERT_LT(line, static_cast<std::ptrdiff_t>(before.size())) << "its task was gone: " << before[place];
        // Of two lines that read the same, either will do.
        EXPECT_EQ(before[static_cast<std::size_t>(line)], before[place]);
        EXPECT_TRUE(before[place].starts_with("- [ ] ") && before[place].find(bubble.when) != std::string::npos)
            << before[place];
        ++answered;
    }

    std::ptrdiff_t lineOf(int id) const { return std::ranges::find(ids_.all(), id) - ids_.all().begin(); }
    int idOf(const TaskItem& task) const { return seen_.at(static_cast<std::size_t>(task.line)); }

    // Reckoned here without the plan: the first sixty of the file that are to come.
    Tasks toCome() const {
        Tasks result;
        for (const auto& task : world_.state().tasks)
            if (!task.done && task.day && *task.at() > world_.loop.now() && result.size() < 60) result.push_back(task);
        return result;
    }

    // The task that is open still, and on that moment.
    std::optional<TaskItem> taskOf(const Ring& ring) const {
        for (const auto& task : world_.state().tasks)
            if (!task.done && Ring{idOf(task), task.when()} == ring) return task;
        return {};
    }

    void look() {
        track();
        world_.list().read();
        world_.loop.advance(2s);
        for (int turn = 0; turn < 60 && world_.notifications.capabilities.reachable; ++turn) world_.loop.advance(1s);
        ASSERT_TRUE(lookWhetherSeen());
    }

    void check() {
        look();
        std::set<std::string> expected, pending;
        for (const auto& task : toCome()) expected.insert(task.key + "@" + task.when());
        for (const auto& [identifier, moment] : *world_.model.pendingReminders())
            if (moment > world_.loop.now()) pending.insert(identifier);
        EXPECT_EQ(pending, expected);
        for (const auto& [handle, content] : world_.notifications.bubbles) {
            const auto& bubble = bubbles_.at(handle);
            const auto same = [&](const TaskItem& task) { return !task.done && task.when() == bubble.when; };
            EXPECT_TRUE(taskOf(bubble) || std::ranges::any_of(world_.state().tasks, same))
                << "outlived its task: " << content.title;
        }
        world_.notifications.shown.clear();
        std::erase_if(owed_, [this](const Ring& owed) {
            const auto task = taskOf(owed);
            return !task || *task->at() > world_.loop.now();
        });
        if (!world_.notifications.capabilities.reachable) return;
        for (const auto& [id, when] : std::exchange(owed_, {})) ADD_FAILURE() << "missed: " << id << " " << when;
    }

    ModelWorld world_;
    Identities ids_;
    std::string tracked_;
    std::vector<int> seen_; // the identities of the lines that the model knows
    int unseenEdits_ = 0, windowsAsked_ = 0;
    std::map<BubbleHandle, Ring> bubbles_;
    std::mt19937 random_{20250304};
    std::map<Ring, Instant> rung_;
    std::set<Ring> owed_;
    dravel::Connection windows_, changes_;
};

TEST(Reminders, RingOnceNeverFailAndActOnTheirTaskOverDaysOfEditsSleepTravelAndClockChanges) {
    const int days = std::getenv("TACLA_LONG_TESTS") != nullptr ? 10000 : 300;
    if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 1); // a hundred thousand saves
    Simulation simulation;
    for (int day = 0; day < days && !HasFailure(); ++day) simulation.day();
    EXPECT_GT(simulation.shownCount, days / 2);
    EXPECT_GT(simulation.answered, days / 8);
    RecordProperty("shown", simulation.shownCount);
    RecordProperty("answered", simulation.answered);
    RecordProperty("refused", simulation.refused);
}

}
