#include "Tacla/Linux/GnomeNotifications.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>

#include <limits>

namespace tacla {

namespace {

QString plain(const std::string& text) {
    return QString::fromStdString(text).replace(QChar(u'\0'), QChar(u' ')); // the bus carries no NUL
}

QString inApplication(const char* action) { return QStringLiteral("app.") + QLatin1String(action); }

QVariantMap button(const QString& label, const char* action, const QString& key) {
    return {{QStringLiteral("label"), label},
            {QStringLiteral("action"), inApplication(action)},
            {QStringLiteral("target"), key}};
}

QVariantMap notification(const NotificationContent& content) {
    const auto key = plain(content.key);
    const QList<QVariantMap> buttons{button(QStringLiteral("Fait"), ApplicationAction::done, key),
                                     button(QStringLiteral("Demain"), ApplicationAction::tomorrow, key)};
    return {{QStringLiteral("title"), plain(content.title)},
            {QStringLiteral("body"), plain(content.body)},
            {QStringLiteral("priority"), QStringLiteral("urgent")},
            {QStringLiteral("default-action"), inApplication(ApplicationAction::openTask)},
            {QStringLiteral("default-action-target"), key},
            {QStringLiteral("buttons"), QVariant::fromValue(buttons)}};
}

}

GnomeNotifications::GnomeNotifications(NotificationServer& other)
    : other_(other),
      otherResponded_(other.responded.connect([this](const Response& response) { responded(response); })),
      otherChanged_(other.changed.connect([this] { changed(); })) {
    qDBusRegisterMetaType<QList<QVariantMap>>();
}

void GnomeNotifications::show(const NotificationRequest& request, std::function<void(Error)> shown) {
    if (!connection_ || request.content.key.empty()) return other_.show(request, std::move(shown));
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.gtk.Notifications"), QStringLiteral("/org/gtk/Notifications"),
        QStringLiteral("org.gtk.Notifications"), QStringLiteral("AddNotification"));
    message << QStringLiteral("fr.dravel.Tacla") << plain(request.identifier) << notification(request.content);
    // As with the other server: one that answers late has shown it all the same.
    constexpr int endlessPatience = std::numeric_limits<int>::max();
    auto* call = new QDBusPendingCallWatcher(connection_->asyncCall(message, endlessPatience), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, request, shown = std::move(shown)] {
        call->deleteLater();
        if (call->isError()) return other_.show(request, shown);
        shown({});
    });
}

}
