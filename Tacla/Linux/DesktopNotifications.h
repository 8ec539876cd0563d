#pragma once

#include "Tacla/Reminders/NotificationServer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <map>
#include <optional>
#include <vector>

class QDBusPendingCallWatcher;

namespace tacla {

// Notifications through org.freedesktop.Notifications. Until it is given a bus, questions wait for one, 5 s at most.
class DesktopNotifications final : public QObject, public NotificationServer {
    Q_OBJECT

  public:
    explicit DesktopNotifications(QString icon);

    void use(const QDBusConnection&);
    void doWithout(); // there is no bus, or none any more

    void show(const NotificationRequest&, std::function<void(Error)> shown) override;
    void ask(std::function<void(Capabilities)>) override;

  private Q_SLOTS:
    void actionInvoked(uint id, const QString& action);
    void activationToken(uint id, const QString& token);
    void notificationClosed(uint id, uint reason);

  private:
    struct Server {
        Capabilities capabilities;
        bool bodyMarkup = false;
    };
    struct Shown {
        std::string key, activationToken;
    };
    using Learned = std::function<void(const Server&)>;

    void learn(Learned); // what the server can do, asked once per server
    void askServer();
    void learned(const Server&);
    void forget(); // another server
    void notify(const NotificationRequest&, const Server&, const std::function<void(Error)>& shown);
    void call(const QString& method, const QList<QVariant>& arguments, std::function<void(const QDBusMessage&)> answer,
              int milliseconds = patience);

    static constexpr int patience = 5000; // ms

    QString icon_;
    std::optional<QDBusConnection> connection_;
    bool without_ = false;
    std::optional<Server> server_;
    std::vector<Learned> waiting_;
    std::map<uint, Shown> shown_;
};

}
