#include "Tacla/Linux/GnomeNotifications.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QUuid>
#include <QVariantMap>

#include <limits>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

QString plain(const std::string& text) {
    return QString::fromStdString(text).replace(QChar(u'\0'), QChar(u' ')); // the bus carries no NUL
}

QDBusMessage serverCall(const char* method) {
    const auto name = QString::fromLatin1(GnomeNotifications::server);
    return QDBusMessage::createMethodCall(name, u"/org/gtk/Notifications"_s, name, QString::fromLatin1(method));
}

QString inApplication(const char* action) { return u"app."_s + QLatin1String(action); }

QVariantMap button(const QString& label, const char* action, const QString& id) {
    return {{u"label"_s, label}, {u"action"_s, inApplication(action)}, {u"target"_s, id}};
}

QVariantMap notification(const NotificationContent& content, const QString& id) {
    const QList<QVariantMap> buttons{button(u"Fait"_s, ApplicationAction::done, id),
                                     button(u"Demain"_s, ApplicationAction::tomorrow, id)};
    return {{u"title"_s, plain(content.title)}, {u"body"_s, plain(content.body)},
            {u"priority"_s, u"urgent"_s},       {u"default-action"_s, inApplication(ApplicationAction::openTask)},
            {u"default-action-target"_s, id},   {u"buttons"_s, QVariant::fromValue(buttons)}};
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
    message << u"fr.dravel.Tacla"_s << QString::fromStdString(bubble.id);
    connection_->asyncCall(message);
}

void GnomeNotifications::show(const NotificationRequest& request,
                              std::function<void(const Error&, const BubbleHandle&)> shown) {
    if (!connection_ || request.content.key.empty()) return other_.show(request, std::move(shown));
    const bool replaces = request.replaced && request.replaced->server == server;
    const auto id =
        replaces ? QString::fromStdString(request.replaced->id) : QUuid::createUuid().toString(QUuid::Id128);
    auto message = serverCall("AddNotification");
    message << u"fr.dravel.Tacla"_s << id << notification(request.content, id);
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
