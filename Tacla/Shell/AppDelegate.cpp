#include "Tacla/Shell/AppDelegate.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/StandardMenu/StandardMenu.h"
#include "Tacla/Shell/Licences.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tacla {

namespace {

using namespace std::chrono_literals;

constexpr auto trayPatience = 10s; // a panel that starts together with us may take its time

}

AppDelegate::AppDelegate(World world)
    : world_(std::move(world)), tray_(world_.model, scheme_, updater_.isAvailable(),
                                      {.chosen = [this](const MenuCommand& command) { perform(command); },
                                       .activated = [this](const std::string& token) { showWindow(token); }}),
      window_(world_.model, world_.preferences, world_.actions, [this] { return world_.loop.now(); }),
      wake_([this] { world_.model.wokeUp(); }), secrets_([this] { world_.model.accountStoreAppeared(); }) {}

void AppDelegate::launch() {
    connections_.push_back(world_.model.changed.connect([this] { refreshSoon(); }));
    connections_.push_back(world_.instance.activated.connect([this](const auto& activation) { activate(activation); }));
    connections_.push_back(world_.notifications.responded.connect([this](const auto& response) { respond(response); }));
    connections_.push_back(scheme_.changed.connect([this] { followColours(); }));

    world_.model.start();
    world_.session.whenOpen([this](const QDBusConnection& connection) { joinSession(connection); });
    if (!world_.preferences.onboardingDone() && !world_.preferences.launchedOnce()) {
        world_.model.beginOnboarding();
        showWindow(world_.activationToken);
    }
    world_.loop.post([this] { // after the first picture
        world_.model.applyLaunchAtLogin();
        world_.system.whenOpen([this](const QDBusConnection& connection) { joinSystem(connection); });
        world_.system.open();
    });
    connections_.push_back(world_.session.lost.connect([this] { doWithoutSession(); }));
    if (world_.session.isAbsent()) {
        doWithoutSession();
    } else {
        trayPatience_ = world_.loop.after(trayPatience, [this] { showWindowWithoutTray(); });
    }
}

void AppDelegate::joinSession(const QDBusConnection& connection) {
    tray_.openOn(connection);
    world_.notifications.use(connection);
    scheme_.watch(connection);
    secrets_.watch(connection);
}

void AppDelegate::doWithoutSession() {
    world_.notifications.doWithout();
    showWindow(); // there will be no icon
}

void AppDelegate::joinSystem(const QDBusConnection& connection) { wake_.watch(connection); }

void AppDelegate::showWindow(const std::string& activationToken) {
    if (!menuInstalled_) {
        world_.session.open();
        // With its first window Qt asks the session bus for readers of the screen, and would wait for a silent bus.
        if (!world_.session.connection()) keepQtFromSessionBus();
        dravel::translateQt(*qApp);
        installMenu();
    }
    window_.show(activationToken);
}

void AppDelegate::showWindowWithoutTray() {
    if (window_.isShown()) return;
    tray_.askIfShown([this](bool shown) {
        if (!shown) showWindow();
    });
}

void AppDelegate::installMenu() {
    menuInstalled_ = true;
    const auto settings = [this] {
        world_.model.requestSection("settings");
        showWindow();
    };
    dravel::StandardMenu::install(window_.window(), aboutTacla(world_.actions.version),
                                  {.settings = settings,
                                   .quit = world_.quit,
                                   .undo = [this] { world_.model.undo(); },
                                   .canUndo = [this] { return world_.model.canUndo(); }});
}

// Many changes of the model in one turn of the loop need one look at it.
void AppDelegate::refreshSoon() {
    if (std::exchange(refreshPending_, true)) return;
    world_.loop.post([this] {
        refreshPending_ = false;
        tray_.refresh();
    });
}

void AppDelegate::followColours() {
    switch (scheme_.preference()) {
    case ColourScheme::Preference::dark: return dravel::setAppearance(dravel::Appearance::Dark);
    case ColourScheme::Preference::light: return dravel::setAppearance(dravel::Appearance::Light);
    case ColourScheme::Preference::unknown: return dravel::setAppearance(world_.platformAppearance);
    }
}

void AppDelegate::perform(const MenuCommand& command) {
    switch (command.kind) {
    case MenuCommand::Kind::none: return;
    case MenuCommand::Kind::toggle: return toggle(command.key);
    case MenuCommand::Kind::openWindow: return showWindow();
    case MenuCommand::Kind::openFile: return world_.actions.openFile(world_.model.state().file);
    case MenuCommand::Kind::openAgenda: return world_.actions.openAgenda();
    case MenuCommand::Kind::checkForUpdates: return updater_.checkForUpdates();
    case MenuCommand::Kind::quit: return world_.quit();
    }
}

void AppDelegate::toggle(const std::string& key) {
    const auto& tasks = world_.model.state().tasks;
    const auto task = std::find_if(tasks.begin(), tasks.end(), [&](const TaskItem& item) { return item.key == key; });
    if (task != tasks.end()) world_.model.toggle(TaskItem(*task)); // a copy: the list is replaced meanwhile
}

void AppDelegate::respond(const NotificationServer::Response& response) {
    switch (response.action) {
    case NotificationServer::Action::done: return world_.model.setDone(response.key);
    case NotificationServer::Action::tomorrow:
        return world_.model.reschedule(response.key, Day::of(world_.loop.now()).plusDays(1));
    case NotificationServer::Action::opened:
        world_.model.requestSection("today");
        return showWindow(response.activationToken);
    }
}

void AppDelegate::activate(const SingleInstance::Activation& activation) {
    showWindow(activation.token);
    if (activation.action == "new-task") window_.beginTask();
}

}
