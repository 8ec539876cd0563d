#include "DravelKit/GoogleAuth/GoogleConfig.h"

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

}
