#include "Tacla/Reminders/NotificationServer.h"

#include "Tacla/TaskList/Clock.h"

#include <utility>

namespace tacla {

namespace {

using Capabilities = NotificationServer::Capabilities;

constexpr auto outsideASession = "Indisponible hors d'une session de bureau";
constexpr auto refused = "Refusées par le bureau : à autoriser dans ses réglages de notifications";

NotificationRequest testRequest() {
    return {.content = {.title = "Notification d'essai",
                        .body = "Si vous lisez ceci, les rappels de Tacla arrivent bien.",
                        .key = {}}};
}

// Whether a bubble stays or goes is the server's own business; what it can show is known.
std::string sent(Instant now, const Capabilities& server) {
    return "Envoyée à " + Clock::of(now).description() + " · " +
           (server.actions ? "affichage avec les boutons « Fait » et « Demain »" : "affichage sans boutons");
}

}

NotificationPermission::NotificationPermission(const dravel::MainLoop& loop, NotificationServer* server,
                                               std::function<void()> changed)
    : loop_(loop), server_(server), changed_(std::move(changed)) {}

void NotificationPermission::refresh() {
    if (server_ == nullptr) return;
    server_->ask(life_.guard([this](const Capabilities& server) {
        if (std::exchange(allowed, server.reachable) != server.reachable) changed_();
    }));
}

void NotificationPermission::refreshWhenServersComeAndGo() {
    if (server_ != nullptr) serverChanged_ = server_->changed.connect([this] { refresh(); });
    refresh();
}

void NotificationPermission::request(std::function<void()> openSettings) {
    if (server_ == nullptr) return openSettings();
    server_->ask(life_.guard([this, openSettings = std::move(openSettings)](const Capabilities& server) {
        if (!server.reachable) openSettings();
        refresh();
    }));
}

void NotificationPermission::test() {
    if (server_ == nullptr) return tested(outsideASession);
    server_->ask(life_.guard([this](const Capabilities& capabilities) {
        if (!capabilities.reachable) return tested(capabilities.session ? refused : outsideASession);
        server_->show(testRequest(),
                      life_.guard([this, capabilities](const NotificationServer::Error& error, const auto&) {
                          tested(error ? "Échec : " + *error : sent(loop_.now(), capabilities));
                      }));
    }));
}

void NotificationPermission::tested(std::string result) {
    testResult = std::move(result);
    changed_();
}

}
