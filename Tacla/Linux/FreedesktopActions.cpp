#include "Tacla/Linux/FreedesktopActions.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/FilePaths.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskDocument/TaskDocument.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileDialog>
#include <QProcess>
#include <QUrl>

#include <array>
#include <utility>

namespace tacla {

namespace {

using std::filesystem::path;

QUrl url(const path& file) { return QUrl::fromLocalFile(QString::fromStdString(file.string())); }

void reveal(Bus& session, const path& file) {
    const auto openFolder = [file] { QDesktopServices::openUrl(url(file.parent_path())); };
    if (!session.connection()) return openFolder();
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    message << QStringList{url(file).toString(QUrl::FullyEncoded)} << QString();
    auto* call = new QDBusPendingCallWatcher(session.connection()->asyncCall(message), &session);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [call, openFolder] {
        call->deleteLater();
        if (call->isError()) openFolder();
    });
}

// Empty, where nothing was put into it yet.
void showFolder(const path& folder) try {
    dravel::makeFolders(folder);
    QDesktopServices::openUrl(url(folder));
} catch (const dravel::FileError&) {
    return; // nobody can look into a folder that cannot be made
}

void openNotificationSettings() {
    const auto desktop = qgetenv("XDG_CURRENT_DESKTOP").toStdString();
    const auto command = notificationSettingsCommand(desktop);
    auto words = QString::fromUtf8(command.data(), static_cast<qsizetype>(command.size())).split(QLatin1Char(' '));
    const auto program = words.takeFirst();
    if (!program.isEmpty()) QProcess::startDetached(program, words);
}

void openPanel(QWidget* parent, const path& folder, const DesktopActions::Chosen& chosen, const QString& title,
               const std::function<void(QFileDialog&)>& prepare) {
    auto* panel = new QFileDialog(parent, title, QString::fromStdString(folder.string()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    prepare(*panel);
    QObject::connect(panel, &QFileDialog::fileSelected, panel, [chosen](const QString& file) {
        if (!file.isEmpty()) chosen(path(file.toStdString()));
    });
    panel->open();
}

void chooseFile(QWidget* parent, const path& folder, const DesktopActions::Chosen& chosen) {
    const auto title = QStringLiteral("Choisissez le fichier où Tacla lit et écrit vos tâches.");
    openPanel(parent, folder, chosen, title, [](QFileDialog& panel) {
        panel.setFileMode(QFileDialog::ExistingFile);
        panel.setNameFilter(QStringLiteral("Listes de tâches (*.md *.markdown *.txt *.text)"));
        panel.setLabelText(QFileDialog::Accept, QStringLiteral("Choisir"));
        panel.setLabelText(QFileDialog::Reject, QStringLiteral("Annuler"));
    });
}

void createFile(QWidget* parent, const path& folder, const DesktopActions::Chosen& chosen) {
    const auto title = QStringLiteral("Où ranger votre nouvelle liste de tâches ?");
    openPanel(parent, folder, chosen, title, [](QFileDialog& panel) {
        panel.setAcceptMode(QFileDialog::AcceptSave);
        panel.setOption(QFileDialog::DontConfirmOverwrite); // a list that exists is used as it is
        panel.setNameFilter(QStringLiteral("Listes de tâches (*.md)"));
        panel.setDefaultSuffix(QStringLiteral("md"));
        panel.selectFile(QStringLiteral("taches.md"));
        panel.setLabelText(QFileDialog::Accept, QStringLiteral("Enregistrer"));
        panel.setLabelText(QFileDialog::Reject, QStringLiteral("Annuler"));
    });
}

}

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

DesktopActions freedesktopActions(Bus& session, const dravel::UserFolders& folders, std::string version) {
    DesktopActions actions;
    actions.openFile = [](const path& file) { QDesktopServices::openUrl(url(file)); };
    actions.reveal = [&session](const path& file) { reveal(session, file); };
    actions.showCopies = [folder = copiesFolder(folders)] { showFolder(folder); };
    actions.openAgenda = [] {
        QDesktopServices::openUrl(QUrl(QStringLiteral("https://calendar.google.com/calendar/r")));
    };
    actions.openNotificationSettings = openNotificationSettings;
    actions.chooseFile = chooseFile;
    actions.createFile = createFile;
    actions.version = std::move(version);
    actions.home = folders.home;
    return actions;
}

}
