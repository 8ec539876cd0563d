#include "DravelKit/TextRewriting/RewriteSettings.h"

#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/Text.h"
#include "DravelKit/TextRewriting/RewriteError.h"

#include <nlohmann/json.hpp>

#include <cerrno>

namespace dravel {

namespace {

using nlohmann::json;

const char* nameOf(Mode mode) {
    return mode == Mode::correction ? "correction" : mode == Mode::rewrite ? "rewrite" : "message";
}

bool isSane(const ModeSettings& settings) {
    const auto& [model, effort] = settings;
    constexpr auto allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.:/@";
    return !model.empty() && model.size() <= 100 && model.find_first_not_of(allowed) == model.npos &&
           (effort.empty() || effort == "low" || effort == "medium" || effort == "high");
}

// Null when it is damaged. An empty file is what a crash of the system can leave of a new one.
json objectIn(std::string_view text) {
    if (trimmedOfWhiteSpaceAndLineBreaks(text).empty()) return json::object();
    const auto value = json::parse(text, nullptr, false);
    return value.is_object() ? value : json();
}

json settingsIn(const std::filesystem::path& file) {
    try {
        return objectIn(SafeFile::readText(file));
    } catch (const FileError& error) {
        if (error.kind == FileError::Kind::notUtf8) return {};
        if (error.kind == FileError::Kind::system && error.code == ENOENT) return json::object();
        throw;
    }
}

}

RewriteSettings::RewriteSettings(std::filesystem::path file, std::filesystem::path lockFolder, Report report)
    : file_(std::move(file)), lockFolder_(std::move(lockFolder)), report_(std::move(report)) {}

void RewriteSettings::setAsideIfDamaged() const {
    if (!settingsIn(file_).is_null()) return;
    const auto aside = file_.string() + ".broken";
    std::error_code error;
    std::filesystem::rename(file_, aside, error);
    if (error) throw FileError(FileError::Kind::system, file_, error.value());
    report_("réglages de réécriture endommagés, mis de côté dans " + aside);
}

ModeSettings RewriteSettings::of(Mode mode) const {
    ModeSettings usual{.model = "claude-sonnet-4-6", .effort = mode == Mode::correction ? "low" : "medium"};
    try {
        setAsideIfDamaged();
        const auto own = settingsIn(file_).value(nameOf(mode), json::object());
        ModeSettings found{.model = own.value("model", usual.model), .effort = own.value("effort", usual.effort)};
        if (isSane(found)) return found;
    } catch (const FileError& error) {
        report_("réglages de réécriture illisibles (" + file_.string() + ") : " + error.description());
    } catch (const json::exception&) { // members of another type
    }
    return usual;
}

void RewriteSettings::set(Mode mode, const ModeSettings& settings) {
    if (!isSane(settings)) throw RewriteError(RewriteError::Kind::badSettings, "modèle ou effort inconnu");
    setAsideIfDamaged();
    const auto edit = [&](std::string_view text) -> std::optional<std::string> {
        auto object = objectIn(text);
        if (object.is_null()) throw FileError(FileError::Kind::changed, file_);
        auto& own = object[nameOf(mode)];
        if (!own.is_object()) own = json::object();
        own.update({{"model", settings.model}, {"effort", settings.effort}});
        return object.dump(2) + "\n";
    };
    SafeFile::editOwn(file_, edit, lockFolder_);
}

}
