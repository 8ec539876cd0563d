#include "Tacla/Linux/DesktopNotifications.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QTimer>

#include <limits>
#include <utility>

namespace tacla {

namespace {

constexpr QLatin1String name("org.freedesktop.Notifications");
constexpr QLatin1String path("/org/freedesktop/Notifications");

// A reminder that a frozen server answers late is shown late: asked for again meanwhile, it would be shown twice. The
// bus answers for a server that ends.
constexpr int endlessPatience = std::numeric_limits<int>::max();

constexpr auto noServer = "Aucun service de notification ne répond.";

// The error's own words are English, and for developers.
std::string refusal(const QDBusMessage& error) {
    switch (QDBusError(error).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::NoReply:
    case QDBusError::TimedOut:
    case QDBusError::Disconnected: return noServer;
    default: return "Le service de notification refuse : " + error.errorName().toStdString();
    }
}

QString plain(const std::string& text) {
    return QString::fromStdString(text).replace(QChar(u'\0'), QChar(u' ')); // the bus carries no NUL
}

QStringList actions(const NotificationContent& content) {
    if (content.key.empty()) return {};
    return {QStringLiteral("default"), QStringLiteral("Ouvrir"),   QStringLiteral("DONE"),
            QStringLiteral("Fait"),    QStringLiteral("TOMORROW"), QStringLiteral("Demain")};
}

QVariantMap hints() {
    return {{QStringLiteral("desktop-entry"), QStringLiteral("fr.dravel.Tacla")},
            {QStringLiteral("urgency"), QVariant::fromValue<uchar>(1)},
            {QStringLiteral("category"), QStringLiteral("x-tacla.reminder")},
            {QStringLiteral("sound-name"), QStringLiteral("message-new-instant")}};
}

std::optional<NotificationServer::Action> action(const QString& key) {
    if (key == QLatin1String("DONE")) return NotificationServer::Action::done;
    if (key == QLatin1String("TOMORROW")) return NotificationServer::Action::tomorrow;
    if (key == QLatin1String("default")) return NotificationServer::Action::opened;
    return {};
}

}

DesktopNotifications::DesktopNotifications(QString icon) : icon_(std::move(icon)) {}

void DesktopNotifications::use(const QDBusConnection& connection) {
    connection_ = connection;
    // Signals of any sender: naming the service would ask the bus for its owner, and wait for the answer. Identifiers
    // that are not ours are ignored anyway.
    const auto listen = [this](const char* signal, const char* slot) {
        connection_->connect({}, path, name, QLatin1String(signal), this, slot);
    };
    listen("ActionInvoked", SLOT(actionInvoked(uint, QString)));
    listen("ActivationToken", SLOT(activationToken(uint, QString)));
    listen("NotificationClosed", SLOT(notificationClosed(uint, uint)));
    auto* watcher = new QDBusServiceWatcher(name, *connection_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &DesktopNotifications::forget);
    if (!waiting_.empty()) askServer();
}

void DesktopNotifications::doWithout() {
    without_ = true;
    connection_.reset();
    if (!waiting_.empty()) learned({{.session = false}});
    forget();
}

void DesktopNotifications::forget() {
    server_.reset();
    shown_.clear(); // a new server counts from the start
    changed();
}

void DesktopNotifications::ask(std::function<void(Capabilities)> answer) {
    learn([answer = std::move(answer)](const Server& server) { answer(server.capabilities); });
}

void DesktopNotifications::learn(Learned answer) {
    waiting_.push_back(std::move(answer));
    if (server_) return QTimer::singleShot(0, this, [this] { learned(*server_); });
    if (waiting_.size() > 1) return; // the question is on its way
    if (connection_) return askServer();
    QTimer::singleShot(without_ ? 0 : patience, this, [this] {
        if (!connection_) learned({{.session = !without_}});
    });
}

void DesktopNotifications::askServer() {
    call(QStringLiteral("GetCapabilities"), {}, [this](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) return learned({});
        const auto words = reply.arguments().value(0).toStringList();
        const auto has = [&](const char* word) { return words.contains(QLatin1String(word)); };
        server_ = Server{{.reachable = true, .actions = has("actions"), .body = has("body")}, has("body-markup")};
        learned(*server_);
    });
}

void DesktopNotifications::learned(const Server& server) {
    const auto known = server; // an answer may make us forget
    for (const auto& answer : std::exchange(waiting_, {})) answer(known);
}

void DesktopNotifications::show(const NotificationRequest& request, std::function<void(Error)> shown) {
    learn([this, request, shown = std::move(shown)](const Server& server) { notify(request, server, shown); });
}

void DesktopNotifications::notify(const NotificationRequest& request, const Server& server,
                                  const std::function<void(Error)>& shown) {
    if (!server.capabilities.reachable) return shown(noServer);
    const auto& content = request.content;
    const auto body = plain(content.body);
    const QList<QVariant> arguments{QStringLiteral("Tacla"),
                                    0U,
                                    icon_,
                                    plain(content.title),
                                    server.bodyMarkup ? body.toHtmlEscaped() : body,
                                    server.capabilities.actions ? actions(content) : QStringList(),
                                    hints(),
                                    -1};
    const auto answered = [this, key = content.key, shown](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) return shown(refusal(reply));
        if (!key.empty()) shown_[reply.arguments().value(0).toUInt()] = {key, {}};
        shown({});
    };
    call(QStringLiteral("Notify"), arguments, answered, content.key.empty() ? patience : endlessPatience);
}

void DesktopNotifications::call(const QString& method, const QList<QVariant>& arguments,
                                std::function<void(const QDBusMessage&)> answer, int milliseconds) {
    auto message = QDBusMessage::createMethodCall(name, path, name, method);
    message.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(connection_->asyncCall(message, milliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer = std::move(answer)] {
        watcher->deleteLater();
        answer(watcher->reply());
    });
}

void DesktopNotifications::actionInvoked(uint id, const QString& key) {
    const auto found = shown_.find(id);
    const auto chosen = action(key);
    if (found == shown_.end() || !chosen) return; // another program's
    const auto shown = found->second;
    shown_.erase(found);
    // Some servers leave the bubble up after an action.
    call(QStringLiteral("CloseNotification"), {id}, [](const QDBusMessage&) {});
    responded({*chosen, shown.key, shown.activationToken});
}

void DesktopNotifications::activationToken(uint id, const QString& token) {
    if (const auto found = shown_.find(id); found != shown_.end()) found->second.activationToken = token.toStdString();
}

void DesktopNotifications::notificationClosed(uint id, uint) { shown_.erase(id); }

}
