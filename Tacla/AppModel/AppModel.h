#pragma once

#include "DravelKit/Run/MainLoop.h"
#include "Tacla/AppModel/LoginItem.h"
#include "Tacla/AppModel/ModelState.h"
#include "Tacla/CalendarSync/CalendarMirror.h"
#include "Tacla/Reminders/Reminders.h"
#include "Tacla/TaskDocument/TaskDocument.h"

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
    void end(); // the program ends in order: no bubble stays behind
    void reload();
    void checkFile();                        // the two-second poll
    void wokeUp();                           // after a suspend
    void report(const std::string& message); // shown in the general status line (syncError)
    void networkBack() { tellOf(MirrorEvent::Kind::networkBack); }
    // The keyring answers again: an account that is still unknown is asked for.
    void accountStoreAppeared() { tellOf(MirrorEvent::Kind::accountStoreAppeared); }

    // Edits of the file, of a task as it was seen. One that is no longer there changes nothing.
    enum class Outcome { saved, unchanged, gone, failed };
    void toggle(const TaskItem& task) { apply(UserEdit::setDone(task, !task.done, today())); }
    void setDone(const TaskItem& task) { apply(UserEdit::setDone(task, true, today())); }
    void reschedule(const TaskItem& task, Day to, std::optional<Clock> time) {
        apply(UserEdit::reschedule(task, to, time, today()));
    }
    // `saved` is called as soon as the file has it, before the list is read again.
    Outcome edit(const TaskItem&, const TaskChange&, const std::function<void()>& saved = {});
    bool holds(const TaskItem& seen) const; // the list, as it was read last
    void remove(const TaskItem& task) { apply(UserEdit::remove(task)); }
    // None when the task is in the file, else why it is not.
    std::optional<std::string> add(const std::string& title, std::optional<Day>, std::optional<Clock>, bool strong);
    std::optional<std::string> addAll(std::vector<NewTask> tasks) {
        return written(UserEdit::addAll(std::move(tasks)));
    }
    void postpone(const Tasks& seen, Day to) { apply(UserEdit::postpone(seen, to, today())); } // one edit

    void convertLineEnds() { apply(UserEdit::plainLineEnds()); }
    std::vector<dravel::FileCopies::Copy> copies() const { return document_.copies(); }
    void bringBack(const std::filesystem::path& copy);

    // Takes the last of these edits back, also after its bar is gone, as long as the file still holds what it wrote.
    void undo();
    bool canUndo() const { return document_.canUndo(); } // whether the file still holds it is known when it is undone

    void use(const std::filesystem::path&);          // choose another file
    void createAndUse(const std::filesystem::path&); // with the new-file text, unless it exists

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

    void applyLaunchAtLogin();
    void setLaunchAtLogin(bool);

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
    void refresh(const Tasks& silenced = {}); // reload, without telling; those never ring if they are past
    void reloadIfStale() {
        if (document_.isStale(document_.onDisk())) reload();
    }
    // False, and the file's status says why, when the deed fails.
    bool attempt(std::string_view deed, const std::filesystem::path&, const std::function<void()>& act);
    bool create(const std::filesystem::path& file) {
        return attempt("de créer", file, [&] { TaskDocument::createIfMissing(file); });
    }
    void store(const std::function<void()>& preference);                // a failure becomes status text
    std::optional<std::string> written(const std::optional<UserEdit>&); // none, or why it is not
    Outcome apply(const UserEdit&, const std::function<void()>& saved = {});
    Tasks retitled(const TaskDocument::Change&, std::string key); // what may ring under its new title
    void wrote(const Tasks& silenced);
    void show(std::optional<UndoBar>);
    void respond(const NotificationServer::Response&);
    bool perform(NotificationServer::Action, const TaskItem&); // of a reminder's button

    Ports ports_;
    ModelState state_;
    Instant failed_{};           // since when there is a fileError
    Instant writeFailureSaid_{}; // until then no reload takes it away
    TaskDocument document_;
    CalendarMirror mirror_;
    NotificationPermission permission_;
    std::optional<Reminders> reminders_;
    dravel::Connection answered_;
    bool isOtherList_ = false; // than the one whose tasks still show
    dravel::Timer undoBarEnd_;
    std::optional<dravel::RepeatingTimer> poll_, periodic_;
};

}
