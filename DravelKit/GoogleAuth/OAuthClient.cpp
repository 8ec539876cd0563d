#include "DravelKit/GoogleAuth/OAuthClient.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/Json.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/GoogleAuth/AuthError.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace dravel {

namespace {

using Path = std::filesystem::path;

// Something of that name is there, even if it cannot be looked into: then reading it will say what is wrong.
bool isThere(const Path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error) || error == std::errc::permission_denied;
}

// Google's file has less than one KiB; whatever was chosen by mistake is not read whole.
constexpr std::uintmax_t longestClientFile = 64 << 10;

// The text of a desktop client's file. Unreadable is as good as damaged: one message for both.
std::string clientText(const Path& path) {
    std::error_code error;
    try {
        if (std::filesystem::file_size(path, error) <= longestClientFile && !error)
            if (auto text = SafeFile::readText(path); OAuthClient::parse(text)) return text;
    } catch (const FileError&) {
        throw AuthError(AuthError::Kind::badConfig);
    }
    throw AuthError(AuthError::Kind::badConfig);
}

// A member that may be missing or null, but is a string when it is there.
bool isOptionalString(const nlohmann::json& object, const char* name) {
    const auto& member = jsonMember(object, name);
    return member.is_null() || member.is_string();
}

}

Path OAuthClient::configPath(const GoogleConfig& config, const GoogleFolders& folders) {
    return config.supportDirectory(folders) / "client.json";
}

Path OAuthClient::embeddedPath(const GoogleFolders& folders) { return folders.resources / "google-client.json"; }

bool OAuthClient::isAvailable(const GoogleConfig& config, const GoogleFolders& folders) {
    return isThere(embeddedPath(folders)) || isThere(configPath(config, folders));
}

OAuthClient OAuthClient::load(const GoogleConfig& config, const GoogleFolders& folders) {
    const Path own = configPath(config, folders);
    const Path path = isThere(own) ? own : embeddedPath(folders);
    if (!isThere(path)) throw AuthError(AuthError::Kind::missingConfig);
    return parse(clientText(path)).value();
}

OAuthClient::Source OAuthClient::source(const GoogleConfig& config, const GoogleFolders& folders) try {
    if (!isAvailable(config, folders)) return Source::missing;
    load(config, folders);
    return isThere(configPath(config, folders)) ? Source::own : Source::package;
} catch (const AuthError&) {
    return Source::unreadable;
}

void OAuthClient::install(const GoogleConfig& config, const GoogleFolders& folders, const Path& downloaded) {
    const auto text = clientText(downloaded);
    const Path own = configPath(config, folders);
    const auto replace = [&] { SafeFile::replaceOwn(own, text, folders.locks); };
    try {
        replace();
    } catch (const FileError& error) {
        if (error.kind != FileError::Kind::notUtf8) throw;
        std::filesystem::remove(own); // no text at all, which nobody could edit
        replace();
    }
    std::filesystem::permissions(own, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

std::optional<OAuthClient> OAuthClient::parse(std::string_view text) {
    const auto file = jsonObject(text);
    if (!file) return std::nullopt;
    const auto& installed = jsonMember(*file, "installed");
    auto id = jsonString(installed, "client_id"), secret = jsonString(installed, "client_secret");
    if (!id || !secret) return std::nullopt;
    return OAuthClient{.clientID = std::move(*id), .clientSecret = Secret(std::move(*secret))};
}

std::optional<TokenResponse> TokenResponse::parse(std::string_view text) {
    const auto json = jsonObject(text);
    if (!json || !isOptionalString(*json, "refresh_token")) return std::nullopt;
    const auto access = jsonString(*json, "access_token");
    const auto& expires = jsonMember(*json, "expires_in");
    if (!access || access->empty() || !expires.is_number_integer()) return std::nullopt;
    // A lifetime beyond a year would overflow the clock sooner than help anybody.
    constexpr std::int64_t year = std::int64_t{366} * 86400; // in seconds
    const bool huge = expires.is_number_unsigned() && expires.get<std::uint64_t>() > std::uint64_t{year};
    const auto seconds = huge ? year : std::clamp<std::int64_t>(expires.get<std::int64_t>(), 0, year);
    TokenResponse answer{.accessToken = Secret(*access), .expiresIn = std::chrono::seconds(seconds)};
    if (const auto refresh = jsonString(*json, "refresh_token")) answer.refreshToken = Secret(*refresh);
    return answer;
}

std::optional<TokenError> TokenError::parse(std::string_view text) {
    const auto json = jsonObject(text);
    if (!json || !isOptionalString(*json, "error_description")) return std::nullopt;
    auto error = jsonString(*json, "error");
    if (!error) return std::nullopt;
    return TokenError{.error = std::move(*error), .errorDescription = jsonString(*json, "error_description")};
}

}
