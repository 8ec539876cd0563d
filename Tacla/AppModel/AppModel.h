#pragma once

#include "Tacla/AppModel/LiveDocument.h"
#include "Tacla/AppModel/LoginItem.h"
#include "Tacla/CalendarSync/CalendarMirror.h"
#include "Tacla/Reminders/Reminders.h"

namespace tacla {

// The one observable state of the running application: joins the document, the mirror and the reminders. Main thread
// only.
class AppModel {
  public:
    // What the model needs from the system; everything outlives it. No notifications: there is no desktop session. A
    // passive model (off-screen rendering) reloads and parses, but neither reminds nor runs timers: it needs no
    // notifications, login item nor calendar.
    struct Ports {
        dravel::MainLoop& loop;
        dravel::Background& background;
        dravel::Background& disk; // of its own: the saves are waited for at the end
        Preferences& preferences;
        dravel::UserFolders folders;
        NotificationServer* notifications = nullptr;
        LoginItem* loginItem = nullptr;
        CalendarService* calendar = nullptr;
    };

    AppModel(Ports, std::filesystem::path file, bool passive = false); // does not read the file

    const ModelState& state() const { return state_; }
    const Moments* pendingReminders() const { return reminders_ ? &reminders_->pending() : nullptr; }
    dravel::Signal<> changed; // told once per change of the state
    // A reminder wants the window; the token lets it come to the front.
    dravel::Signal<const std::string& /* activationToken */> windowAsked;

    void start();
    void end(); // the program ends in order: what was asked for is saved, and no bubble stays behind
    void reload() { document_.read(); }
    void checkFile();                        // the two-second poll
    void wokeUp();                           // after a suspend
    void report(const std::string& message); // shown in the general status line (syncError)
    void networkBack() { tellOf(MirrorEvent::Kind::networkBack); }
    // The keyring answers again: an account that is still unknown is asked for.
    void accountStoreAppeared() { tellOf(MirrorEvent::Kind::accountStoreAppeared); }

    // Edits of the file, of a task as it was seen. One that is no longer there changes nothing.
    enum class Outcome { saved, unchanged, gone, failed };
    void toggle(const TaskItem& task) { document_.apply(UserEdit::setDone(task, !task.done, today())); }
    void setDone(const TaskItem& task) { document_.apply(UserEdit::setDone(task, true, today())); }
    void reschedule(const TaskItem& task, Day to, std::optional<Clock> time) {
        document_.apply(UserEdit::reschedule(task, to, time, today()));
    }
    void remove(const TaskItem& task) { document_.apply(UserEdit::remove(task)); }
    // `done` of a save is called as soon as the file has it, before the list is told.
    void edit(const TaskItem&, const TaskChange&, std::function<void(Outcome)> done = {});
    bool holds(const TaskItem& seen) const;      // the list, as it was read last
    TaskItem whole(const TaskItem& drawn) const; // with all of an endless title
    dravel::Background& background() const { return ports_.background; }
    // `added` gets none when the task is in the file, else why it is not.
    using Added = std::function<void(const std::optional<std::string>& whyNot)>;
    void add(const std::string& title, std::optional<Day>, std::optional<Clock>, bool strong, const Added& = {});
    void addAll(std::vector<NewTask> tasks, const Added& added) { write(UserEdit::addAll(std::move(tasks)), added); }
    void postpone(const TaskSelection& seen, Day to) {
        document_.apply(UserEdit::postpone(seen, to, today()));
    } // one edit

    void convertLineEnds() { document_.apply(UserEdit::plainLineEnds()); }
    std::vector<dravel::FileCopies::Copy> copies() const { return document_.copies(); }
    void bringBack(const std::filesystem::path& copy) { document_.bringBack(copy); }

    // Takes the last of these edits back, also after its bar is gone, as long as the file still holds what it wrote.
    void undo() { document_.undo(); }
    bool canUndo() const { return document_.state().canUndo; }

    void use(const std::filesystem::path& file) { document_.open(file, false); } // choose another file
    // with the new-file text, unless it exists
    void createAndUse(const std::filesystem::path& file) { document_.open(file, true); }

    void signIn() { tellOf(MirrorEvent::Kind::signInAsked); }
    void leaveSignIn() { tellOf(MirrorEvent::Kind::signInLeft); }
    void useGoogleClient(const std::filesystem::path& downloaded); // a failure becomes status text
    void signOut() { tellOf(MirrorEvent::Kind::signOutAsked); }
    void setCalendarSync(bool);
    void enableCalendarSync(); // after a sign-in: also forgets the last error
    void sync() { tellOf(MirrorEvent::Kind::syncDue); }

    void refreshPermissions() { permission_.refresh(); }
    // Asks the server again; `openSettings` is called when notifications are still not allowed.
    void requestNotifications(std::function<void()> openSettings) { permission_.request(std::move(openSettings)); }
    void testNotification() { permission_.test(); }

    void applyLaunchAtLogin() {
        launchAtLogin_.apply();
        tell();
    }
    void setLaunchAtLogin(bool on) {
        launchAtLogin_.choose(on);
        tell();
    }

    void beginOnboarding() { set(state_.onboarding, true); }
    void tellOfTray(bool shown) { set(state_.withoutTray, !shown); }
    void finishOnboarding(); // stores onboardingDone
    void requestSection(std::optional<std::string> section) { set(state_.requestedSection, std::move(section)); }

  private:
    Instant now() const { return ports_.loop.now(); }
    Day today() const { return Day::of(now()); }

    void tell(); // publishes what the parts say
    template <class Value>
    void set(Value& field, Value value) {
        field = std::move(value);
        tell();
    }
    void tellOf(MirrorEvent::Kind);
    void hear(LiveDocument::News);
    void openedOther();
    void write(const std::optional<UserEdit>&, const Added&);
    void store(const std::function<void()>& preference); // a failure becomes status text
    void respond(const NotificationServer::Response&);
    void act(const NotificationServer::Response&);
    void explain(const RungTask&, const NotificationServer::Response&);
    void openOnToday(const NotificationServer::Response&);

    Ports ports_;
    ModelState state_;
    LiveDocument document_;
    RenamedKeys renamed_;
    CalendarMirror mirror_;
    NotificationPermission permission_;
    LaunchAtLogin launchAtLogin_;
    std::optional<Reminders> reminders_;
    dravel::Connection answered_;
    bool isOtherList_ = false; // than the one whose tasks still show
    std::optional<dravel::RepeatingTimer> poll_, periodic_;
};

}
