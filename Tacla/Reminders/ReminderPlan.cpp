#include "Tacla/Reminders/ReminderPlan.h"

#include "Tacla/TaskList/Labels.h"
#include "Tacla/TaskList/Successors.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_set>

namespace tacla {

namespace {

using Views = std::unordered_set<std::string_view>;

constexpr std::int64_t daysRemembered = 7;
// The 30th or 31st of a short month falls due up to three days after its name: an earlier day is past for sure.
constexpr std::int64_t daysOfRollOver = 4;

std::string_view keyOf(std::string_view identifier) { return identifier.substr(0, identifier.find('@')); }
std::string_view whenOf(std::string_view identifier) {
    const auto at = identifier.find('@');
    return at == std::string_view::npos ? std::string_view() : identifier.substr(at + 1);
}

bool remindsOf(const TaskItem& task) { return !task.done && task.day; }
bool remindsOf(const TaskList::Brief& task) { return !task.done && task.day != 0; }

class Planner {
  public:
    Planner(const Moments& held, const Notified& notified, Instant now)
        : held_(held), notified_(notified.begin(), notified.end()), now_(now) {
        for (const auto& [identifier, moment] : held) pendingKeys_.insert(keyNumber(keyOf(identifier)).value_or(0));
        const auto oldest = today_.plusDays(-daysRemembered).description();
        std::ranges::copy_if(notified, std::back_inserter(plan_.expired),
                             [&oldest](const std::string& entry) { return whenOf(entry) < oldest; });
    }

    void take(const TaskList& tasks, std::size_t place) {
        if (!remindsOf(tasks.brief(place)) || !matters(tasks, place)) return;
        const auto task = tasks.drawn(place);
        const auto moment = *task.at();
        const bool due = moment <= now_;
        if (!due && wanted_ == pendingLimit) return;
        auto identifier = reminderIdentifier(task);
        const auto pending = held_.find(identifier);
        const bool isPending = pending != held_.end();
        const bool isCatchUp = due && !isPending;
        if (isCatchUp && (task.day != today_ || notified_.contains(identifier))) return;
        if (!kept_.insert(identifier).second) return;
        if (!due) {
            ++wanted_;
            // It rang by a clock that was ahead, or in another zone: its moment is yet to come.
            if (notified_.contains(identifier)) plan_.expired.push_back(identifier);
        }
        const bool unchanged = isPending && (pending->second == moment || (due && pending->second <= now_));
        auto& list = unchanged ? plan_.unchanged : due ? plan_.catchUp : plan_.schedule;
        list.push_back({std::move(identifier), task, unchanged ? pending->second : moment});
    }

    ReminderPlan finish() {
        for (const auto& [identifier, moment] : held_) {
            if (!kept_.contains(identifier)) plan_.stale.push_back(identifier);
        }
        plan_.full = wanted_ == pendingLimit;
        return std::move(plan_);
    }

  private:
    // Spares the others, most of a long list, the reckoning of their moment.
    bool matters(const TaskList& tasks, std::size_t place) const {
        const auto day = tasks.brief(place).day;
        if (day == packedDay(today_)) return true;
        if (day > packedDay(longPast_) && wanted_ < pendingLimit) return true;
        return pendingKeys_.contains(tasks.key(place));
    }

    const Moments& held_;
    Views notified_;
    KeySet pendingKeys_;
    Instant now_;
    Day today_ = Day::of(now_), longPast_ = today_.plusDays(-daysOfRollOver);
    std::set<std::string> kept_; // identifiers that stay or become pending
    std::size_t wanted_ = 0;
    ReminderPlan plan_;
};

}

std::string reminderIdentifier(const TaskItem& task) { return task.key + "@" + task.when(); }

namespace {

std::string onItsDay(const TaskItem& task) {
    return task.time ? "Prévue à " + task.time->description() : "Prévue aujourd'hui";
}

std::string afterItsDay(const TaskItem& task) {
    return "Prévue le " + dayAndMonth(*task.day) + (task.time ? " à " + task.time->description() : "");
}

}

NotificationContent reminderContent(const TaskItem& task, Day today) {
    auto body = Day::of(*task.at()) < today ? afterItsDay(task) : onItsDay(task);
    if (task.strong()) body += " · prioritaire";
    if (task.due) body += " · due le " + dayAndMonth(*task.due);
    return {.title = TaskFile::dropStrongMark(task.title), .body = std::move(body), .key = task.key};
}

ReminderPlan planReminders(const TaskList& tasks, const Moments& pending, const Notified& notified, Instant now) {
    Planner planner(pending, notified, now);
    for (std::size_t i = 0; i < tasks.size(); ++i) planner.take(tasks, i);
    return planner.finish();
}

Tasks remindersGivenBack(const dravel::SafeFile::Change& change) {
    const TaskList edited(change.after), restored(change.before);
    const Successors successors(edited, restored);
    std::set<std::int64_t> kept; // lines of those that ring as before, be it by another key
    for (std::size_t i = 0; i < edited.size(); ++i) {
        if (!remindsOf(edited.brief(i))) continue;
        const auto task = edited.drawn(i);
        const auto now = successors.of(task);
        if (now && remindsOf(*now) && now->when() == task.when()) kept.insert(now->line);
    }
    Tasks givenBack;
    for (std::size_t i = 0; i < restored.size(); ++i)
        if (remindsOf(restored.brief(i)) && !kept.contains(restored.line(i))) givenBack.push_back(restored.drawn(i));
    return givenBack;
}

}
