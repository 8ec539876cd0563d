#pragma once

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Run/MainLoop.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/Reminders/Bubbles.h"
#include "Tacla/Reminders/NotificationServer.h"
#include "Tacla/Reminders/ReminderPlan.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tacla {

// Holds the pending reminders, and shows each at its moment through the desktop's server: a few a second, the oldest
// moment first. Without a server, what is due waits for one.
class NotificationCentre {
  public:
    struct Ledger {
        std::function<void(const std::vector<std::string>& identifiers)> showing; // told before they are shown
        std::function<void(const std::string& identifier)> refused;               // the server did not show it
    };

    NotificationCentre(dravel::MainLoop&, NotificationServer&, Bubbles&, Ledger);

    const Moments& pending() const { return pending_; }

    void put(const Reminder&); // takes the place of a pending one of the same identifier
    void remove(const std::string& identifier);
    void follow(const Successors&);

    void deliver(); // shows what is due and wakes for the rest

  private:
    struct Held {
        TaskItem task;
        std::uint64_t order; // of adding: the file's, for one moment
    };
    struct Leaving { // asked of the server, which has not answered yet
        RungTask task;
        Instant moment;
        std::uint64_t order;
    };

    void wakeForNext();
    std::vector<std::string> due() const;
    void showDue();
    void show(const std::string& identifier);
    void answered(std::uint64_t order, const NotificationServer::Error&, const BubbleHandle&);
    void refused(const Leaving&);

    dravel::MainLoop& loop_;
    NotificationServer& server_;
    Bubbles& bubbles_;
    Ledger ledger_;
    Moments pending_;
    std::map<std::string, Held> held_; // of the pending ones
    std::map<std::uint64_t, Leaving> leaving_;
    std::uint64_t added_ = 0;
    bool reachable_ = false, asking_ = false;
    dravel::Timer wake_;
    std::optional<dravel::Timer> pause_;
    std::vector<dravel::Connection> connections_;
    dravel::Lifetime life_;
};

// Keeps the notification centre in step with the task list: plans, then performs.
class Reminders {
  public:
    using Report = std::function<void(const dravel::FileError&)>; // the notified list could not be stored

    Reminders(dravel::MainLoop&, NotificationServer&, Preferences&, std::filesystem::path memoryOfBubbles, Report);

    // A button of one of our bubbles was pressed, or the bubble itself.
    dravel::Signal<const NotificationServer::Response&> answered;

    void adopt(const std::filesystem::path& list, const TaskList&); // the bubbles of an earlier process
    void follow(const Successors&);                                 // each task, wherever an edit took it
    void reconcile(const TaskList&, Instant now);
    void minutePassed(const TaskList&, Instant now); // what was refused is tried again, a free place is taken

    void skipIfPast(const TaskItem&, Instant now); // a moment that is past already never rings
    void ringAgain(const TaskItem&);               // once more, at the next turn: its button could not be obeyed

    RungTask take(const BubbleHandle&); // of an answered bubble, which is closed
    void closeAll() { bubbles_.closeAll(); }

    const Moments& pending() const { return centre_.pending(); }

  private:
    void store(const std::function<void(Notified&)>& change);
    void catchUpStoring();

    NotificationServer& server_;
    Preferences& preferences_;
    Report report_;
    Bubbles bubbles_;
    NotificationCentre centre_;
    Notified notified_; // as it was last read or written here, and what could not be stored yet
    dravel::Connection responded_;
    bool full_ = false;
    dravel::Lifetime life_;
};

}
