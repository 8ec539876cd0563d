#include "Tacla/MainWindow/Pages/SettingsTexts.h"

namespace tacla {

std::string syncText(const ModelState& state, const TimeText& timeText) {
    if (state.syncError) return *state.syncError;
    if (state.syncing) return "En cours";
    if (state.lastSync) return "Dernière : " + timeText(*state.lastSync) + ", puis à chaque modification de la liste";
    return "Pas encore faite";
}

std::string calendarSyncText(bool on) {
    return on ? "Dans un agenda à part, sans rappel sur le téléphone."
              : "Désactivé. Les événements déjà recopiés restent dans l'agenda.";
}

}
