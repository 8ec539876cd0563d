#include "DravelKit/GoogleAuth/GoogleConfig.h"

#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/Net/Url.h"

#include <cstdlib>

namespace dravel {

std::filesystem::path GoogleConfig::supportDirectory(const GoogleFolders& folders) const {
    return folders.data / folder;
}

std::string GoogleConfig::explain(const std::string& code) const {
    if (code == "admin_policy_enforced" || code == "org_internal")
        return "l'administrateur Google Workspace de votre organisation bloque les apps tierces : "
               "demandez-lui d'autoriser " +
               appName + ".";
    if (code == "access_denied") return "accès refusé.";
    return code;
}

GoogleEndpoints GoogleEndpoints::published() {
    return {.authorization = "https://accounts.google.com/o/oauth2/v2/auth",
            .token = "https://oauth2.googleapis.com/token",
            .calendar = "https://www.googleapis.com/calendar/v3"};
}

GoogleEndpoints GoogleEndpoints::onThisMachine(const std::string& base, const std::string& setting) {
    const auto url = Url::parse(base);
    const bool bare = url && url->path == "/" && url->query.empty() && url->anchor.empty();
    // The scheme is asked for literally: an address without one would be completed by guessing.
    const bool spelt = base.starts_with("http://") || base.starts_with("https://");
    if (!bare || !spelt || !url->isLoopback()) throw AuthError(AuthError::Kind::badEndpoints, setting);
    const auto root = url->scheme + "://" + url->host + (url->port.empty() ? "" : ":" + url->port);
    return {.authorization = root + "/o/oauth2/v2/auth", .token = root + "/token", .calendar = root + "/calendar/v3"};
}

GoogleEndpoints GoogleEndpoints::fromEnvironment(const char* variable) {
    const char* base = std::getenv(variable);
    return base == nullptr ? published() : onThisMachine(base, variable);
}

}
