#pragma once

#include "DravelKit/GoogleAuth/GoogleConfig.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace dravel {

// The credentials of a "Desktop app" client of Google Cloud.
struct OAuthClient {
    std::string clientID;
    Secret clientSecret;

    // The file that the user places there.
    static std::filesystem::path configPath(const GoogleConfig&, const GoogleFolders&);
    // The file that the application's package may carry.
    static std::filesystem::path embeddedPath(const GoogleFolders&);

    static bool isAvailable(const GoogleConfig&, const GoogleFolders&);

    // What there is to sign in with: the user's own file, or the maker's in the package.
    enum class Source { missing, unreadable, own, package };
    static Source source(const GoogleConfig&, const GoogleFolders&);

    // Makes a downloaded file the user's own one, for nobody else to read. Throws AuthError (badConfig) when it is not
    // a desktop client's, else FileError; what was there stays.
    static void install(const GoogleConfig&, const GoogleFolders&, const std::filesystem::path& downloaded);

    // The user's own file when there is one, else the package's. Throws AuthError (missingConfig, badConfig).
    static OAuthClient load(const GoogleConfig&, const GoogleFolders&);

    // The text of a client file; none when it is not a desktop client's.
    static std::optional<OAuthClient> parse(std::string_view json);
};

// What the token endpoint gives (RFC 6749, section 5.1).
struct TokenResponse {
    Secret accessToken;
    std::chrono::seconds expiresIn{};
    std::optional<Secret> refreshToken = {};

    // None when the text is not such an answer.
    static std::optional<TokenResponse> parse(std::string_view json);
};

// Why it gives nothing (RFC 6749, section 5.2).
struct TokenError {
    std::string error;
    std::optional<std::string> errorDescription;

    static std::optional<TokenError> parse(std::string_view json);
};

}
