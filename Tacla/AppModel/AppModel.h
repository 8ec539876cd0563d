#pragma once

#include "DravelKit/Foundation/Signal.h"
#include "DravelKit/Foundation/UserFolders.h"
#include "DravelKit/Run/Background.h"
#include "DravelKit/Run/MainLoop.h"
#include "Tacla/AppModel/CalendarService.h"
#include "Tacla/AppModel/LoginItem.h"
#include "Tacla/AppModel/ModelState.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/Reminders/NotificationServer.h"

#include <memory>
#include <optional>
#include <string>

namespace tacla {

struct ReminderRecord;

// The one observable state of the running application, bound to one task file. Main thread only.
class AppModel {
  public:
    // What the model needs from the world; everything outlives it. No notifications: there is no desktop session. A
    // passive model (off-screen rendering) reloads and parses, but neither reminds nor runs timers: it needs no
    // notifications, login item nor calendar.
    struct World {
        dravel::MainLoop& loop;
        dravel::Background& background;
        Preferences& preferences;
        dravel::UserFolders folders;
        NotificationServer* notifications = nullptr;
        LoginItem* loginItem = nullptr;
        CalendarService* calendar = nullptr;
    };

    AppModel(World, std::filesystem::path file, bool passive = false); // does not read the file
    ~AppModel();

    const ModelState& state() const;
    const ReminderRecord* reminders() const; // none without notifications
    dravel::Signal<> changed;                // told once per change of the state

    void start();
    void reload();
    void checkFile();                        // the two-second poll
    void wokeUp();                           // after a suspend
    void accountStoreAppeared();             // the keyring answers again: an account that is still unknown is asked for
    void report(const std::string& message); // shown in the general status line (syncError)

    // Edits of the file. A task that is no longer there changes nothing.
    void toggle(const TaskItem&);
    void setDone(const std::string& key);
    void reschedule(const TaskItem&, Day to, std::optional<Clock>);
    void reschedule(const std::string& key, Day to); // keeps its time
    void edit(const TaskItem&, const std::string& title, std::optional<Day>, std::optional<Clock>);
    void remove(const TaskItem&);
    void add(const std::string& title, std::optional<Day>, std::optional<Clock>, bool strong);

    // Takes the last of these edits back, also after its bar is gone, as long as the file still holds what it wrote.
    void undo();
    bool canUndo() const; // there is such an edit; whether the file still holds it is known when it is undone

    void use(const std::filesystem::path&);          // choose another file
    void createAndUse(const std::filesystem::path&); // with the new-file text, unless it exists

    void signIn();
    void signOut();
    void setCalendarSync(bool);
    void enableCalendarSync(); // after a sign-in: also forgets the last error
    void sync();

    void refreshPermissions();
    // Asks the server again; `openSettings` is called when notifications are still not allowed.
    void requestNotifications(std::function<void()> openSettings);
    void testNotification();

    void applyLaunchAtLogin();
    void setLaunchAtLogin(bool);

    void beginOnboarding();
    void finishOnboarding(); // stores onboardingDone
    void requestSection(std::optional<std::string>);

  private:
    struct Inside;
    std::unique_ptr<Inside> inside_;
};

}
