#pragma once

#include "Tacla/Reminders/NotificationServer.h"
#include "Tacla/TaskList/Successors.h"

#include <filesystem>
#include <map>
#include <optional>

namespace tacla {

// A task for which a reminder rang: as it read then, and where it is now.
struct RungTask {
    TaskItem shown;
    std::optional<TaskItem> now = shown; // none once it is gone, or cannot be told for sure

    bool hasEnded() const { return !now || now->done || now->when() != shown.when(); }
    void follow(const Successors&);
};

// The reminders on the screen. Each belongs to the task for which it was shown, wherever that went, and is withdrawn
// when that is checked, moved or gone. They are remembered in a file of the session: a bubble that outlives this
// process is answered by the next one.
class Bubbles {
  public:
    Bubbles(NotificationServer&, std::filesystem::path memory);

    // Takes over those of an earlier process for this list; withdraws those whose task is not just as it was.
    void adopt(const std::filesystem::path& list, const TaskList&);
    void add(const BubbleHandle&, RungTask);
    void follow(const Successors&);

    const RungTask* find(const BubbleHandle&) const;
    Tasks tasks() const;                                                 // of those on the screen
    std::optional<BubbleHandle> of(const std::string& identifier) const; // the one that is up for that reminder
    void remove(const BubbleHandle&);                                    // closes it
    void closeAll();

  private:
    void withdrawEnded();
    void forgetOtherServers();
    void forget(const BubbleHandle&);
    void remember() const;

    NotificationServer& server_;
    std::filesystem::path memory_, list_;
    std::map<BubbleHandle, RungTask> up_;
    std::map<BubbleHandle, RungTask> leaving_; // withdrawn: a button may have been pressed just before
    dravel::Connection closed_, serverChanged_;
    dravel::Lifetime life_;
};

}
