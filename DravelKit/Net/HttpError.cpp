#include "DravelKit/Net/HttpError.h"

namespace dravel {

namespace {

std::string describe(HttpError::Kind kind, const std::string& host) {
    switch (kind) {
    case HttpError::Kind::badRequest: return "Requête impossible à envoyer à " + host;
    case HttpError::Kind::unknownHost: return "Serveur " + host + " introuvable : vérifiez la connexion à Internet";
    case HttpError::Kind::unreachable: return "Connexion impossible à " + host;
    case HttpError::Kind::timedOut: return "Délai dépassé en attendant la réponse de " + host;
    case HttpError::Kind::lost: return "Connexion perdue avec " + host;
    case HttpError::Kind::insecure: return "Connexion non sécurisée avec " + host + " : requête abandonnée";
    case HttpError::Kind::tooLarge: return "Réponse trop longue de " + host;
    case HttpError::Kind::cancelled: return "Requête interrompue";
    case HttpError::Kind::failed: return "Échec de la requête à " + host;
    }
    return {};
}

}

HttpError::HttpError(Kind k, std::string h) : std::runtime_error(describe(k, h)), kind(k), host(std::move(h)) {}

}
