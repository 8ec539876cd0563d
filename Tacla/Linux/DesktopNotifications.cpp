#include "Tacla/Linux/DesktopNotifications.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <QUuid>
#include <QVariantMap>

#include <gio/gio.h>

#include <limits>
#include <utility>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String name("org.freedesktop.Notifications");
constexpr QLatin1String path("/org/freedesktop/Notifications");

// A reminder that a frozen server answers late is shown late: asked for again meanwhile, it would be shown twice. The
// bus answers for a server that ends.
constexpr int endlessPatience = std::numeric_limits<int>::max();

QDBusMessage serverCall(const QString& method, const QString& server = name) {
    return QDBusMessage::createMethodCall(server, path, name, method);
}

QDBusMessage busCall(const QString& method) {
    const auto bus = u"org.freedesktop.DBus"_s;
    return QDBusMessage::createMethodCall(bus, u"/org/freedesktop/DBus"_s, bus, method);
}

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
    return {u"default"_s, u"Ouvrir"_s, u"DONE"_s, u"Fait"_s, u"TOMORROW"_s, u"Demain"_s};
}

QVariantMap hints(bool persistence) {
    QVariantMap hints{{u"desktop-entry"_s, u"fr.dravel.Tacla"_s},
                      {u"urgency"_s, QVariant::fromValue<uchar>(1)},
                      {u"category"_s, u"x-tacla.reminder"_s},
                      {u"sound-name"_s, u"message-new-instant"_s}};
    if (persistence) hints[u"transient"_s] = false; // kept in the server's list until it is answered
    return hints;
}

// A reminder stays until it is answered; for how long anything else does is the server's business.
int expiry(const NotificationContent& content) { return content.key.empty() ? -1 : 0; }

std::optional<NotificationServer::Action> action(const QString& key) {
    if (key == "DONE"_L1) return NotificationServer::Action::done;
    if (key == "TOMORROW"_L1) return NotificationServer::Action::tomorrow;
    if (key == "default"_L1) return NotificationServer::Action::opened;
    return {};
}

}

DesktopNotifications::DesktopNotifications(QString icon) : icon_(std::move(icon)) {}

void DesktopNotifications::use(const QDBusConnection& connection) {
    connection_ = connection;
    listen();
    auto* watcher = new QDBusServiceWatcher(name, *connection_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &DesktopNotifications::forget);
    learnBus();
}

void DesktopNotifications::listen() {
    // Signals of any sender: naming the service would ask the bus for its owner, and wait for the answer. Whose they
    // are is told by their message.
    const auto listenTo = [this](const char* signal, const char* slot) {
        connection_->connect({}, path, name, QLatin1String(signal), this, slot);
    };
    listenTo("ActionInvoked", SLOT(actionInvoked(uint, QString, QDBusMessage)));
    listenTo("ActivationToken", SLOT(activationToken(uint, QString, QDBusMessage)));
    listenTo("NotificationClosed", SLOT(notificationClosed(uint, uint, QDBusMessage)));
}

// Comes before every answer of a server, and so before the first handle.
void DesktopNotifications::learnBus() {
    call(busCall(u"GetId"_s), [this](const QDBusMessage& reply) {
        bus_ = reply.arguments().value(0).toString().toStdString();
        if (!waiting_.empty()) askServer();
    });
}

void DesktopNotifications::doWithout() {
    without_ = true;
    connection_.reset();
    if (!waiting_.empty()) learned({{.session = false}});
    forget();
}

void DesktopNotifications::flush() {
    if (connection_) connection_->call(busCall(u"GetId"_s), QDBus::Block, 200);
}

void DesktopNotifications::forget() {
    ++servers_;
    server_.reset();
    activationTokens_.clear();
    changed();
}

void DesktopNotifications::ask(std::function<void(Capabilities)> answer) {
    learn([answer = std::move(answer)](const Server& server) { answer(server.capabilities); });
}

void DesktopNotifications::learn(Learned answer) {
    waiting_.push_back(std::move(answer));
    if (server_) return QTimer::singleShot(0, this, [this] { learned(*server_); });
    if (waiting_.size() > 1) return; // the question is on its way
    if (connection_ && bus_) return askServer();
    if (connection_) return; // asked once the bus has told its name
    QTimer::singleShot(without_ ? 0 : patience, this, [this] {
        if (!connection_) learned({{.session = !without_}});
    });
}

void DesktopNotifications::askServer() {
    call(serverCall(u"GetCapabilities"_s), [this](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) return learned({});
        const auto words = reply.arguments().value(0).toStringList();
        const auto has = [&](const char* word) { return words.contains(QLatin1String(word)); };
        askWhoItIs({{.reachable = true, .actions = has("actions"), .body = has("body")},
                    has("body-markup"),
                    has("persistence")});
    });
}

// Qt since 6.8 does not tell who replied.
void DesktopNotifications::askWhoItIs(Server server) {
    auto message = busCall(u"GetNameOwner"_s);
    message << QString(name);
    call(message, [this, server, asked = servers_](const QDBusMessage& reply) mutable {
        if (asked != servers_) return askServer(); // another one came meanwhile
        if (reply.type() != QDBusMessage::ReplyMessage) return learned({});
        server.capabilities.server = identity(reply.arguments().value(0).toString());
        askItsName(server);
    });
}

void DesktopNotifications::askItsName(const Server& server) {
    const auto message = serverCall(u"GetServerInformation"_s, uniqueName(server.capabilities.server));
    call(message, [this, server, asked = servers_](const QDBusMessage& reply) {
        if (asked != servers_) return askServer();
        server_ = server;
        server_->capabilities.tellsOnlyOwner = reply.arguments().value(0).toString() == "dunst"_L1;
        learned(*server_);
    });
}

// By value: an answer may make us forget.
void DesktopNotifications::learned(Server server) { // NOLINT(performance-unnecessary-value-param)
    for (const auto& answer : std::exchange(waiting_, {})) answer(server);
}

void DesktopNotifications::show(const NotificationRequest& request,
                                std::function<void(const Error&, const BubbleHandle&)> shown) {
    learn([this, request, shown = std::move(shown)](const Server& server) { notify(request, server, shown); });
}

void DesktopNotifications::notify(const NotificationRequest& request, const Server& server,
                                  const std::function<void(const Error&, const BubbleHandle&)>& shown) {
    if (!server.capabilities.reachable) return shown(noServer, {});
    const auto& content = request.content;
    const auto body = plain(content.body);
    const bool replaces = request.replaced && request.replaced->server == server.capabilities.server;
    const auto& owner = server.capabilities.server;
    auto message = serverCall(u"Notify"_s, uniqueName(owner));
    message << u"Tacla"_s << (replaces ? QString::fromStdString(request.replaced->id).toUInt() : 0U) << icon_
            << plain(content.title) << (server.bodyMarkup ? body.toHtmlEscaped() : body)
            << (server.capabilities.actions ? actions(content) : QStringList()) << hints(server.persistence)
            << expiry(content);
    const auto answered = [shown, owner](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) return shown(refusal(reply), {});
        shown({}, {owner, std::to_string(reply.arguments().value(0).toUInt())});
    };
    call(message, answered, content.key.empty() ? patience : endlessPatience);
}

void DesktopNotifications::close(const BubbleHandle& bubble) {
    if (!connection_ || !bus_ || !bubble.server.starts_with(*bus_)) return; // gone with its bus
    auto message = serverCall(u"CloseNotification"_s, uniqueName(bubble.server));
    message << QString::fromStdString(bubble.id).toUInt();
    connection_->asyncCall(message);
}

void DesktopNotifications::call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> answer,
                                int milliseconds) {
    auto* watcher = new QDBusPendingCallWatcher(connection_->asyncCall(message, milliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer = std::move(answer)] {
        watcher->deleteLater();
        answer(watcher->reply());
    });
}

void DesktopNotifications::actionInvoked(uint id, const QString& key, const QDBusMessage& signal) {
    const auto bubble = handle(id, signal);
    if (const auto chosen = action(key)) responded({*chosen, bubble, activationTokens_[bubble]});
    activationTokens_.erase(bubble);
}

void DesktopNotifications::activationToken(uint id, const QString& token, const QDBusMessage& signal) {
    activationTokens_[handle(id, signal)] = token.toStdString();
}

void DesktopNotifications::notificationClosed(uint id, uint, const QDBusMessage& signal) {
    const auto bubble = handle(id, signal);
    activationTokens_.erase(bubble);
    closed(bubble);
}

namespace {

QDBusMessage gnomeCall(const QString& method) {
    const auto server = QString::fromLatin1(GnomeNotifications::server);
    return QDBusMessage::createMethodCall(server, u"/org/gtk/Notifications"_s, server, method);
}

QString inApplication(const char* action) { return u"app."_s + QLatin1String(action); }

QVariantMap button(const QString& label, const char* action, const QString& id) {
    return {{u"label"_s, label}, {u"action"_s, inApplication(action)}, {u"target"_s, id}};
}

// What is urgent would break through « Ne pas déranger », which GNOME tells to no program over the bus.
bool mayDisturb() {
    auto* schemas = g_settings_schema_source_get_default();
    constexpr auto group = "org.gnome.desktop.notifications";
    auto* schema = schemas ? g_settings_schema_source_lookup(schemas, group, TRUE) : nullptr;
    if (schema == nullptr) return true;
    auto* settings = g_settings_new_full(schema, nullptr, nullptr);
    const bool may = g_settings_get_boolean(settings, "show-banners");
    g_object_unref(settings);
    g_settings_schema_unref(schema);
    return may;
}

QVariantMap notification(const NotificationContent& content, const QString& id) {
    const QList<QVariantMap> buttons{button(u"Fait"_s, ApplicationAction::done, id),
                                     button(u"Demain"_s, ApplicationAction::tomorrow, id)};
    return {{u"title"_s, plain(content.title)},
            {u"body"_s, plain(content.body)},
            {u"priority"_s, mayDisturb() ? u"urgent"_s : u"high"_s},
            {u"default-action"_s, inApplication(ApplicationAction::openTask)},
            {u"default-action-target"_s, id},
            {u"buttons"_s, QVariant::fromValue(buttons)}};
}

}

GnomeNotifications::GnomeNotifications(NotificationServer& other)
    : other_(other),
      otherResponded_(other.responded.connect([this](const Response& response) { responded(response); })),
      otherClosed_(other.closed.connect([this](const BubbleHandle& bubble) { closed(bubble); })),
      otherChanged_(other.changed.connect([this] { changed(); })) {
    qDBusRegisterMetaType<QList<QVariantMap>>();
}

void GnomeNotifications::ask(std::function<void(Capabilities)> answer) {
    other_.ask([this, answer = std::move(answer)](Capabilities capabilities) {
        if (connection_) capabilities.server = server;
        answer(std::move(capabilities));
    });
}

void GnomeNotifications::close(const BubbleHandle& bubble) {
    if (bubble.server != server) return other_.close(bubble);
    if (!connection_) return;
    auto message = gnomeCall(u"RemoveNotification"_s);
    message << u"fr.dravel.Tacla"_s << QString::fromStdString(bubble.id);
    connection_->asyncCall(message);
}

void GnomeNotifications::show(const NotificationRequest& request,
                              std::function<void(const Error&, const BubbleHandle&)> shown) {
    if (!connection_ || request.content.key.empty()) return other_.show(request, std::move(shown));
    const bool replaces = request.replaced && request.replaced->server == server;
    const auto id =
        replaces ? QString::fromStdString(request.replaced->id) : QUuid::createUuid().toString(QUuid::Id128);
    auto message = gnomeCall(u"AddNotification"_s);
    message << u"fr.dravel.Tacla"_s << id << notification(request.content, id);
    auto* call = new QDBusPendingCallWatcher(connection_->asyncCall(message, endlessPatience), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, request, id, shown = std::move(shown)] {
        call->deleteLater();
        if (call->isError()) return other_.show(request, shown);
        shown({}, {server, id.toStdString()});
    });
}

}
