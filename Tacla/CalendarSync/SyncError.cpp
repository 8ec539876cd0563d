#include "Tacla/CalendarSync/SyncError.h"

#include "DravelKit/Foundation/Text.h"

namespace tacla {

namespace {

constexpr std::size_t shownCharacters = 120;

std::string describe(SyncError::Kind kind, long status, const std::string& body) {
    switch (kind) {
    case SyncError::Kind::http: {
        const std::string_view text = dravel::isValidUtf8(body) ? std::string_view(body) : std::string_view();
        return "Google Agenda a répondu " + std::to_string(status) + " " +
               std::string(dravel::firstCharacters(text, shownCharacters));
    }
    case SyncError::Kind::emptyFile: return "Le fichier ne contient aucune tâche : l'agenda n'est pas vidé";
    case SyncError::Kind::calendarGone: return "L'agenda de Tacla est introuvable dans Google Agenda";
    }
    return {};
}

}

SyncError::SyncError(Kind errorKind, long errorStatus, const std::string& body)
    : std::runtime_error(describe(errorKind, errorStatus, body)), kind(errorKind), status(errorStatus) {}

SyncError SyncError::http(long status, const std::string& body) { return SyncError(Kind::http, status, body); }

}
