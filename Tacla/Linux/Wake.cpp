#include "Tacla/Linux/Wake.h"

#include <QDBusServiceWatcher>
#include <QVariantMap>

namespace tacla {

void Wake::watch(QDBusConnection system) {
    system.connect({}, QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
                   QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
}

void Wake::prepareForSleep(bool goingDown) {
    if (!goingDown) wokeUp_();
}

void SecretStoreWatch::watch(QDBusConnection session) {
    auto* watcher = new QDBusServiceWatcher(QStringLiteral("org.freedesktop.secrets"), session,
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { appeared_(); });
    session.connect({}, {}, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                    {QStringLiteral("org.freedesktop.Secret.Collection")}, {}, this,
                    SLOT(collectionChanged(QString, QVariantMap)));
}

void SecretStoreWatch::collectionChanged(const QString&, const QVariantMap& changed) {
    const auto locked = changed.find(QStringLiteral("Locked"));
    if (locked != changed.end() && !locked->toBool()) appeared_();
}

}
