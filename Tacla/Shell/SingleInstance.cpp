#include "Tacla/Shell/SingleInstance.h"

#include "applicationadaptor.h"

#include <QDBusMessage>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String name("fr.dravel.Tacla");
constexpr QLatin1String path("/fr/dravel/Tacla");
constexpr QLatin1String interface("org.freedesktop.Application");
constexpr int patience = 5000; // ms

bool takeName(const QDBusConnection& connection) {
    constexpr uint doNotQueue = 4, primaryOwner = 1, alreadyOwner = 4;
    auto message = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                  u"org.freedesktop.DBus"_s, u"RequestName"_s);
    message << QString(name) << doNotQueue;
    const auto reply = connection.call(message, QDBus::Block, patience);
    const auto answer = reply.arguments().value(0).toUInt();
    return reply.type() != QDBusMessage::ReplyMessage || answer == primaryOwner || answer == alreadyOwner;
}

// False when nobody answered: the first one may be about to end.
bool activateFirst(const QDBusConnection& connection, const QString& token) {
    auto message = QDBusMessage::createMethodCall(name, path, interface, u"Activate"_s);
    message << QVariantMap{{u"activation-token"_s, token}, {u"desktop-startup-id"_s, token}};
    return connection.call(message, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

}

std::string activationTokenFromEnvironment() {
    const auto token = qgetenv("XDG_ACTIVATION_TOKEN");
    return (token.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : token).toStdString();
}

SingleInstance::Role SingleInstance::claim(QDBusConnection connection, const std::string& activationToken) {
    // The object before the name: who finds the name taken calls the object at once.
    new ApplicationAdaptor(this);
    connection.registerObject(path, this);
    const auto token = QString::fromStdString(activationToken);
    if (takeName(connection)) return Role::first;
    if (!activateFirst(connection, token) && takeName(connection)) return Role::first;
    connection.unregisterObject(path);
    return Role::second;
}

void SingleInstance::Activate(const QVariantMap& platformData) { tell(platformData); }

void SingleInstance::Open(const QStringList&, const QVariantMap& platformData) { tell(platformData); }

void SingleInstance::ActivateAction(const QString& action, const QVariantList& parameter,
                                    const QVariantMap& platformData) {
    tell(platformData, action, parameter.value(0).toString());
}

void SingleInstance::tell(const QVariantMap& platformData, const QString& action, const QString& key) {
    auto token = platformData.value(u"activation-token"_s).toString();
    if (token.isEmpty()) token = platformData.value(u"desktop-startup-id"_s).toString();
    // The caller waits for the answer, not for the window.
    QMetaObject::invokeMethod(
        this,
        [this, activation = Activation{token.toStdString(), action.toStdString(), key.toStdString()}] {
            activated(activation);
        },
        Qt::QueuedConnection);
}

}
