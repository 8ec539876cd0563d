#include "Tacla/Linux/FreedesktopActions.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/OpenFile.h"
#include "DravelKit/Foundation/Text.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include <unistd.h>

#include <array>
#include <string_view>
#include <utility>

namespace tacla::FreedesktopActions {

using namespace Qt::StringLiterals;

namespace {

QUrl url(const Path& file) { return QUrl::fromLocalFile(QString::fromStdString(file.string())); }

constexpr QLatin1String fileChooser("org.freedesktop.portal.FileChooser");
constexpr QLatin1String openUri("org.freedesktop.portal.OpenURI");

// A file panel, as a value.
struct Panel {
    QString title, accept, kindOfFiles;
    QStringList patterns;
    QString newName{}; // a file is to be named, not chosen
};

// Which files the portal's panel shows: (sa(us)).
struct PortalPattern {
    uint kind = 0; // 0: such as "*.md"
    QString text;
};
struct PortalFilter {
    QString name;
    QList<PortalPattern> patterns;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalPattern& pattern) {
    argument.beginStructure();
    argument << pattern.kind << pattern.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalPattern& pattern) {
    argument.beginStructure();
    argument >> pattern.kind >> pattern.text;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const PortalFilter& filter) {
    argument.beginStructure();
    argument << filter.name << filter.patterns;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalFilter& filter) {
    argument.beginStructure();
    argument >> filter.name >> filter.patterns;
    argument.endStructure();
    return argument;
}

void openOwnPanel(QWidget* parent, const Path& folder, const Chosen& chosen, const Panel& content) {
    auto* panel = new QFileDialog(parent, content.title, QString::fromStdString(folder.string()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setNameFilter(content.kindOfFiles + u" ("_s + content.patterns.join(u' ') + u')');
    panel->setLabelText(QFileDialog::Accept, content.accept);
    panel->setLabelText(QFileDialog::Reject, u"Annuler"_s);
    if (content.newName.isEmpty()) {
        panel->setFileMode(QFileDialog::ExistingFile);
    } else {
        panel->setAcceptMode(QFileDialog::AcceptSave);
        panel->setOption(QFileDialog::DontConfirmOverwrite); // a list that exists is used as it is
        panel->setDefaultSuffix(QFileInfo(content.newName).suffix());
        panel->selectFile(content.newName);
    }
    QObject::connect(panel, &QFileDialog::fileSelected, panel, [chosen](const QString& file) {
        if (!file.isEmpty()) chosen(Path(file.toStdString()));
    });
    panel->open();
}

// The same for the portal, which wants a folder's final NUL.
QVariantMap panelOptions(const Path& folder, const Panel& content) {
    qDBusRegisterMetaType<PortalPattern>();
    qDBusRegisterMetaType<QList<PortalPattern>>();
    qDBusRegisterMetaType<PortalFilter>();
    qDBusRegisterMetaType<QList<PortalFilter>>();
    PortalFilter filter{content.kindOfFiles, {}};
    for (const auto& pattern : content.patterns) filter.patterns.append({0, pattern});
    QVariantMap options{{u"modal"_s, true},
                        {u"accept_label"_s, content.accept},
                        {u"current_folder"_s, QByteArray::fromStdString(folder.string()) + '\0'},
                        {u"filters"_s, QVariant::fromValue(QList{filter})}};
    if (!content.newName.isEmpty()) options[u"current_name"_s] = content.newName;
    return options;
}

Path chosenPath(const QVariantMap& results, const Panel& content) {
    const auto first = results.value(u"uris"_s).toStringList().value(0);
    Path file = QUrl(first).toLocalFile().toStdString();
    if (!content.newName.isEmpty() && !file.empty() && !file.has_extension())
        file += Path(content.newName.toStdString()).extension();
    return file;
}

void openPanel(Portal& portal, QWidget* parent, const Path& folder, const Chosen& chosen, const Panel& content) {
    const auto method = QLatin1String(content.newName.isEmpty() ? "OpenFile" : "SaveFile");
    portal.ask({fileChooser, method, {portalParent(parent), content.title}, panelOptions(folder, content)},
               [=, parent = QPointer(parent)](Portal::Outcome outcome, const QVariantMap& results) {
                   if (outcome == Portal::Outcome::failed) return openOwnPanel(parent, folder, chosen, content);
                   if (const auto file = chosenPath(results, content); !file.empty()) chosen(file);
               });
}

// The desktop's own way to the browser, else the browser that the system knows.
QString addressOpener() {
    for (const auto* name : {"xdg-open", "x-www-browser"})
        if (auto found = QStandardPaths::findExecutable(QLatin1StringView(name)); !found.isEmpty()) return found;
    return {};
}

void openInBrowser(const std::string& address, const std::function<void()>& failed) {
    const auto tellFailure = [failed] {
        if (failed) failed();
    };
    const auto opener = addressOpener();
    if (opener.isEmpty()) return tellFailure();
    // Without an owner: some openers live as long as the browser, which stays when we go.
    auto* process = new QProcess;
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setChildProcessModifier([] { ::setsid(); });
    QObject::connect(process, &QProcess::finished, process, [process, tellFailure](int status) {
        process->deleteLater();
        if (status != 0) tellFailure();
    });
    QObject::connect(process, &QProcess::errorOccurred, process, [process, tellFailure](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        process->deleteLater();
        tellFailure();
    });
    process->start(opener, {QString::fromStdString(address)});
}

// A file or a folder.
void openLocal(Portal& portal, const Path& path) {
    const auto then = [path](Portal::Outcome outcome, const QVariantMap&) {
        if (outcome == Portal::Outcome::failed) QDesktopServices::openUrl(url(path));
    };
    const auto open = dravel::OpenFile::ifThere(path, O_PATH);
    if (!open) return then(Portal::Outcome::failed, {});
    const auto handle = QVariant::fromValue(QDBusUnixFileDescriptor(open->descriptor()));
    portal.ask({openUri, QLatin1String("OpenFile"), {QString(), handle}}, then);
}

// The command that opens the notification settings of the desktops that XDG_CURRENT_DESKTOP names ("ubuntu:GNOME"),
// its words split by blanks; empty when none is known.
std::string_view notificationSettingsCommand(std::string_view currentDesktop) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 6> commands{{
        {"GNOME", "gnome-control-center notifications"},
        {"KDE", "systemsettings kcm_notifications"},
        {"XFCE", "xfce4-notifyd-config"},
        {"X-Cinnamon", "cinnamon-settings notifications"},
        {"MATE", "mate-notification-properties"},
        {"LXQt", "lxqt-config-notificationd"},
    }};
    for (const auto name : dravel::split(currentDesktop, ":"))
        for (const auto& [desktop, command] : commands)
            if (name == desktop) return command;
    return "";
}

}

// Not through the portal, which at first asks which program it shall be; from within a sandbox Qt asks it all the same.
void openFile(const Path& file) { QDesktopServices::openUrl(url(file)); }

void openAddress(Portal& portal, const std::string& address, const std::function<void()>& failed) {
    const auto then = [address, failed](Portal::Outcome outcome, const QVariantMap&) {
        if (outcome == Portal::Outcome::failed) return openInBrowser(address, failed);
        if (outcome == Portal::Outcome::left && failed) failed();
    };
    portal.ask({openUri, QLatin1String("OpenURI"), {QString(), QString::fromStdString(address)}}, then);
}

void reveal(Portal& portal, const Path& file) {
    const auto openFolder = [&portal, file] { openLocal(portal, file.parent_path()); };
    const auto& session = portal.session();
    if (!session) return openFolder();
    auto message = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
                                                  u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    message << QStringList{url(file).toString(QUrl::FullyEncoded)} << QString();
    auto* call = new QDBusPendingCallWatcher(session->asyncCall(message), &portal);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [call, openFolder] {
        call->deleteLater();
        if (call->isError()) openFolder();
    });
}

void showFolder(Portal& portal, const Path& folder) try {
    dravel::makeFolders(folder);
    openLocal(portal, folder);
} catch (const dravel::FileError&) {
    return; // nobody can look into a folder that cannot be made
}

void openNotificationSettings() {
    const auto desktop = qgetenv("XDG_CURRENT_DESKTOP").toStdString();
    const auto command = notificationSettingsCommand(desktop);
    auto words = QString::fromUtf8(command.data(), static_cast<qsizetype>(command.size())).split(u' ');
    const auto program = words.takeFirst();
    if (!program.isEmpty()) QProcess::startDetached(program, words);
}

void chooseFile(Portal& portal, QWidget* parent, const Path& folder, const Chosen& chosen) {
    openPanel(portal, parent, folder, chosen,
              {.title = u"Choisissez le fichier où Tacla lit et écrit vos tâches."_s,
               .accept = u"Choisir"_s,
               .kindOfFiles = u"Listes de tâches"_s,
               .patterns = {u"*.md"_s, u"*.markdown"_s, u"*.txt"_s, u"*.text"_s}});
}

void createFile(Portal& portal, QWidget* parent, const Path& folder, const Chosen& chosen) {
    openPanel(portal, parent, folder, chosen,
              {.title = u"Où ranger votre nouvelle liste de tâches ?"_s,
               .accept = u"Enregistrer"_s,
               .kindOfFiles = u"Listes de tâches"_s,
               .patterns = {u"*.md"_s},
               .newName = u"taches.md"_s});
}

void chooseClient(Portal& portal, QWidget* parent, const Chosen& chosen) {
    const auto downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation).toStdString();
    openPanel(portal, parent, downloads, chosen,
              {.title = u"Choisissez le fichier que Google vous a donné (client_secret_….json)."_s,
               .accept = u"Choisir"_s,
               .kindOfFiles = u"Clients Google"_s,
               .patterns = {u"*.json"_s}});
}

}
