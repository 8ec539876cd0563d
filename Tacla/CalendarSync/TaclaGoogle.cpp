#include "Tacla/CalendarSync/TaclaGoogle.h"

#include "DravelKit/Foundation/Json.h"

#include <utility>

namespace tacla {

namespace {

constexpr auto ownCalendars = "https://www.googleapis.com/auth/calendar.app.created";
constexpr auto allEvents = "https://www.googleapis.com/auth/calendar.events";

constexpr auto icon =
    R"(<path d="M10.5 2.5H5A2.5 2.5 0 0 0 2.5 5v6A2.5 2.5 0 0 0 5 13.5h6a2.5 2.5 0 0 0 2.5-2.5V7.5" fill="none" )"
    R"(stroke="currentColor" stroke-width="1.4" stroke-linecap="round"/>)"
    R"(<path d="M5.5 7.5l2.3 2.4 5.7-6.4" fill="none" stroke="currentColor" stroke-width="1.4" )"
    R"(stroke-linecap="round" stroke-linejoin="round"/>)";

std::optional<dravel::Secret> refreshTokenOf(std::string_view file) {
    const auto object = dravel::jsonObject(file);
    auto token = object ? dravel::jsonString(*object, "refresh_token") : std::nullopt;
    return token ? std::optional(dravel::Secret(std::move(*token))) : std::nullopt;
}

}

dravel::GoogleConfig taclaGoogle(const Preferences& preferences) {
    return {
        .appName = "Tacla",
        .folder = "Tacla",
        .tokenService = "fr.dravel.Tacla.google",
        // A calendar that somebody else made is out of reach of the narrow scope.
        .scope =
            [&preferences] {
                const bool foreign = preferences.calendarID() && !preferences.calendarCreatedByTacla();
                return std::string(foreign ? allEvents : ownCalendars);
            },
        .legacyToken = dravel::GoogleConfig::LegacyToken{"token.json", refreshTokenOf},
        .connectedText = "Tacla recopie maintenant vos tâches datées dans un agenda à part de votre Google Agenda.",
        .retryPlace = "les réglages de Tacla",
        .icon = icon,
    };
}

}
