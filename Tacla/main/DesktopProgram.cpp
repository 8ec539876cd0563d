#include "DravelKit/DravelLogo/DravelLogo.h"
#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/Text.h"
#include "DravelKit/GoogleAuth/SecretServiceKeyring.h"
#include "DravelKit/Run/Background.h"
#include "Tacla/CalendarSync/GoogleCalendarService.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"
#include "Tacla/Linux/FreedesktopActions.h"
#include "Tacla/Linux/ProgramEntries.h"
#include "Tacla/Linux/QtMainLoop.h"
#include "Tacla/MainWindow/MainWindowController.h"
#include "Tacla/Shell/AppDelegate.h"
#include "Tacla/StatusMenu/StatusMenu.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/main/Programs.h"

#include <QApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QPalette>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QUrl>

#include <langinfo.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace {

using namespace Qt::StringLiterals;
using namespace tacla;
using namespace std::chrono_literals;
using std::filesystem::path;

constexpr auto noScreen = "pas d'écran : l'application ne s'ouvre que dans une session de bureau";
constexpr auto screenLost = "l'écran a disparu : l'application se termine";

// A bus that works answers within a millisecond; a dead one must not hold up the first picture.
constexpr auto busPatience = 50ms;

void complain(const std::string& message) { std::fputs(("tacla : " + message + "\n").c_str(), stderr); }

int fail(const std::string& message) {
    complain(message);
    return EXIT_FAILURE;
}

std::string environment(const char* name) { return qgetenv(name).toStdString(); }

// Qt wants a locale whose texts are UTF-8, and complains of any other. LC_ALL would overrule what is chosen here: what
// it says for the other categories goes on as LANG.
void speakUtf8() {
    const bool known = std::setlocale(LC_ALL, "") != nullptr;
    if (known && std::string_view(::nl_langinfo(CODESET)) == "UTF-8") return;
    if (!known) {
        qputenv("LC_ALL", "C.UTF-8");
        return;
    }
    if (const auto all = environment("LC_ALL"); !all.empty()) {
        qputenv("LANG", QByteArray::fromStdString(all));
        qunsetenv("LC_ALL");
    }
    qputenv("LC_CTYPE", "C.UTF-8");
}

// Platforms other than X11 and Wayland, such as "offscreen", need no display.
bool hasScreen() {
    const auto platform = environment("QT_QPA_PLATFORM");
    const bool needsDisplay = platform.empty() || platform.starts_with("xcb") || platform.starts_with("wayland");
    return !needsDisplay || !environment("DISPLAY").empty() || !environment("WAYLAND_DISPLAY").empty();
}

// Qt ends the process by abort when the display does not answer, and tells of its platform in its own words: neither is
// for users.
void report(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtFatalMsg) {
        complain(noScreen);
        std::_Exit(EXIT_FAILURE);
    }
    // Qt would run on into exit(), under the feet of background jobs.
    if (message.startsWith("The X11 connection broke"_L1) || message.startsWith("The Wayland connection"_L1)) {
        complain(screenLost);
        std::_Exit(EXIT_FAILURE);
    }
    const std::string_view category = context.category ? context.category : "";
    if (category.starts_with("qt.qpa.") || category.starts_with("qt.accessibility.") ||
        message.startsWith("QStandardPaths:"_L1))
        return;
    std::fputs((qFormatLogMessage(type, context, message).toStdString() + "\n").c_str(), stderr);
}

bool onGnome() {
    const auto desktops = environment("XDG_CURRENT_DESKTOP");
    const auto names = dravel::split(desktops, ":");
    return std::ranges::find(names, "GNOME") != names.end();
}

struct Paths {
    dravel::UserFolders folders = dravel::UserFolders::fromEnvironment();
    path program = installationPrefix() / "bin" / "tacla"; // by which the application is started
    path share = installationPrefix() / "share";

    bool isInstalled() const { return share == "/usr/share"; }

    // The icon by its name, or by its file where it is not installed for the whole desktop.
    QString notificationIcon() const {
        const auto file = share / "icons/hicolor/scalable/apps/fr.dravel.Tacla.svg";
        if (isInstalled() || !std::filesystem::exists(file)) return u"fr.dravel.Tacla"_s;
        return QUrl::fromLocalFile(QString::fromStdString(file.string())).toString(QUrl::FullyEncoded);
    }
};

// Qt gives the menus of a window to a panel that shows them, and on Wayland forgets to tell it of which window they
// are, unless Plasma's own plugin is there: nobody would have them.
void keepMenus() {
    const auto plugin = QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platformthemes/KDEPlasmaPlatformTheme6.so"_s;
    if (environment("WAYLAND_DISPLAY").empty() || QFile::exists(plugin)) return;
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
}

void nameApplication() {
    qInstallMessageHandler(report);
    QCoreApplication::setApplicationName(u"Tacla"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(TACLA_VERSION));
    QGuiApplication::setDesktopFileName(u"fr.dravel.Tacla"_s);
}

void setUp(QApplication& application, dravel::Appearance appearance) {
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(dravel::tickIcon());
    // The autostart entry opens the program at login: the session must not do so too.
    QObject::connect(&application, &QGuiApplication::saveStateRequest, &application,
                     [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
    dravel::installLook(application, appearance);
}

// The end of a session, `kill`, Ctrl+C: the program ends in order, as by « Quitter ». A second one ends it at once.
class EndSignals {
  public:
    EndSignals() : notifier_(wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, [] { QCoreApplication::exit(); });
        for (const int number : {SIGTERM, SIGINT}) {
            struct sigaction action = {};
            if (::sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue; // as by nohup
            action = {};
            action.sa_handler = [](int) { ::eventfd_write(wakeUp, 1); };
            action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
            ::sigaction(number, &action, nullptr);
        }
    }

  private:
    static inline int wakeUp = -1; // all that a handler may touch
    QSocketNotifier notifier_;
};

DesktopActions desktopActions(Portal& portal, QuickEntryKey& key, const dravel::UserFolders& folders) {
    using namespace std::placeholders;
    namespace Do = FreedesktopActions;
    const auto portalOf = std::ref(portal);
    DesktopActions actions;
    actions.openFile = Do::openFile;
    actions.reveal = std::bind(Do::reveal, portalOf, _1);
    actions.showCopies = std::bind(Do::showFolder, portalOf, copiesFolder(folders));
    actions.openAgenda = [&portal] { Do::openAddress(portal, "https://calendar.google.com/calendar/r"); };
    actions.openGuide = std::bind(Do::openFile, Paths().share / "doc/tacla-desktop/google-agenda.md");
    actions.openNotificationSettings = Do::openNotificationSettings;
    actions.chooseFile = std::bind(Do::chooseFile, portalOf, _1, _2, _3);
    actions.createFile = std::bind(Do::createFile, portalOf, _1, _2, _3);
    actions.chooseClient = std::bind(Do::chooseClient, portalOf, _1, _2);
    actions.chooseQuickEntryKey = [&key](QWidget* over) { key.choose(over); };
    actions.version = TACLA_VERSION;
    actions.home = folders.home;
    return actions;
}

GoogleCalendarService::Ports calendarPorts(Preferences& preferences, const Paths& paths, QtMainLoop& loop,
                                           Portal& portal) {
    return {.preferences = preferences,
            .folders = {.data = paths.folders.data, .resources = paths.share / "tacla", .locks = paths.folders.locks},
            .locks = paths.folders.locks,
            .endpoints = dravel::GoogleEndpoints::fromEnvironment(googleBaseVariable),
            .keyring = std::make_shared<dravel::SecretServiceKeyring>(),
            .openBrowser = [&loop, &portal](const std::string& url, const auto& failed) {
                loop.post([=, &portal] { FreedesktopActions::openAddress(portal, url, failed); });
            }};
}

TrayHost trayHostOf(const Paths& paths) {
    auto host = TrayHost::of(environment("XDG_CURRENT_DESKTOP"));
    host.coloursSymbols = host.coloursSymbols && paths.isInstalled(); // the symbol is
    return host;
}

// The first of its name: runs until it is told to quit.
int runFirst(Bus& session, SingleInstance& instance, DesktopSearch& search, dravel::Appearance appearance,
             const std::string& activationToken) {
    const Paths paths;
    QtMainLoop loop;
    std::optional<Watchdog> watchdog;
    if (const auto file = environment("TACLA_WATCHDOG"); !file.empty()) watchdog.emplace(file);
    AppModel* told = nullptr;
    Preferences preferences(preferencesFile(paths.folders), paths.folders.locks, [&](const std::string& message) {
        loop.post([&told, message] { told->report(message); }); // read in background jobs as well
    });
    makeCommandLineLink(commandLineLink(paths.folders.home, environment("PATH"), paths.program, existsOrDangles));

    Bus system(Bus::Kind::system);
    Portal portal;
    QuickEntryKey quickEntryKey(portal);
    DesktopNotifications notifications(paths.notificationIcon());
    std::optional<GnomeNotifications> gnomeNotifications;
    if (onGnome()) gnomeNotifications.emplace(notifications);
    AutostartLoginItem loginItem(paths.folders.config, paths.program, paths.folders.locks);
    GoogleCalendarService calendar(calendarPorts(preferences, paths, loop, portal));
    dravel::ThreadedBackground background(loop), disk(loop); // their jobs use what stands above
    NotificationServer* const server =
        gnomeNotifications ? static_cast<NotificationServer*>(&*gnomeNotifications) : &notifications;
    AppModel model({loop, background, disk, preferences, paths.folders, server, &loginItem, &calendar},
                   resolvedFile(environment("TACLA_FILE"), preferences, paths.folders));
    told = &model;

    dravel::Updater updater;
    const auto actions = desktopActions(portal, quickEntryKey, paths.folders);
    const auto trayHost = trayHostOf(paths);
    MenuServer menu([&] { return statusMenu(model.state(), updater.isAvailable()); }, trayHost.drawsBoxes);
    search.findWith([&](const std::string& typed) { return searchEntries(model.state(), typed); });
    MainWindowController window(model, preferences, actions, [&loop] { return loop.now(); });
    AppDelegate delegate({.loop = loop,
                          .session = session,
                          .system = system,
                          .instance = instance,
                          .notifications = notifications,
                          .gnomeNotifications = gnomeNotifications ? &*gnomeNotifications : nullptr,
                          .search = search,
                          .trayHost = trayHost,
                          .portal = portal,
                          .quickEntryKey = quickEntryKey,
                          .preferences = preferences,
                          .model = model,
                          .list = model.list(),
                          .menu = menu,
                          .window = window,
                          .updater = updater,
                          .actions = actions,
                          .platformAppearance = appearance,
                          .activationToken = activationToken,
                          .startedByBus = !environment("DBUS_STARTER_ADDRESS").empty() && !::isatty(STDIN_FILENO),
                          .quit = [] { QCoreApplication::exit(); }});
    const EndSignals endSignals; // before there is anything to see
    delegate.launch();
    const int status = QCoreApplication::exec();
    model.end();
    notifications.flush();
    return status;
}

int runApplication(int& argc, char** argv) {
    if (!hasScreen()) return fail(noScreen);
    const auto activationToken = activationTokenFromEnvironment(); // Qt removes it from the environment
    nameApplication();
    Bus session(Bus::Kind::session);
    std::optional<WithoutSessionBus> without;
    if (!session.answersWithin(busPatience)) without.emplace();
    keepMenus();
    QApplication application(argc, argv);
    without.reset();

    session.open();
    SingleInstance instance;
    DesktopSearch search;
    if (auto connection = session.connection()) {
        search.registerOn(*connection);
        if (instance.claim(*connection, activationToken) == SingleInstance::Role::second) return EXIT_SUCCESS;
    }
    const auto appearance = dravel::appearanceOf(QGuiApplication::palette());
    setUp(application, appearance);
    return runFirst(session, instance, search, appearance, activationToken);
}

int runNotifyTest(int& argc, char** argv) {
    nameApplication();
    QCoreApplication application(argc, argv);
    Bus session(Bus::Kind::session);
    DesktopNotifications notifications(Paths().notificationIcon());
    if (session.answersWithin(5s)) session.open();
    if (const auto connection = session.connection())
        notifications.use(*connection);
    else
        notifications.doWithout();

    const NotificationRequest request{
        .content = {"Notification d'essai", "L'icône du castor doit apparaître à gauche.", ""}};
    notifications.ask([&](const auto&) {
        notifications.show(request, [](const NotificationServer::Error& error, const auto&) {
            if (error) std::fputs((*error + "\n").c_str(), stderr);
            QCoreApplication::exit();
        });
    });
    return QCoreApplication::exec();
}

// --snapshot <path> [--dark]
int runSnapshot(int& argc, char** argv) {
    const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
    const path file = arguments[2];
    const bool dark = std::any_of(arguments.begin() + 1, arguments.end(),
                                  [](const char* argument) { return std::string_view(argument) == "--dark"; });
    const auto appearance = dark ? dravel::Appearance::dark : dravel::Appearance::light;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const WithoutSessionBus without;
    nameApplication();
    QApplication application(argc, argv);
    dravel::installLook(application, appearance);

    const Paths paths;
    QtMainLoop loop;
    dravel::ThreadedBackground background(loop);
    Preferences preferences(preferencesFile(paths.folders), paths.folders.locks);
    AppModel model({loop, background, background, preferences, paths.folders},
                   resolvedFile(environment("TACLA_FILE"), preferences, paths.folders), true);
    model.list().read();
    background.finish();
    DesktopActions actions;
    actions.version = TACLA_VERSION;
    actions.home = paths.folders.home;
    try {
        MainWindowController::headlessSnapshot(model, actions, [&loop] { return loop.now(); }, file, {.dark = dark});
    } catch (const dravel::FileError& error) {
        return fail(impossibleToWrite(error));
    }
    return EXIT_SUCCESS;
}

}

// Started by `tacla` only, which has checked the arguments.
int main(int argc, char** argv) {
    ::pthread_setname_np(::pthread_self(), "tacla"); // as which the user knows this process
    const std::string_view command = argc > 1 ? argv[1] : "";
    speakUtf8();
    try {
        if (command == "--notify-test") return runNotifyTest(argc, argv);
        if (command == "--snapshot") return runSnapshot(argc, argv);
        return runApplication(argc, argv);
    } catch (const std::exception& error) { // such as addresses of another machine in TACLA_GOOGLE_BASE
        return fail(error.what());
    }
}
