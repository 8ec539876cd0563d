#include "Tacla/Preferences/Preferences.h"

#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <utility>

namespace tacla {

namespace {

using dravel::FileError;
using nlohmann::json;

// None when the text is no JSON object. An empty file is what a crash of the system can leave of a new one: no
// settings.
std::optional<json> parsed(std::string_view text) {
    if (dravel::trimmedOfWhiteSpaceAndLineBreaks(text).empty()) return json::object();
    auto value = json::parse(text, nullptr, false);
    if (!value.is_object()) return {};
    return value;
}

// None when the file is damaged; other failures are thrown.
std::optional<json> settingsIn(const std::filesystem::path& file) {
    try {
        return parsed(dravel::SafeFile::readText(file));
    } catch (const FileError& error) {
        if (error.kind == FileError::Kind::notUtf8) return {};
        if (error.kind == FileError::Kind::system && error.code == ENOENT) return json::object();
        throw;
    }
}

// The value of a key, null where there is none: null is no value of any type here.
json at(const json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? json() : *found;
}

std::optional<std::string> text(const json& value) {
    if (!value.is_string()) return {};
    return value.get<std::string>();
}

std::optional<bool> flag(const json& value) {
    if (!value.is_boolean()) return {};
    return value.get<bool>();
}

std::vector<std::string> texts(const json& value) {
    if (!value.is_array() || !std::ranges::all_of(value, [](const json& one) { return one.is_string(); })) return {};
    return value.get<std::vector<std::string>>();
}

std::optional<int> length(const json& value) {
    if (!value.is_number_integer() || value <= 0 || value > std::numeric_limits<std::int16_t>::max()) return {};
    return value.get<int>();
}

}

SettingsFile::SettingsFile(std::filesystem::path file, std::filesystem::path lockFolder, Report report)
    : file_(std::move(file)), lockFolder_(std::move(lockFolder)), report_(std::move(report)) {}

json SettingsFile::read() const {
    try {
        if (auto settings = settingsIn(file_)) return std::move(*settings);
        setAsideIfDamaged();
    } catch (const FileError& error) {
        if (report_ && !std::exchange(reported_, true))
            report_("réglages illisibles (" + file_.string() + ") : " + error.description());
    }
    return json::object();
}

json SettingsFile::readOrThrow() const {
    if (auto settings = settingsIn(file_)) return std::move(*settings);
    setAsideIfDamaged();
    throw FileError(FileError::Kind::system, file_, EBADMSG);
}

// Looks again under the lock: another process may have put good settings there meanwhile.
void SettingsFile::setAsideIfDamaged() const {
    const auto aside = file_.string() + ".broken";
    const auto isDamaged = [this] { return !settingsIn(file_); };
    if (dravel::SafeFile::moveAside(file_, aside, isDamaged, lockFolder_) && report_)
        report_("réglages endommagés, mis de côté dans " + aside);
}

void SettingsFile::change(const std::function<void(json&)>& change) {
    editText([&](std::string_view text) -> std::optional<std::string> {
        const auto before = parsed(text);
        if (!before) throw FileError(FileError::Kind::changed, file_);
        auto after = *before;
        change(after);
        if (after == *before) return {};
        try {
            return after.dump(2) + "\n";
        } catch (const json::type_error&) { // a path or an identifier in another encoding
            throw FileError(FileError::Kind::notUtf8, file_);
        }
    });
}

void SettingsFile::proveWritable() {
    editText([](std::string_view text) -> std::optional<std::string> {
        return text.ends_with("\n\n") ? std::string(text.substr(0, text.size() - 1)) : std::string(text) + "\n";
    });
}

void SettingsFile::editText(const std::function<std::optional<std::string>(std::string_view text)>& edit) {
    if (!settingsIn(file_)) setAsideIfDamaged();
    dravel::SafeFile::editOwn(file_, edit, lockFolder_);
}

std::filesystem::path preferencesFile(const dravel::UserFolders& folders) {
    return folders.config / "fr.dravel.Tacla" / "preferences.json";
}

Preferences::Preferences(std::filesystem::path file, std::filesystem::path lockFolder, Report report)
    : file_(std::move(file), std::move(lockFolder), std::move(report)) {}

std::optional<std::string> Preferences::taskFilePath() const { return text(at(file_.read(), "taskFilePath")); }

bool Preferences::calendarSync() const {
    const auto settings = file_.read();
    return flag(at(settings, "calendarSync")).value_or(text(at(settings, "calendarID")).has_value());
}

std::optional<std::string> Preferences::calendarID() const { return text(at(file_.read(), "calendarID")); }

bool Preferences::calendarCreatedByTacla() const {
    return flag(at(file_.read(), "calendarCreatedByTacla")).value_or(false);
}

std::optional<Preferences::Calendar> Preferences::calendar() const {
    const auto settings = file_.readOrThrow();
    auto id = text(at(settings, "calendarID"));
    if (!id) return {};
    return Calendar{std::move(*id), flag(at(settings, "calendarCreatedByTacla")).value_or(false)};
}

std::vector<std::string> Preferences::notifiedTasks() const { return texts(at(file_.read(), "notifiedTasks")); }

std::optional<bool> Preferences::wantsLaunchAtLogin() const { return flag(at(file_.read(), "wantsLaunchAtLogin")); }

bool Preferences::onboardingDone() const { return flag(at(file_.read(), "onboardingDone")).value_or(false); }

bool Preferences::launchedOnce() const { return flag(at(file_.read(), "launchedOnce")).value_or(false); }

std::optional<Preferences::Size> Preferences::windowSize() const {
    const auto size = at(file_.read(), "windowSize");
    if (!size.is_array() || size.size() != 2) return {};
    const auto width = length(size[0]), height = length(size[1]);
    if (!width || !height) return {};
    return Size{*width, *height};
}

void Preferences::setTaskFilePath(const std::string& path) {
    file_.change([&](json& settings) { settings["taskFilePath"] = path; });
}

void Preferences::setCalendarSync(bool on) {
    file_.change([&](json& settings) { settings["calendarSync"] = on; });
}

void Preferences::setCalendar(const std::string& identifier, bool createdByTacla) {
    file_.change([&](json& settings) {
        settings["calendarID"] = identifier;
        settings["calendarCreatedByTacla"] = createdByTacla;
    });
}

void Preferences::setWantsLaunchAtLogin(bool wanted) {
    file_.change([&](json& settings) { settings["wantsLaunchAtLogin"] = wanted; });
}

void Preferences::setOnboardingDone(bool done) {
    file_.change([&](json& settings) { settings["onboardingDone"] = done; });
}

void Preferences::setWindowSize(Size size) {
    file_.change([&](json& settings) { settings["windowSize"] = {size.width, size.height}; });
}

void Preferences::updateNotifiedTasks(const std::function<Notified(Notified)>& update) {
    file_.change([&](json& settings) {
        const auto before = texts(at(settings, "notifiedTasks"));
        if (auto after = update(before); after != before) settings["notifiedTasks"] = std::move(after);
    });
}

}
