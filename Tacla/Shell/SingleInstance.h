#pragma once

#include "DravelKit/Foundation/Signal.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <string>

namespace tacla {

// The token by which a desktop lets a program's window come to the front, taken from the environment.
std::string activationTokenFromEnvironment();

// The program's name on the session bus, which is also its lock. Who comes second asks the first to show its window.
class SingleInstance final : public QObject {
    Q_OBJECT

  public:
    enum class Role { first, second };

    // Takes the name, or hands the activation over to who has it. A bus that refuses to tell leaves us alone: first.
    Role claim(QDBusConnection, const std::string& activationToken);

    struct Activation {
        std::string token;
        std::string action{}; // the name of the one that was chosen in a launcher or on a notification
        std::string key{};    // of the task that it concerns
    };
    dravel::Signal<const Activation&> activated;

    Q_INVOKABLE void Activate(const QVariantMap& platformData);
    Q_INVOKABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_INVOKABLE void ActivateAction(const QString& name, const QVariantList& parameter,
                                    const QVariantMap& platformData);

  private:
    void tell(const QVariantMap& platformData, const QString& action = {}, const QString& key = {});
};

}
