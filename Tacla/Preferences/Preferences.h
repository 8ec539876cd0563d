#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/UserFolders.h"

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tacla {

// <config>/fr.dravel.Tacla/preferences.json
std::filesystem::path preferencesFile(const dravel::UserFolders&);

// One JSON object in a file that several processes share. Keys that we do not know survive every change.
class SettingsFile {
  public:
    using Report = std::function<void(const std::string& message)>; // French, for the user

    SettingsFile(std::filesystem::path file, std::filesystem::path lockFolder, Report report);

    // Empty when there is no file. A damaged file is moved to "….broken" and reported; what this process knew of it is
    // written back, and so is read. One that cannot be read is reported, once.
    nlohmann::json read() const;
    void check() const; // the same, unless one stat tells that nothing has changed
    // For what must not take lost settings for empty ones: throws dravel::FileError where `read` would report.
    nlohmann::json readOrThrow() const;

    // Reads, changes and saves under one lock; writes nothing when nothing changed. Throws dravel::FileError.
    void change(const std::function<void(nlohmann::json& object)>&);

  private:
    void setAsideIfDamaged() const;
    std::optional<nlohmann::json> settingsThere() const;

    std::filesystem::path file_, lockFolder_;
    Report report_;
    mutable std::recursive_mutex using_; // background jobs ask as well; guards what follows
    mutable bool reported_ = false;
    mutable std::string known_; // the last good text
    mutable std::optional<dravel::SafeFile::Modified> seen_;
};

// What a settings file says; none when it is damaged. A number beyond all bounds counts as the greatest one.
std::optional<nlohmann::json> parsedSettings(std::string_view utf8);

// The settings that the application and the terminal share: one JSON object in a file, read at each question, written
// one key at a time under a lock, so that two processes never lose each other's keys. A value of another type than its
// key's counts as absent. A damaged file is kept aside as "preferences.json.broken" and reported; what was known goes
// on. Setters throw dravel::FileError.
class Preferences {
  public:
    using Report = SettingsFile::Report;

    Preferences(std::filesystem::path file, std::filesystem::path lockFolder, Report report = {});

    void check() const { file_.check(); } // so that damage is told, and mended, at once

    std::optional<std::string> taskFilePath() const;
    bool calendarSync() const; // when absent: whether there is a calendarID
    std::optional<std::string> calendarID() const;
    bool calendarCreatedByTacla() const;
    struct Calendar {
        std::string id;
        bool createdByTacla = false;
    };
    std::optional<Calendar> calendar() const; // throws dravel::FileError when the settings are lost
    // How far a calendar is whose identifier is not known: asked for, and perhaps made; or the user was told so.
    enum class Making { none, asked, told };
    Making calendarMaking() const;
    std::vector<std::string> notifiedTasks() const;
    std::optional<bool> wantsLaunchAtLogin() const;
    bool onboardingDone() const;
    bool launchedOnce() const;
    bool quickEntryKey() const; // whether the user chose one where the desktop keeps it
    struct Size {
        int width, height;
    };
    std::optional<Size> windowSize() const;
    struct Position {
        int x, y;
        bool operator==(const Position&) const = default;
    };
    std::optional<Position> windowPosition() const; // of its frame

    void setTaskFilePath(const std::string&);
    void setCalendarSync(bool); // on: who was told of a calendar in the making has seen to it
    void setCalendar(const std::string& identifier, bool createdByTacla); // all at once, synced to disk; it is made
    void setCalendarMaking(Making);
    void setWantsLaunchAtLogin(bool);
    void setOnboardingDone(bool);
    void setQuickEntryKey(bool);
    void setWindow(Size, std::optional<Position>); // no position: the one before stays

    // Read, changed and written under one lock.
    using Notified = std::vector<std::string>;
    void updateNotifiedTasks(const std::function<Notified(Notified)>&);

  private:
    SettingsFile file_;
};

}
