#include "DravelKit/GoogleAuth/OAuthClient.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/GoogleAuth/AuthError.h"

#include <nlohmann/json.hpp>

namespace dravel {

namespace {

using Path = std::filesystem::path;

// Something of that name is there, even if it cannot be looked into: then reading it will say what is wrong.
bool isThere(const Path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error) || error == std::errc::permission_denied;
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
    try {
        if (const auto client = parse(SafeFile::readText(path))) return *client;
    } catch (const FileError&) { // unreadable is as good as damaged: one message for both
    }
    throw AuthError(AuthError::Kind::badConfig);
}

std::optional<OAuthClient> OAuthClient::parse(std::string_view text) {
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto installed = json.find("installed");
    if (installed == json.end() || !installed->is_object()) return std::nullopt;
    const auto id = installed->find("client_id"), secret = installed->find("client_secret");
    if (id == installed->end() || !id->is_string() || secret == installed->end() || !secret->is_string())
        return std::nullopt;
    return OAuthClient{.clientID = id->get<std::string>(), .clientSecret = Secret(secret->get<std::string>())};
}

}
