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
    void end();       // the program ends in order: what was asked for is saved, and no bubble stays behind
    void checkFile(); // the two-second poll
    void wokeUp();    // after a suspend
    void store(const std::function<void()>& preference); // a failure becomes status text
    void report(const std::string& message) { mirror_.tell({MirrorEvent::Kind::reported, message}); } // as syncError

    // What it joins, for those who ask something of it. Each change of theirs is published here.
    LiveDocument& list() { return list_; }
    CalendarMirror& mirror() { return mirror_; }
    NotificationPermission& permission() { return permission_; }
    LaunchAtLogin& login() { return login_; }
    dravel::Background& background() const { return ports_.background; }

    void beginOnboarding() { set(state_.onboarding, true); }
    void tellOfTray(bool shown) { set(state_.withoutTray, !shown); }
    void tellOfQuickEntryKey(const std::optional<std::string>& key) { set(state_.quickEntryKey, key); }
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
    void hear(LiveDocument::News);
    void openedOther();
    void respond(const NotificationServer::Response&);
    void act(const NotificationServer::Response&);
    void explain(const RungTask&, const NotificationServer::Response&);
    void openOnToday(const NotificationServer::Response&);

    Ports ports_;
    ModelState state_;
    LiveDocument list_;
    RenamedKeys renamed_;
    CalendarMirror mirror_;
    NotificationPermission permission_;
    LaunchAtLogin login_;
    std::optional<Reminders> reminders_;
    dravel::Connection answered_;
    bool isOtherList_ = false; // than the one whose tasks still show
    std::optional<dravel::RepeatingTimer> poll_, periodic_;
};

}
