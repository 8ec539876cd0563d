#include "Tacla/Linux/FreedesktopActions.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/OpenFile.h"
#include "DravelKit/Foundation/Text.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileDialog>
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

void openPanel(QWidget* parent, const Path& folder, const Chosen& chosen, const QString& title,
               const std::function<void(QFileDialog&)>& prepare) {
    auto* panel = new QFileDialog(parent, title, QString::fromStdString(folder.string()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    prepare(*panel);
    QObject::connect(panel, &QFileDialog::fileSelected, panel, [chosen](const QString& file) {
        if (!file.isEmpty()) chosen(Path(file.toStdString()));
    });
    panel->open();
}

// The desktop's own way to the browser, else the browser that the system knows.
QString addressOpener() {
    for (const auto* name : {"xdg-open", "x-www-browser"})
        if (auto found = QStandardPaths::findExecutable(QLatin1StringView(name)); !found.isEmpty()) return found;
    return {};
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

void openFile(const Path& file) { QDesktopServices::openUrl(url(file)); }

void openAddress(const std::string& address, const std::function<void()>& failed) {
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

void reveal(Bus& session, const Path& file) {
    const auto openFolder = [file] { QDesktopServices::openUrl(url(file.parent_path())); };
    if (!session.connection()) return openFolder();
    auto message = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
                                                  u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    message << QStringList{url(file).toString(QUrl::FullyEncoded)} << QString();
    auto* call = new QDBusPendingCallWatcher(session.connection()->asyncCall(message), &session);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [call, openFolder] {
        call->deleteLater();
        if (call->isError()) openFolder();
    });
}

void showFolder(const Path& folder) try {
    dravel::makeFolders(folder);
    QDesktopServices::openUrl(url(folder));
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

void chooseFile(QWidget* parent, const Path& folder, const Chosen& chosen) {
    const auto title = u"Choisissez le fichier où Tacla lit et écrit vos tâches."_s;
    openPanel(parent, folder, chosen, title, [](QFileDialog& panel) {
        panel.setFileMode(QFileDialog::ExistingFile);
        panel.setNameFilter(u"Listes de tâches (*.md *.markdown *.txt *.text)"_s);
        panel.setLabelText(QFileDialog::Accept, u"Choisir"_s);
        panel.setLabelText(QFileDialog::Reject, u"Annuler"_s);
    });
}

void createFile(QWidget* parent, const Path& folder, const Chosen& chosen) {
    const auto title = u"Où ranger votre nouvelle liste de tâches ?"_s;
    openPanel(parent, folder, chosen, title, [](QFileDialog& panel) {
        panel.setAcceptMode(QFileDialog::AcceptSave);
        panel.setOption(QFileDialog::DontConfirmOverwrite); // a list that exists is used as it is
        panel.setNameFilter(u"Listes de tâches (*.md)"_s);
        panel.setDefaultSuffix(u"md"_s);
        panel.selectFile(u"taches.md"_s);
        panel.setLabelText(QFileDialog::Accept, u"Enregistrer"_s);
        panel.setLabelText(QFileDialog::Reject, u"Annuler"_s);
    });
}

void chooseClient(QWidget* parent, const Chosen& chosen) {
    const auto title = u"Choisissez le fichier que Google vous a donné (client_secret_….json)."_s;
    const auto downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation).toStdString();
    openPanel(parent, downloads, chosen, title, [](QFileDialog& panel) {
        panel.setFileMode(QFileDialog::ExistingFile);
        panel.setNameFilter(u"Clients Google (*.json)"_s);
        panel.setLabelText(QFileDialog::Accept, u"Choisir"_s);
        panel.setLabelText(QFileDialog::Reject, u"Annuler"_s);
    });
}

}
