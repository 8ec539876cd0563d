#include "Tacla/Shell/AppDelegate.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/StandardMenu/AboutPanel.h"
#include "DravelKit/StandardMenu/StandardMenu.h"
#include "Tacla/StatusMenu/StatusMenu.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tacla {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr auto trayPatience = 10s; // a panel that starts together with us may take its time

// What the About panel tells of this program and of what it is made with.
dravel::About aboutTacla(const std::string& version) {
    return {.appName = u"Tacla"_s,
            .version = QString::fromStdString(version),
            .copyright = u"© Dravel · licence MIT"_s,
            .components = {{u"Qt 6"_s, u"LGPL 3"_s},
                           {u"ICU"_s, u"licence Unicode"_s},
                           {u"libcurl"_s, u"licence curl"_s},
                           {u"libsecret, libacl, libattr, Nettle"_s, u"LGPL 2.1, LGPL 3"_s},
                           {u"JSON for Modern C++, Bootstrap Icons"_s, u"MIT"_s},
                           {u"Atkinson Hyperlegible Next, Comfortaa"_s, u"OFL 1.1"_s}}};
}

}

AppDelegate::AppDelegate(Ports ports) : ports_(std::move(ports)) {}

void AppDelegate::launch() {
    observe();
    ports_.model.start();
    ports_.session.whenOpen([this](const QDBusConnection& connection) { joinSession(connection); });
    if (!ports_.preferences.onboardingDone() && !ports_.preferences.launchedOnce()) {
        ports_.model.beginOnboarding();
        showWindow(ports_.activationToken);
    }
    ports_.loop.post([this] { // after the first picture
        ports_.model.applyLaunchAtLogin();
        ports_.system.whenOpen([this](const QDBusConnection& connection) { ports_.wake.watch(connection); });
        ports_.system.open();
    });
    connections_.push_back(ports_.session.lost.connect([this] { doWithoutSession(); }));
    if (ports_.session.isAbsent()) {
        doWithoutSession();
    } else {
        trayPatience_ = ports_.loop.after(trayPatience, [this] { showWindowWithoutTray(); });
    }
}

void AppDelegate::observe() {
    const auto keep = [this](dravel::Connection connection) { connections_.push_back(std::move(connection)); };
    keep(ports_.model.changed.connect([this] { refreshTraySoon(); }));
    keep(ports_.menu.chosen.connect([this](const MenuCommand& command) { perform(command); }));
    keep(ports_.instance.activated.connect([this](const auto& activation) { activate(activation); }));
    keep(ports_.notifications.responded.connect([this](const auto& response) { respond(response); }));
    keep(ports_.scheme.changed.connect([this] { followColours(); }));
    keep(ports_.wake.wokeUp.connect([this] { ports_.model.wokeUp(); }));
    keep(ports_.secrets.appeared.connect([this] { ports_.model.accountStoreAppeared(); }));
}

void AppDelegate::joinSession(const QDBusConnection& connection) {
    ports_.menu.registerOn(connection); // before the item, whose host asks for it
    item_.emplace(connection);
    connections_.push_back(item_->activated.connect([this](const std::string& token) { showWindow(token); }));
    refreshTray();
    ports_.notifications.use(connection);
    ports_.scheme.watch(connection);
    ports_.secrets.watch(connection);
}

void AppDelegate::doWithoutSession() {
    ports_.notifications.doWithout();
    showWindow(); // there will be no icon
}

void AppDelegate::prepareWindows() {
    if (std::exchange(windowsPrepared_, true)) return;
    ports_.session.open();
    // With its first window Qt asks the session bus for readers of the screen, and would wait for a silent bus.
    if (!ports_.session.connection()) keepQtFromSessionBus();
    dravel::translateQt(*qApp);
}

void AppDelegate::showWindow(const std::string& activationToken) {
    prepareWindows();
    if (!menuInstalled_) installMenu();
    ports_.window.show(activationToken);
}

void AppDelegate::showWindowWithoutTray() {
    if (ports_.window.isShown()) return;
    if (!item_) return showWindow();
    item_->askIfShown([this](bool shown) {
        if (!shown) showWindow();
    });
}

void AppDelegate::installMenu() {
    menuInstalled_ = true;
    const auto settings = [this] {
        ports_.model.requestSection("settings");
        showWindow();
    };
    dravel::StandardMenu::install(ports_.window.window(), aboutTacla(ports_.actions.version),
                                  {.settings = settings,
                                   .quit = ports_.quit,
                                   .undo = [this] { ports_.model.undo(); },
                                   .canUndo = [this] { return ports_.model.canUndo(); },
                                   .copy = [this] { ports_.window.copyTask(); }});
}

void AppDelegate::refreshTray() {
    if (!item_) return;
    const auto open = ports_.model.state().openCount();
    item_->show({open, statusTitle(open), statusToolTip(open), trayColour(ports_.scheme.preference())});
    ports_.menu.refresh();
}

// Many changes of the model in one turn of the loop need one look at it.
void AppDelegate::refreshTraySoon() {
    if (std::exchange(refreshPending_, true)) return;
    ports_.loop.post([this] {
        refreshPending_ = false;
        refreshTray();
    });
}

void AppDelegate::followColours() {
    refreshTray();
    switch (ports_.scheme.preference()) {
    case ColourScheme::Preference::dark: return dravel::setAppearance(dravel::Appearance::dark);
    case ColourScheme::Preference::light: return dravel::setAppearance(dravel::Appearance::light);
    case ColourScheme::Preference::unknown: return dravel::setAppearance(ports_.platformAppearance);
    }
}

void AppDelegate::perform(const MenuCommand& command) {
    switch (command.kind) {
    case MenuCommand::Kind::none: return;
    case MenuCommand::Kind::toggle: return toggle(command.key);
    case MenuCommand::Kind::openWindow: return showWindow();
    case MenuCommand::Kind::openFile: return ports_.actions.openFile(ports_.model.state().file);
    case MenuCommand::Kind::openAgenda: return ports_.actions.openAgenda();
    case MenuCommand::Kind::checkForUpdates: return ports_.updater.checkForUpdates();
    case MenuCommand::Kind::quit: return ports_.quit();
    }
}

void AppDelegate::toggle(const std::string& key) {
    const auto& tasks = ports_.model.state().tasks;
    const auto task = std::find_if(tasks.begin(), tasks.end(), [&](const TaskItem& item) { return item.key == key; });
    if (task != tasks.end()) ports_.model.toggle(TaskItem(*task)); // a copy: the list is replaced meanwhile
}

void AppDelegate::respond(const NotificationServer::Response& response) {
    switch (response.action) {
    case NotificationServer::Action::done: return ports_.model.setDone(response.key);
    case NotificationServer::Action::tomorrow:
        return ports_.model.reschedule(response.key, Day::of(ports_.loop.now()).plusDays(1));
    case NotificationServer::Action::opened:
        ports_.model.requestSection("today");
        return showWindow(response.activationToken);
    }
}

void AppDelegate::activate(const SingleInstance::Activation& activation) {
    if (activation.action != "new-task" || ports_.model.state().onboarding) return showWindow(activation.token);
    prepareWindows();
    ports_.window.showQuickEntry(activation.token);
}

}
