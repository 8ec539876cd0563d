#include "Tacla/Reminders/TestNotification.h"

#include "DravelKit/Foundation/Hash.h"
#include "Tacla/TaskList/Clock.h"

#include <utility>

namespace tacla {

namespace {

constexpr auto outsideASession = "Indisponible hors d'une session de bureau";
constexpr auto refused = "Refusées par le bureau : à autoriser dans ses réglages de notifications";

NotificationRequest testRequest() {
    return {.identifier = "test-" + dravel::randomUrlSafe(12),
            .content = {.title = "Notification d'essai",
                        .body = "Si vous lisez ceci, les rappels de Tacla arrivent bien.",
                        .key = {}},
            .moment = {}};
}

// Whether a bubble stays or goes is the server's own business; what it can show is known.
std::string sent(Instant now, const NotificationServer::Capabilities& server) {
    return "Envoyée à " + Clock::of(now).description() + " · " +
           (server.actions ? "affichage avec les boutons « Fait » et « Demain »" : "affichage sans boutons");
}

}

void sendTestNotification(NotificationServer* server, const dravel::Now& now, std::function<void(std::string)> done) {
    if (server == nullptr) return done(outsideASession);
    server->ask([server, now, done = std::move(done)](NotificationServer::Capabilities capabilities) {
        if (!capabilities.reachable) return done(capabilities.session ? refused : outsideASession);
        server->show(testRequest(), [now, done, capabilities](const NotificationServer::Error& error) {
            done(error ? "Échec : " + *error : sent(now(), capabilities));
        });
    });
}

}
