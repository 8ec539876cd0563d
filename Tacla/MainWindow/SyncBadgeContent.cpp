#include "Tacla/MainWindow/SyncBadgeContent.h"

#include "DravelKit/DravelUI/Symbols.h"

namespace tacla {

using dravel::Symbol;

namespace {

bool inTrouble(const ModelState& state) {
    return state.fileError || (state.calendarSync && (state.syncError || state.connection == Connection::signedOut));
}

std::string signedInText(const ModelState& state, const TimeText& timeText) {
    if (state.syncError) return "Synchro en échec";
    if (state.syncing) return "Synchro de l'agenda…";
    if (!state.lastSync) return "Agenda connecté";
    return "Agenda à jour · " + timeText(*state.lastSync);
}

std::string subtitle(const ModelState& state, const TimeText& timeText) {
    if (state.fileError) return "Liste illisible";
    if (!state.calendarSync) return state.file.filename().string();
    switch (state.connection) {
    case Connection::unknown: return "Agenda…";
    case Connection::signedOut: return "Agenda non connecté";
    case Connection::signingIn: return "Connexion à Google…";
    case Connection::signedIn: break;
    }
    return signedInText(state, timeText);
}

}

SyncBadgeContent syncBadge(const ModelState& state, const TimeText& timeText) {
    const auto open = state.openCount();
    const bool trouble = inTrouble(state);
    return {.symbol = state.syncing ? Symbol::ArrowRepeat
                      : trouble     ? Symbol::ExclamationLg
                                    : Symbol::CheckLg,
            .title = open >= 1 ? std::to_string(open) + " à faire" : "Tout est coché",
            .subtitle = subtitle(state, timeText),
            .syncing = state.syncing,
            .trouble = trouble};
}

}
