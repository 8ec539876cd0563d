#include "Tacla/Linux/SystemEvents.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String portal("org.freedesktop.portal.Desktop");
constexpr QLatin1String path("/org/freedesktop/portal/desktop");
constexpr QLatin1String networkMonitor("org.freedesktop.portal.NetworkMonitor");
constexpr QLatin1String settings("org.freedesktop.portal.Settings");
constexpr QLatin1String appearance("org.freedesktop.appearance");
constexpr QLatin1String colours("color-scheme");
constexpr QLatin1String interface("org.gnome.desktop.interface"); // also where the desktop is another one
constexpr QLatin1String animations("enable-animations");
constexpr QLatin1String plasma("org.kde.kdeglobals.KDE");
constexpr QLatin1String duration("AnimationDurationFactor");

QVariant unwrapped(QVariant value) { // Read answers with a variant in a variant
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

}

void ColourScheme::watch(QDBusConnection session) {
    qRegisterMetaType<QDBusVariant>(); // a slot with a type that Qt has not met yet is not connected, without a word
    session.connect({}, path, settings, u"SettingChanged"_s, this,
                    SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(session, appearance, colours);
    ask(session, interface, animations);
    ask(session, plasma, duration);
}

void ColourScheme::ask(QDBusConnection& session, const QString& group, const QString& key) {
    auto message = QDBusMessage::createMethodCall(portal, path, settings, u"Read"_s);
    message << group << key;
    auto* call = new QDBusPendingCallWatcher(session.asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, group, key] {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (reply.isValid()) set(group, key, reply.value().variant());
    });
}

void ColourScheme::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    set(group, key, value.variant());
}

void ColourScheme::set(const QString& group, const QString& key, const QVariant& value) {
    if (group == interface && key == animations) return set(animations_, unwrapped(value).toBool());
    if (group == plasma && key == duration) return set(speed_, unwrapped(value).toDouble());
    if (group != appearance || key != colours) return;
    const auto number = unwrapped(value).toUInt(); // 0 no preference, 1 dark, 2 light
    const auto preference = number == 1 ? Preference::dark : number == 2 ? Preference::light : Preference::unknown;
    set(preference_, preference);
}

QColor trayColour(ColourScheme::Preference preference) {
    switch (preference) {
    case ColourScheme::Preference::dark: return QColor(0xF5, 0xF5, 0xF5);
    case ColourScheme::Preference::light: return QColor(0x13, 0x19, 0x27);
    case ColourScheme::Preference::unknown: break;
    }
    return QColor(0x80, 0x86, 0x90); // 3.7:1 on white, 5.7:1 on black
}

void WakeWatch::watch(QDBusConnection system) {
    system.connect({}, u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s, this,
                   SLOT(prepareForSleep(bool)));
}

void WakeWatch::prepareForSleep(bool goingDown) {
    if (!goingDown) wokeUp();
}

void NetworkWatch::watchManager(QDBusConnection system) {
    system.connect({}, u"/org/freedesktop/NetworkManager"_s, u"org.freedesktop.NetworkManager"_s, u"StateChanged"_s,
                   this, SLOT(stateChanged(uint)));
}

void NetworkWatch::stateChanged(uint state) {
    constexpr uint connectedSite = 60, connectedGlobal = 70; // whether the internet is there, not everybody checks
    if (state == connectedSite || state == connectedGlobal) back();
}

void NetworkWatch::watchPortal(QDBusConnection session) {
    session_.emplace(session);
    session.connect({}, path, networkMonitor, u"changed"_s, this, SLOT(monitorChanged()));
}

// The signal says neither what has changed nor to what.
void NetworkWatch::monitorChanged() {
    const auto question = QDBusMessage::createMethodCall(portal, path, networkMonitor, u"GetAvailable"_s);
    auto* call = new QDBusPendingCallWatcher(session_->asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        const QDBusPendingReply<bool> reply = *call;
        if (reply.isValid() && reply.value()) back();
    });
}

void SecretStoreWatch::watch(QDBusConnection session) {
    auto* watcher =
        new QDBusServiceWatcher(u"org.freedesktop.secrets"_s, session, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { appeared(); });
    session.connect({}, {}, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                    {u"org.freedesktop.Secret.Collection"_s}, {}, this, SLOT(collectionChanged(QString, QVariantMap)));
}

void SecretStoreWatch::collectionChanged(const QString&, const QVariantMap& changed) {
    const auto locked = changed.find(u"Locked"_s);
    if (locked != changed.end() && !locked->toBool()) appeared();
}

}
