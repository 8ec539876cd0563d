#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace tacla {

// Tells when the machine wakes from sleep, after logind's PrepareForSleep(false) on the system bus.
class Wake final : public QObject {
    Q_OBJECT

  public:
    explicit Wake(std::function<void()> wokeUp) : wokeUp_(std::move(wokeUp)) {}
    void watch(QDBusConnection system);

  private Q_SLOTS:
    void prepareForSleep(bool goingDown);

  private:
    std::function<void()> wokeUp_;
};

// Tells when the store of secrets comes or is unlocked, on the session bus.
class SecretStoreWatch final : public QObject {
    Q_OBJECT

  public:
    explicit SecretStoreWatch(std::function<void()> appeared) : appeared_(std::move(appeared)) {}
    void watch(QDBusConnection session);

  private Q_SLOTS:
    void collectionChanged(const QString& interface, const QVariantMap& changed);

  private:
    std::function<void()> appeared_;
};

}
