#pragma once

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/Reminders/NotificationCentre.h"

#include <functional>
#include <map>
#include <string>

namespace tacla {

// Keeps the notification centre in step with the task list: plans, then performs.
class Reminders {
  public:
    using Report = std::function<void(const dravel::FileError&)>; // the notified list could not be stored

    Reminders(dravel::MainLoop&, NotificationServer&, Preferences&, Report);

    void reconcile(const Tasks&, Instant now);
    void minutePassed(const Tasks&, Instant now); // what was refused is tried again, a free place is taken

    void skipIfPast(const TaskItem&, Instant now); // a moment that is past already never rings
    void rekey(const std::map<std::string, std::string>& keys);

    const ReminderRecord& record() const { return centre_.record(); }

  private:
    void store(const std::function<Preferences::Notified(Preferences::Notified)>&);
    void catchUpStoring();

    Preferences& preferences_;
    Report report_;
    NotificationCentre centre_;
    bool full_ = false;
    bool behind_ = false; // what was shown could not be stored yet
};

}
