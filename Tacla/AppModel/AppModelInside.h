#pragma once

#include "DravelKit/Run/MainLoop.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/AppModel/RenamedKeys.h"
#include "Tacla/AppModel/TaskFileBinding.h"
#include "Tacla/Reminders/Reminders.h"

#include <functional>
#include <optional>

namespace tacla {

// What the operations of the model share.
struct AppModel::Inside {
    Inside(AppModel&, World, std::filesystem::path file, bool passive);

    AppModel& model;
    World world;
    bool passive;
    TaskFileBinding file;
    ModelState state;
    RenamedKeys renamed;
    std::optional<Reminders> reminders;

    std::optional<dravel::SafeFile::Change> lastChange; // what undo takes back
    dravel::Timer undoBarEnd;

    dravel::Timer pendingSync; // at most one sync is scheduled
    std::optional<dravel::RepeatingTimer> poll, periodic;
    bool askingAccount = false;
    dravel::Connection serverChanged;
    dravel::Lifetime life;

    Instant now() const { return world.loop.now(); }
    Day today() const { return Day::of(now()); }

    void refresh(); // reload, without telling the observers
    void everyPeriod();
    bool createIfMissing();
    std::optional<TaskItem> find(const std::string& key) const;
    // What the edit changed; none when there was nothing to change, or it failed, which the status then says.
    std::optional<dravel::SafeFile::Change> write(const dravel::SafeFile::Edit&);
    void written();
    // `what` is said in the bar that offers to undo it; what is plain to see is not said.
    void mutate(std::optional<std::string> what, const dravel::SafeFile::Edit&,
                const std::function<void(const dravel::SafeFile::Change&)>& then = {});
    void follow(const std::map<std::string, std::string>& renamedKeys);
    void show(std::optional<UndoBar>);
    void forgetLastChange();
    bool store(const std::function<void()>& preference); // a failure becomes status text

    void scheduleSync(std::chrono::milliseconds);
    void askAccount();
    void mirror(bool on); // stores and sets calendarSync
};

// Names the file that was meant: the error may be of a temporary beside it.
std::string writeFailure(const std::filesystem::path&, const dravel::FileError&);

}
