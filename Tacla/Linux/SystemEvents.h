#pragma once

#include "DravelKit/Foundation/Signal.h"

#include <QColor>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariantMap>

#include <optional>
#include <utility>

namespace tacla {

// Whether the desktop prefers light or dark, and wants things to move, as its settings portal tells, and tells again
// when it changes.
class ColourScheme final : public QObject {
    Q_OBJECT

  public:
    enum class Preference { unknown, dark, light };

    void watch(QDBusConnection session);

    Preference preference() const { return preference_; }
    bool motion() const { return animations_ && speed_ > 0; }
    dravel::Signal<> changed;

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void ask(QDBusConnection&, const QString& group, const QString& key);
    template <class Value>
    void set(Value& field, Value value) {
        if (std::exchange(field, value) != value) changed();
    }
    void set(const QString& group, const QString& key, const QVariant& value);

    Preference preference_ = Preference::unknown;
    bool animations_ = true; // GNOME's wish
    double speed_ = 1;       // Plasma's: how long they take, 0 for none
};

// The tray icon's colour, readable on the panel of such a desktop; none when it is not known.
QColor trayColour(ColourScheme::Preference);

// Tells when the machine wakes from sleep, after logind's PrepareForSleep(false) on the system bus.
class WakeWatch final : public QObject {
    Q_OBJECT

  public:
    void watch(QDBusConnection system);
    dravel::Signal<> wokeUp;

  private Q_SLOTS:
    void prepareForSleep(bool goingDown);
};

// Tells when the machine is on the network again: after NetworkManager's StateChanged on the system bus, and, where
// another manager keeps the network or Tacla sits in a sandbox, after what the desktop's portal tells on the session
// bus.
class NetworkWatch final : public QObject {
    Q_OBJECT

  public:
    void watchManager(QDBusConnection system);
    void watchPortal(QDBusConnection session);
    dravel::Signal<> back;

  private Q_SLOTS:
    void stateChanged(uint state);
    void monitorChanged();

  private:
    std::optional<QDBusConnection> session_;
};

// Tells when the store of secrets comes or is unlocked, on the session bus.
class SecretStoreWatch final : public QObject {
    Q_OBJECT

  public:
    void watch(QDBusConnection session);
    dravel::Signal<> appeared;

  private Q_SLOTS:
    void collectionChanged(const QString& interface, const QVariantMap& changed);
};

struct SystemEvents {
    ColourScheme scheme;
    WakeWatch wake;
    NetworkWatch network;
    SecretStoreWatch secrets;
};

}
