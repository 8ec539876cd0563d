#pragma once

#include "DravelKit/Foundation/UserFolders.h"

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tacla {

// <config>/fr.dravel.Tacla/preferences.json
std::filesystem::path preferencesFile(const dravel::UserFolders&);

// One JSON object in a file that several processes share. Keys that we do not know survive every change.
class SettingsFile {
  public:
    using Report = std::function<void(const std::string& message)>; // French, for the user

    SettingsFile(std::filesystem::path file, std::filesystem::path lockFolder, Report report);

    // Empty when there is no file. A damaged file is moved to "….broken" and reported, and so is read as empty; one
    // that cannot be read is reported, once.
    nlohmann::json read() const;
    // For what must not take lost settings for empty ones: throws dravel::FileError where `read` would report.
    nlohmann::json readOrThrow() const;

    // Reads, changes and saves under one lock; writes nothing when nothing changed. Throws dravel::FileError.
    void change(const std::function<void(nlohmann::json& object)>&);

    void proveWritable(); // by writing a blank line; throws dravel::FileError

  private:
    void editText(const std::function<std::optional<std::string>(std::string_view text)>&);
    void setAsideIfDamaged() const;

    std::filesystem::path file_, lockFolder_;
    Report report_;
    mutable bool reported_ = false;
};

// The settings that the application and the terminal share: one JSON object in a file, read at each question, written
// one key at a time under a lock, so that two processes never lose each other's keys. A value of another type than its
// key's counts as absent. A damaged file is kept aside as "preferences.json.broken", reported once, and read as empty.
// Setters throw dravel::FileError.
class Preferences {
  public:
    using Report = SettingsFile::Report;

    Preferences(std::filesystem::path file, std::filesystem::path lockFolder, Report report = {});

    std::optional<std::string> taskFilePath() const;
    bool calendarSync() const; // when absent: whether there is a calendarID
    std::optional<std::string> calendarID() const;
    bool calendarCreatedByTacla() const;
    struct Calendar {
        std::string id;
        bool createdByTacla = false;
    };
    std::optional<Calendar> calendar() const; // throws dravel::FileError when the settings are lost
    void proveWritable() { file_.proveWritable(); }
    std::vector<std::string> notifiedTasks() const;
    std::optional<bool> wantsLaunchAtLogin() const;
    bool onboardingDone() const;
    bool launchedOnce() const;
    struct Size {
        int width, height;
    };
    std::optional<Size> windowSize() const;

    void setTaskFilePath(const std::string&);
    void setCalendarSync(bool);
    void setCalendar(const std::string& identifier, bool createdByTacla); // both keys at once, synced to disk
    void setWantsLaunchAtLogin(bool);
    void setOnboardingDone(bool);
    void setWindowSize(Size);

    // Read, changed and written under one lock.
    using Notified = std::vector<std::string>;
    void updateNotifiedTasks(const std::function<Notified(Notified)>&);

  private:
    SettingsFile file_;
};

}
