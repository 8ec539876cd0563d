#include "DravelKit/TextRewriting/RewriteError.h"

namespace dravel {

namespace {

using Kind = RewriteError::Kind;

std::string describe(Kind kind, const std::string& detail, RewriteError::Wait wait) {
    const auto later = wait ? " : réessayez dans " + std::to_string(wait->count()) + " s" : " : réessayez plus tard";
    switch (kind) {
    case Kind::noKey: return "Aucune clé pour le service de réécriture : ajoutez-la dans les réglages";
    case Kind::badKey: return "Clé mal formée : elle doit commencer par « sk-ant- »";
    case Kind::keyring: return "Clé inaccessible : " + detail;
    case Kind::keyRefused: return "Clé refusée par le service de réécriture : vérifiez-la dans les réglages";
    case Kind::quota: return "Quota du service de réécriture épuisé" + later;
    case Kind::overloaded: return "Service de réécriture surchargé" + later;
    case Kind::tooLong: return "Texte trop long : 100 000 caractères au plus";
    case Kind::badText: return "Texte illisible : UTF-8 attendu";
    case Kind::refused: return "Le service a refusé de traiter ce texte";
    case Kind::cut: return "Réponse coupée avant la fin du texte : essayez avec un texte plus court";
    case Kind::network: return detail;
    case Kind::unreadable: return "Réponse du service de réécriture illisible";
    case Kind::rejected: return "Requête rejetée par le service de réécriture" + detail;
    case Kind::badSettings: return "Réglage impossible : " + detail;
    case Kind::stopped: return "Réécriture interrompue";
    }
    return {};
}

}

RewriteError::RewriteError(Kind k, const std::string& d, Wait w) : runtime_error(describe(k, d, w)), kind(k), wait(w) {}

}
