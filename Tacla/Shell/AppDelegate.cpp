#include "Tacla/Shell/AppDelegate.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/StandardMenu/AboutPanel.h"
#include "Tacla/StatusMenu/StatusMenu.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tacla {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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
        if (!ports_.startedByBus) showWindow(ports_.activationToken);
    }
    ports_.loop.post([this] { // after the first picture
        ports_.model.login().apply();
        ports_.system.whenOpen([this](const QDBusConnection& connection) {
            events_.wake.watch(connection);
            events_.network.watchManager(connection);
        });
        ports_.system.open();
    });
    connections_.push_back(ports_.session.lost.connect([this] { doWithoutSession(); }));
    if (ports_.session.isAbsent()) return doWithoutSession();
    // Over a bus that stays silent neither an icon nor a launcher can bring the window.
    busPatience_ = ports_.loop.after(10s, [this] {
        if (!item_) showWindow();
    });
}

void AppDelegate::observe() {
    const auto keep = [this](dravel::Connection connection) { connections_.push_back(std::move(connection)); };
    keep(ports_.model.changed.connect([this] { refreshTraySoon(); }));
    keep(ports_.menu.chosen.connect([this](const MenuCommand& command) { perform(command); }));
    keep(ports_.instance.activated.connect([this](const auto& activation) { activate(activation); }));
    keep(ports_.search.chosen.connect([this](const std::string& key) { showTask(key); }));
    keep(ports_.model.windowAsked.connect([this](const std::string& token) { showWindow(token); }));
    keep(
        ports_.quickEntryKey.changed.connect([this] { ports_.model.tellOfQuickEntryKey(ports_.quickEntryKey.key()); }));
    keep(ports_.quickEntryKey.chosen.connect(
        [this] { ports_.model.store([this] { ports_.preferences.setQuickEntryKey(true); }); }));
    keep(ports_.quickEntryKey.pressed.connect(
        [this](const std::string& token) { activate({.token = token, .action = ApplicationAction::newTask}); }));
    keep(events_.scheme.changed.connect([this] { followColours(); }));
    keep(events_.wake.wokeUp.connect([this] { ports_.model.wokeUp(); }));
    keep(events_.network.back.connect([this] { ports_.model.mirror().tell(MirrorEvent::Kind::networkBack); }));
    keep(events_.secrets.appeared.connect(
        [this] { ports_.model.mirror().tell(MirrorEvent::Kind::accountStoreAppeared); }));
}

void AppDelegate::joinSession(const QDBusConnection& connection) {
    ports_.portal.use(connection);
    ports_.quickEntryKey.use(ports_.preferences.quickEntryKey());
    ports_.menu.registerOn(connection); // before the item, whose host asks for it
    item_.emplace(connection, ports_.trayHost);
    connections_.push_back(item_->activated.connect([this](const std::string& token) { showWindow(token); }));
    connections_.push_back(item_->middleClicked.connect([this](const std::string& token) {
        showWindow(token);
        ports_.window.beginTask();
    }));
    connections_.push_back(item_->shown.connect([this](bool shown) { trayAnswered(shown); }));
    refreshTray();
    if (ports_.gnomeNotifications != nullptr) ports_.gnomeNotifications->use(connection);
    ports_.notifications.use(connection);
    events_.scheme.watch(connection);
    events_.secrets.watch(connection);
    events_.network.watchPortal(connection);
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

void AppDelegate::prepareWindow() {
    prepareWindows();
    if (!menuInstalled_) installMenu();
}

void AppDelegate::showWindow(const std::string& activationToken) {
    prepareWindow();
    ports_.window.show(activationToken);
}

// Who starts the program from a launcher, and gets no icon, gets the window. Nobody asked for it at login.
void AppDelegate::trayAnswered(bool shown) {
    ports_.model.tellOfTray(shown);
    const auto token = std::exchange(ports_.activationToken, {});
    if (!shown && !token.empty() && !ports_.window.isShown()) showWindow(token);
}

void AppDelegate::showTask(const std::string& key, const std::string& activationToken) {
    ports_.model.requestSection("today"); // where it is, unless the task is known to be elsewhere
    showWindow(activationToken);
    ports_.window.showTask(key);
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
                                   .undo = [this] { ports_.list.undo(); },
                                   .canUndo = [this] { return ports_.list.state().canUndo; },
                                   .copy = [this] { ports_.window.copyTask(); }});
}

void AppDelegate::refreshTray() {
    if (!item_) return;
    const auto& state = ports_.model.state();
    const auto open = state.openCount();
    item_->show({open, statusTitle(open), statusToolTip(state), trayColour(events_.scheme.preference()),
                 state.fileError.has_value()});
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
    dravel::setMotion(events_.scheme.motion());
    switch (events_.scheme.preference()) {
    case ColourScheme::Preference::dark: return dravel::setAppearance(dravel::Appearance::dark);
    case ColourScheme::Preference::light: return dravel::setAppearance(dravel::Appearance::light);
    case ColourScheme::Preference::unknown: return dravel::setAppearance(ports_.platformAppearance);
    }
}

void AppDelegate::perform(const MenuCommand& command) {
    switch (command.kind) {
    case MenuCommand::Kind::none: return;
    case MenuCommand::Kind::toggle: return ports_.list.toggle(TaskItem(command.task.value())); // the menu is rebuilt
    case MenuCommand::Kind::openWindow: return showWindow(item_ ? item_->takeActivationToken() : "");
    case MenuCommand::Kind::openFile: return ports_.actions.openFile(ports_.model.state().file);
    case MenuCommand::Kind::openAgenda: return ports_.actions.openAgenda();
    case MenuCommand::Kind::checkForUpdates: return ports_.updater.checkForUpdates();
    case MenuCommand::Kind::quit: return ports_.quit();
    }
}

void AppDelegate::activate(const SingleInstance::Activation& activation) {
    using Action = NotificationServer::Action;
    const auto& action = activation.action;
    const auto answer = [&](Action chosen) {
        ports_.notifications.responded({chosen, {GnomeNotifications::server, activation.key}, activation.token});
    };
    if (action == ApplicationAction::done) return answer(Action::done);
    if (action == ApplicationAction::tomorrow) return answer(Action::tomorrow);
    if (action == ApplicationAction::openTask) return answer(Action::opened);
    if (action == ApplicationAction::newTask && !ports_.model.state().onboarding) {
        prepareWindows();
        return ports_.window.showQuickEntry(activation.token);
    }
    prepareWindow(); // a window that is made later starts on today, whatever was asked before
    if (action == ApplicationAction::today || action == ApplicationAction::late) ports_.model.requestSection(action);
    showWindow(activation.token);
}

}
