#include "Tacla/Preferences/SettingsFile.h"

#include "DravelKit/Foundation/FileLock.h"
#include "DravelKit/Foundation/FilePaths.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/Text.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <optional>
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

// Looks again under the lock: another process may have put good settings there meanwhile.
void SettingsFile::setAsideIfDamaged() const {
    const auto target = dravel::followedLinks(file_);
    const dravel::FileLock lock(target, lockFolder_);
    if (settingsIn(target)) return;
    const auto aside = file_.string() + ".broken";
    std::error_code error;
    std::filesystem::rename(target, aside, error);
    if (error) throw FileError(FileError::Kind::system, file_, error.value());
    if (report_) report_("réglages endommagés, mis de côté dans " + aside);
}

void SettingsFile::change(const std::function<void(json&)>& change) {
    if (!settingsIn(file_)) setAsideIfDamaged();
    const auto edited = [&](std::string_view text) -> std::optional<std::string> {
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
    };
    dravel::SafeFile::editOwn(file_, edited, lockFolder_);
}

}
