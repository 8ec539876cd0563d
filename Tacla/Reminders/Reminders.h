#pragma once

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Run/MainLoop.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/Reminders/NotificationServer.h"
#include "Tacla/Reminders/ReminderPlan.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tacla {

// Holds the pending requests, and shows each at its moment through the desktop's server: several that are due together
// in the order of their moments. What was shown is never shown again. Without a server, what is due waits for one.
class NotificationCentre {
  public:
    struct Ledger {
        std::function<void(const std::vector<std::string>& identifiers)> showing; // told before they are shown
        std::function<void(const std::string& identifier)> refused;               // the server did not show it
    };

    NotificationCentre(dravel::MainLoop&, NotificationServer&, Ledger);

    const ReminderRecord& record() const { return record_; }

    void add(NotificationRequest); // with a moment; takes the place of a pending one of the same identifier
    void remove(const std::string& identifier);
    void rekey(const std::map<std::string, std::string>& keys); // what was shown under an old key

    void deliver(); // shows what is due and wakes for the rest

  private:
    struct Held {
        NotificationRequest request;
        std::uint64_t order; // of adding: the file's, for one moment
    };

    void wakeForNext();
    std::vector<std::string> due() const;
    void showDue();
    void refused(const Held&);

    dravel::MainLoop& loop_;
    NotificationServer& server_;
    Ledger ledger_;
    ReminderRecord record_; // pending: the moments of held_
    std::map<std::string, Held> held_;
    std::uint64_t added_ = 0;
    bool reachable_ = false, asking_ = false;
    dravel::Timer wake_;
    dravel::Connection serverChanged_;
    dravel::Lifetime life_;
};

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
