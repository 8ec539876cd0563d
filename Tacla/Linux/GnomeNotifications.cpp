#include "Tacla/Linux/GnomeNotifications.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QUuid>
#include <QVariantMap>

#include <limits>

namespace tacla {

namespace {

QString plain(const std::string& text) {
    return QString::fromStdString(text).replace(QChar(u'\0'), QChar(u' ')); // the bus carries no NUL
}

QDBusMessage serverCall(const char* method) {
    const auto name = QString::fromLatin1(GnomeNotifications::server);
    return QDBusMessage::createMethodCall(name, QStringLiteral("/org/gtk/Notifications"), name,
                                          QString::fromLatin1(method));
}

QString inApplication(const char* action) { return QStringLiteral("app.") + QLatin1String(action); }

QVariantMap button(const QString& label, const char* action, const QString& id) {
    return {{QStringLiteral("label"), label},
            {QStringLiteral("action"), inApplication(action)},
            {QStringLiteral("target"), id}};
}

QVariantMap notification(const NotificationContent& content, const QString& id) {
    const QList<QVariantMap> buttons{button(QStringLiteral("Fait"), ApplicationAction::done, id),
                                     button(QStringLiteral("Demain"), ApplicationAction::tomorrow, id)};
    return {{QStringLiteral("title"), plain(content.title)},
            {QStringLiteral("body"), plain(content.body)},
            {QStringLiteral("priority"), QStringLiteral("urgent")},
            {QStringLiteral("default-action"), inApplication(ApplicationAction::openTask)},
            {QStringLiteral("default-action-target"), id},
            {QStringLiteral("buttons"), QVariant::fromValue(buttons)}};
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
    auto message = serverCall("RemoveNotification");
    message << QStringLiteral("fr.dravel.Tacla") << QString::fromStdString(bubble.id);
    connection_->asyncCall(message);
}

void GnomeNotifications::show(const NotificationRequest& request,
                              std::function<void(const Error&, const BubbleHandle&)> shown) {
    if (!connection_ || request.content.key.empty()) return other_.show(request, std::move(shown));
    const bool replaces = request.replaced && request.replaced->server == server;
    const auto id =
        replaces ? QString::fromStdString(request.replaced->id) : QUuid::createUuid().toString(QUuid::Id128);
    auto message = serverCall("AddNotification");
    message << QStringLiteral("fr.dravel.Tacla") << id << notification(request.content, id);
    // As with the other server: one that answers late has shown it all the same.
    constexpr int endlessPatience = std::numeric_limits<int>::max();
    auto* call = new QDBusPendingCallWatcher(connection_->asyncCall(message, endlessPatience), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, request, id, shown = std::move(shown)] {
        call->deleteLater();
        if (call->isError()) return other_.show(request, shown);
        shown({}, {server, id.toStdString()});
    });
}

}
