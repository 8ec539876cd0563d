#pragma once

#include "DravelKit/Net/Secret.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace dravel {

// Where this computer keeps what the Google account needs.
struct GoogleFolders {
    std::filesystem::path data;      // the user's data folder; each application has its own folder in it
    std::filesystem::path resources; // the application's installed resources, <prefix>/share/<name>
    std::filesystem::path locks = {};
};

// Everything about the Google account that differs between the maker's applications.
struct GoogleConfig {
    // A token file of an earlier version, moved into the keyring at the first read.
    struct LegacyToken {
        std::string file;                                            // its name in supportDirectory
        std::function<std::optional<Secret>(std::string_view)> read; // from its bytes to the refresh token
    };

    std::string appName;                // in messages and in the callback page
    std::string folder;                 // in the user's data folder
    std::string tokenService;           // attribute "service" of the keyring item
    std::function<std::string()> scope; // asked for at each sign-in
    std::optional<LegacyToken> legacyToken;
    std::string connectedText; // message of the success page
    std::string retryPlace;    // where the user can try again
    std::string icon;          // inner SVG markup, 16×16

    std::filesystem::path supportDirectory(const GoogleFolders&) const;

    // A Google error code as a French phrase; an unknown code unchanged.
    std::string explain(const std::string& code) const;
};

// The addresses of Google's services.
struct GoogleEndpoints {
    std::string authorization; // where the browser is sent
    std::string token;
    std::string calendar; // ".../calendar/v3", no "/" at the end

    // Google's published addresses.
    static GoogleEndpoints published();

    // All of them on one server of this machine, for tests and emulators. Throws AuthError (badEndpoints) when the
    // host is anything but 127.0.0.1 or [::1]; `setting` names where the address came from.
    static GoogleEndpoints onThisMachine(const std::string& base, const std::string& setting);

    // onThisMachine when the environment has the variable (even empty), else published.
    static GoogleEndpoints fromEnvironment(const char* variable);
};

}
