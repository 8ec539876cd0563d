#pragma once

#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "Tacla/CalendarSync/MirrorPlan.h"
#include "Tacla/TaskList/TaskViews.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tacla {

// The bar at the foot of the window after a change of the file.
struct UndoBar {
    std::string text;
    bool offersUndo;
    bool operator==(const UndoBar&) const = default;
};

// Everything that the menu and the pages show: a value, so that what they decide is a function of it.
struct ModelState {
    TaskList tasks;              // every task of the file, in file order
    std::size_t unreadDates = 0; // lines whose date a carriage return hides
    Day today{1970, 1, 1};
    Instant now{}; // the last minute tick
    std::filesystem::path file;

    Connection connection = Connection::unknown;
    std::optional<SignInWait> signIn; // while it waits in the browser
    dravel::OAuthClient::Source googleClient = dravel::OAuthClient::Source::package;
    std::optional<Instant> lastSync; // end of the last successful calendar sync
    bool syncing = false;
    std::optional<std::string> syncError, fileError;
    std::optional<std::string> syncHint; // a second line for the mirror: more about syncError, or what was left out

    bool notificationsAllowed = false;
    std::optional<std::string> notificationTest; // the result of the last test notification
    bool launchAtLogin = false;
    bool calendarSync = false;
    bool onboarding = false;
    bool withoutTray = false;                    // the desktop shows no icons of programs
    std::optional<std::string> quickEntryKey;    // "" until one is chosen; nothing where the desktop keeps no keys
    std::optional<std::string> requestedSection; // a section that the window is asked to show
    std::optional<UndoBar> undoBar;              // for ten seconds

    TaskSelection late() const { return {tasks, tacla::late(tasks, now)}; }
    TaskSelection todays() const { return {tasks, tacla::todays(tasks, now)}; }
    TaskSelection upcoming(std::size_t most) const { return {tasks, tacla::upcoming(tasks, today, most)}; }
    std::size_t openCount() const { return tacla::openCount(tasks, now); }
};

}
