#include "DravelKit/GoogleAuth/AuthError.h"

namespace dravel {

namespace {

std::string describe(AuthError::Kind kind, const std::string& detail) {
    switch (kind) {
    case AuthError::Kind::loginFailed: return "Connexion Google échouée : " + detail;
    case AuthError::Kind::missingConfig: return "Client Google absent de cette version de l'app";
    case AuthError::Kind::badConfig:
        return "Client Google illisible (attendu : client OAuth « Application de bureau »)";
    case AuthError::Kind::notSignedIn: return "Pas connecté à Google";
    case AuthError::Kind::keyringUnreachable: return detail;
    case AuthError::Kind::unreadableAnswer: return "Réponse de Google illisible";
    case AuthError::Kind::badEndpoints:
        return detail + " refusée : seules les adresses http://127.0.0.1 et http://[::1] sont permises";
    case AuthError::Kind::cancelled: return "Connexion Google interrompue";
    }
    return {};
}

}

AuthError::AuthError(Kind k, std::string d) : std::runtime_error(describe(k, d)), kind(k), detail(std::move(d)) {}

}
