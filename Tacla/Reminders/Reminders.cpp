#include "Tacla/Reminders/Reminders.h"

#include "Tacla/Preferences/NotifiedTasks.h"
#include "Tacla/Reminders/ReminderContent.h"

#include <algorithm>
#include <utility>

namespace tacla {

namespace {

using Notified = Preferences::Notified;

Notified with(Notified list, const std::vector<std::string>& identifiers) {
    for (const auto& identifier : identifiers) {
        if (std::ranges::find(list, identifier) == list.end()) list.push_back(identifier);
    }
    return list;
}

Notified without(Notified list, const std::vector<std::string>& identifiers) {
    std::erase_if(list, [&identifiers](const std::string& entry) {
        return std::ranges::find(identifiers, entry) != identifiers.end();
    });
    return list;
}

NotificationRequest request(const Reminder& reminder) {
    return {reminder.identifier, reminderContent(reminder.task), reminder.moment};
}

}

Reminders::Reminders(dravel::MainLoop& loop, NotificationServer& server, Preferences& preferences, Report report)
    : preferences_(preferences), report_(std::move(report)),
      centre_(loop, server,
              {.showing =
                   [this](const std::vector<std::string>& identifiers) {
                       store([&](Notified list) { return with(std::move(list), identifiers); });
                   },
               .refused =
                   [this](const std::string& identifier) {
                       store([&](Notified list) { return without(std::move(list), {identifier}); });
                   }}) {}

void Reminders::reconcile(const Tasks& tasks, Instant now) {
    catchUpStoring();
    const auto plan = planReminders(tasks, centre_.record(), preferences_.notifiedTasks(), now);
    for (const auto& identifier : plan.stale) centre_.remove(identifier);
    for (const auto& reminder : plan.schedule) centre_.add(request(reminder));
    for (const auto& reminder : plan.catchUp) centre_.add(request(reminder));
    if (!plan.expired.empty()) store([&](Notified list) { return without(std::move(list), plan.expired); });
    full_ = plan.full;
    centre_.deliver();
}

void Reminders::minutePassed(const Tasks& tasks, Instant now) {
    if (full_) return reconcile(tasks, now);
    catchUpStoring();
    centre_.deliver();
}

void Reminders::skipIfPast(const TaskItem& task, Instant now) {
    const auto moment = task.at();
    if (!moment || *moment > now) return;
    store([&](Notified list) { return with(std::move(list), {reminderIdentifier(task)}); });
}

void Reminders::rekey(const std::map<std::string, std::string>& keys) {
    centre_.rekey(keys);
    store([&](const Notified& list) { return NotifiedTasks::rekeyed(list, keys); });
}

void Reminders::store(const std::function<Notified(Notified)>& change) {
    const auto& shown = record().shown;
    try {
        preferences_.updateNotifiedTasks([&](Notified list) {
            if (behind_) list = with(std::move(list), {shown.begin(), shown.end()});
            return change(std::move(list));
        });
        behind_ = false;
    } catch (const dravel::FileError& error) {
        behind_ = true;
        report_(error);
    }
}

// Else the next start would show it all again.
void Reminders::catchUpStoring() {
    if (behind_) store([](Notified list) { return list; });
}

}
