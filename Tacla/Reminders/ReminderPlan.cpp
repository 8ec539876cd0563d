#include "Tacla/Reminders/ReminderPlan.h"

#include "Tacla/TaskList/Labels.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
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

class Planner {
  public:
    Planner(const ReminderRecord& record, const std::vector<std::string>& notified, Instant now)
        : record_(record), notified_(notified.begin(), notified.end()), now_(now) {
        for (const auto& [identifier, moment] : record.pending) pendingKeys_.insert(keyOf(identifier));
        const auto oldest = today_.plusDays(-daysRemembered).description();
        std::ranges::copy_if(notified, std::back_inserter(plan_.expired),
                             [&oldest](const std::string& entry) { return whenOf(entry) < oldest; });
    }

    void take(const TaskItem& task) {
        if (!remindsOf(task) || !matters(task)) return;
        const auto moment = *task.at();
        const bool due = moment <= now_;
        if (!due && wanted_ == pendingLimit) return;
        auto identifier = reminderIdentifier(task);
        const auto pending = record_.pending.find(identifier);
        const bool isPending = pending != record_.pending.end();
        if (due && task.day != today_ && !isPending) return;
        if (silenced(identifier) || !kept_.insert(identifier).second) return;
        if (!due) ++wanted_;
        if (isPending && (pending->second == moment || (due && pending->second <= now_))) return;
        auto& list = due ? plan_.catchUp : plan_.schedule;
        list.push_back({std::move(identifier), task, moment});
    }

    ReminderPlan finish() {
        for (const auto& [identifier, moment] : record_.pending) {
            if (!kept_.contains(identifier)) plan_.stale.push_back(identifier);
        }
        plan_.full = wanted_ == pendingLimit;
        return std::move(plan_);
    }

  private:
    bool silenced(const std::string& identifier) const {
        return notified_.contains(identifier) || record_.shown.contains(identifier);
    }

    // Spares the others, most of a long list, the reckoning of their moment.
    bool matters(const TaskItem& task) const {
        if (task.day == today_) return true;
        if (*task.day > longPast_ && wanted_ < pendingLimit) return true;
        return pendingKeys_.contains(task.key);
    }

    const ReminderRecord& record_;
    Views notified_, pendingKeys_;
    Instant now_;
    Day today_ = Day::of(now_), longPast_ = today_.plusDays(-daysOfRollOver);
    std::set<std::string> kept_; // identifiers that stay or become pending
    std::size_t wanted_ = 0;
    ReminderPlan plan_;
};

}

std::string reminderIdentifier(const TaskItem& task) { return task.key + "@" + task.when(); }

NotificationContent reminderContent(const TaskItem& task) {
    std::string body = task.time ? "Prévue à " + task.time->description() : "Prévue aujourd'hui";
    if (task.strong()) body += " · prioritaire";
    if (task.due) body += " · due le " + dayAndMonth(*task.due);
    return {.title = TaskFile::dropStrongMark(task.title), .body = std::move(body), .key = task.key};
}

ReminderPlan planReminders(const Tasks& tasks, const ReminderRecord& record, const std::vector<std::string>& notified,
                           Instant now) {
    Planner planner(record, notified, now);
    for (const auto& task : tasks) planner.take(task);
    return planner.finish();
}

Tasks remindersGivenBack(const dravel::SafeFile::Change& change) {
    std::set<std::string> kept;
    for (const auto& task : TaskFile::parse(change.after)) {
        if (remindsOf(task)) kept.insert(reminderIdentifier(task));
    }
    auto tasks = TaskFile::parse(change.before);
    std::erase_if(tasks,
                  [&](const TaskItem& task) { return !remindsOf(task) || kept.contains(reminderIdentifier(task)); });
    return tasks;
}

}
