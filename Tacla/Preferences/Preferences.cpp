#include "Tacla/Preferences/Preferences.h"

#include "DravelKit/Foundation/Json.h"
#include "DravelKit/Foundation/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

namespace tacla {

namespace {

using dravel::FileError;
using dravel::jsonFlag;
using dravel::jsonMember;
using dravel::jsonString;
using nlohmann::json;

// Of Preferences::Making.
constexpr auto makingKey = "calendarMaking", asked = "asked", told = "told";

bool isBlank(std::string_view text) { return dravel::trimmedOfWhiteSpaceAndLineBreaks(text).empty(); }

// Behind the string that begins there.
std::size_t endOfString(std::string_view text, std::size_t begin) {
    for (auto at = begin + 1; at < text.size(); ++at) {
        if (text[at] == '"') return at + 1;
        if (text[at] == '\\') ++at;
    }
    return text.size();
}

// The text with the greatest number in place of those that no double holds, which the parser refuses.
std::string withinBounds(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        auto end = at + 1;
        if (text[at] == '"') {
            end = endOfString(text, at);
        } else if ((text[at] >= '0' && text[at] <= '9')) {
            end = std::min(text.find_first_not_of("0123456789.eE+-", at), text.size());
        }
        const std::string piece(text.substr(at, end - at));
        const bool isBeyond = piece.size() > 1 && piece[0] != '"' && std::isinf(std::strtod(piece.c_str(), nullptr));
        result += isBeyond ? "1.7976931348623157e308" : piece;
        at = end;
    }
    return result;
}

std::vector<std::string> texts(const json& value) {
    if (!value.is_array() || !std::ranges::all_of(value, [](const json& one) { return one.is_string(); })) return {};
    return value.get<std::vector<std::string>>();
}

// Of a screen, as X11 counts them.
std::optional<int> coordinate(const json& value) {
    using Limits = std::numeric_limits<std::int16_t>;
    if (!value.is_number_integer() || value < Limits::min() || value > Limits::max()) return {};
    return value.get<int>();
}

std::optional<std::pair<int, int>> coordinates(const json& value) {
    if (!value.is_array() || value.size() != 2) return {};
    const auto first = coordinate(value[0]), second = coordinate(value[1]);
    if (!first || !second) return {};
    return std::pair(*first, *second);
}

}

// An empty file is what a crash of the system can leave of a new one: no settings.
std::optional<json> parsedSettings(std::string_view text) {
    if (isBlank(text)) return json::object();
    return dravel::jsonObject(withinBounds(text));
}

SettingsFile::SettingsFile(std::filesystem::path file, std::filesystem::path lockFolder, Report report)
    : file_(std::move(file)), lockFolder_(std::move(lockFolder)), report_(std::move(report)) {}

// None when the file is damaged, as one is that lost all that was known; other failures are thrown.
std::optional<json> SettingsFile::settingsThere() const {
    seen_ = dravel::SafeFile::modified(file_);
    try {
        auto text = dravel::SafeFile::readText(file_);
        if (isBlank(text) && !isBlank(known_)) return {};
        auto settings = parsedSettings(text);
        if (settings) known_ = std::move(text);
        return settings;
    } catch (const FileError& error) {
        if (error.kind == FileError::Kind::notUtf8) return {};
        if (error.kind != FileError::Kind::system || error.code != ENOENT) throw;
        known_.clear(); // who removes it wants to begin anew
        return json::object();
    }
}

json SettingsFile::read() const {
    const std::scoped_lock one(using_);
    try {
        if (auto settings = settingsThere()) return std::move(*settings);
        setAsideIfDamaged();
        return parsedSettings(known_).value_or(json::object());
    } catch (const FileError& error) {
        if (report_ && !std::exchange(reported_, true))
            report_("réglages illisibles (" + file_.string() + ") : " + error.description());
    }
    return json::object();
}

void SettingsFile::check() const {
    const std::scoped_lock one(using_);
    if (dravel::SafeFile::modified(file_) != seen_) read();
}

json SettingsFile::readOrThrow() const {
    const std::scoped_lock one(using_);
    if (auto settings = settingsThere()) return std::move(*settings);
    setAsideIfDamaged();
    throw FileError(FileError::Kind::system, file_, EBADMSG);
}

// Looks again under the lock: another process may have put good settings there meanwhile.
void SettingsFile::setAsideIfDamaged() const {
    const auto isDamaged = [this] { return !settingsThere(); };
    const auto aside = dravel::SafeFile::moveAside(file_, ".broken", isDamaged, lockFolder_);
    if (!aside) return;
    const auto known = [this](std::string_view there) { return there.empty() ? std::optional(known_) : std::nullopt; };
    if (!known_.empty()) dravel::SafeFile::editOwn(file_, known, lockFolder_);
    if (report_) report_("réglages endommagés, mis de côté dans " + aside->string());
}

void SettingsFile::change(const std::function<void(json&)>& change) {
    const auto edit = [&](std::string_view text) -> std::optional<std::string> {
        const auto before = parsedSettings(text);
        if (!before) throw FileError(FileError::Kind::changed, file_);
        auto after = *before;
        change(after);
        if (after == *before) return {};
        try {
            return after.dump(2) + "\n";
        } catch (const json::type_error&) { // a path or an identifier in another encoding
            throw FileError(FileError::Kind::notUtf8, file_);
        }
    };
    const std::scoped_lock one(using_);
    if (!settingsThere()) setAsideIfDamaged();
    if (auto changed = dravel::SafeFile::editOwn(file_, edit, lockFolder_)) known_ = std::move(changed->after);
}

std::filesystem::path preferencesFile(const dravel::UserFolders& folders) {
    return folders.config / "fr.dravel.Tacla" / "preferences.json";
}

Preferences::Preferences(std::filesystem::path file, std::filesystem::path lockFolder, Report report)
    : file_(std::move(file), std::move(lockFolder), std::move(report)) {}

std::optional<std::string> Preferences::taskFilePath() const { return jsonString(file_.read(), "taskFilePath"); }

bool Preferences::calendarSync() const {
    const auto settings = file_.read();
    return jsonFlag(settings, "calendarSync").value_or(jsonString(settings, "calendarID").has_value());
}

std::optional<std::string> Preferences::calendarID() const { return jsonString(file_.read(), "calendarID"); }

bool Preferences::calendarCreatedByTacla() const {
    return jsonFlag(file_.read(), "calendarCreatedByTacla").value_or(false);
}

std::optional<Preferences::Calendar> Preferences::calendar() const {
    const auto settings = file_.readOrThrow();
    auto id = jsonString(settings, "calendarID");
    if (!id) return {};
    return Calendar{std::move(*id), jsonFlag(settings, "calendarCreatedByTacla").value_or(false)};
}

Preferences::Making Preferences::calendarMaking() const {
    const auto settings = file_.readOrThrow();
    const auto& making = jsonMember(settings, makingKey);
    return making.is_null() ? Making::none : making == told ? Making::told : Making::asked;
}

std::vector<std::string> Preferences::notifiedTasks() const { return texts(jsonMember(file_.read(), "notifiedTasks")); }

std::optional<bool> Preferences::wantsLaunchAtLogin() const { return jsonFlag(file_.read(), "wantsLaunchAtLogin"); }

bool Preferences::quickEntryKey() const { return jsonFlag(file_.read(), "quickEntryKey").value_or(false); }

bool Preferences::onboardingDone() const { return jsonFlag(file_.read(), "onboardingDone").value_or(false); }

bool Preferences::launchedOnce() const { return jsonFlag(file_.read(), "launchedOnce").value_or(false); }

std::optional<Preferences::Size> Preferences::windowSize() const {
    const auto size = coordinates(jsonMember(file_.read(), "windowSize"));
    if (!size || size->first <= 0 || size->second <= 0) return {};
    return Size{size->first, size->second};
}

std::optional<Preferences::Position> Preferences::windowPosition() const {
    const auto position = coordinates(jsonMember(file_.read(), "windowPosition"));
    if (!position) return {};
    return Position{position->first, position->second};
}

void Preferences::setTaskFilePath(const std::string& path) {
    file_.change([&](json& settings) { settings["taskFilePath"] = path; });
}

void Preferences::setCalendarSync(bool on) {
    file_.change([&](json& settings) {
        settings["calendarSync"] = on;
        if (on && jsonString(settings, makingKey) == told) settings.erase(makingKey);
    });
}

void Preferences::setCalendar(const std::string& identifier, bool createdByTacla) {
    file_.change([&](json& settings) {
        settings["calendarID"] = identifier;
        settings["calendarCreatedByTacla"] = createdByTacla;
        settings.erase(makingKey);
    });
}

void Preferences::setCalendarMaking(Making making) {
    file_.change([&](json& settings) {
        settings.erase(makingKey);
        if (making != Making::none) settings[makingKey] = making == Making::asked ? asked : told;
    });
}

void Preferences::setWantsLaunchAtLogin(bool wanted) {
    file_.change([&](json& settings) { settings["wantsLaunchAtLogin"] = wanted; });
}

void Preferences::setOnboardingDone(bool done) {
    file_.change([&](json& settings) { settings["onboardingDone"] = done; });
}

void Preferences::setQuickEntryKey(bool chosen) {
    file_.change([&](json& settings) { settings["quickEntryKey"] = chosen; });
}

void Preferences::setWindow(Size size, std::optional<Position> position) {
    file_.change([&](json& settings) {
        settings["windowSize"] = {size.width, size.height};
        if (position) settings["windowPosition"] = {position->x, position->y};
    });
}

void Preferences::updateNotifiedTasks(const std::function<Notified(Notified)>& update) {
    file_.change([&](json& settings) {
        const auto before = texts(jsonMember(settings, "notifiedTasks"));
        if (auto after = update(before); after != before) settings["notifiedTasks"] = std::move(after);
    });
}

}
