#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "Tacla/Reminders/NotificationServer.h"
#include "Tacla/TaskList/TaskViews.h"

#include <map>
#include <string>
#include <vector>

namespace tacla {

// At most so many reminders wait for their moment at a time: the first ones of the file.
inline constexpr std::size_t pendingLimit = 60;

// "3f2a9c0d11e4b7a2@2025-03-04 14:30": another day or time is another reminder.
std::string reminderIdentifier(const TaskItem&);

// What a task's reminder says: "Prévue à 14:30 · prioritaire · due le 04/03", and after its day "Prévue le 05/03 à
// 14:30".
NotificationContent reminderContent(const TaskItem&, Day today);

struct Reminder {
    std::string identifier;
    TaskItem task;
    Instant moment;
};

using Moments = std::map<std::string, Instant>; // of the pending reminders, by their identifiers
using Notified = std::vector<std::string>;      // identifiers of those that rang, or must never be caught up

// What must change so that the pending requests match the task list.
struct ReminderPlan {
    std::vector<std::string> stale;   // pending identifiers to remove
    std::vector<Reminder> schedule;   // to add, each at its moment
    std::vector<Reminder> catchUp;    // to show at once
    std::vector<Reminder> unchanged;  // pending already; the task may read differently by now
    std::vector<std::string> expired; // entries of the notified list to drop: too old, or of a moment yet to come
    bool full = false;                // the limit is reached: others may wait for their turn
};

// The notified list silences catch-ups only, never a moment to come. A reminder that fell due and is not shown yet
// stays for as long as its task is open.
ReminderPlan planReminders(const TaskList&, const Moments& pending, const Notified&, Instant now);

// The open tasks whose reminder the change had ended, or moved: they ring again once it is undone.
Tasks remindersGivenBack(const dravel::SafeFile::Change&);

}
