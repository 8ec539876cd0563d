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
    void flush();     // what was asked of the server is on its way then; waits for the bus, never for the server

    void show(const NotificationRequest&, std::function<void(const Error&, const BubbleHandle&)> shown) override;
    void close(const BubbleHandle&) override;
    void ask(std::function<void(Capabilities)>) override;

  private Q_SLOTS:
    void actionInvoked(uint id, const QString& action, const QDBusMessage&);
    void activationToken(uint id, const QString& token, const QDBusMessage&);
    void notificationClosed(uint id, uint reason, const QDBusMessage&);

  private:
    struct Server {
        Capabilities capabilities;
        bool bodyMarkup = false, persistence = false;
    };
    using Learned = std::function<void(const Server&)>;

    void learn(Learned); // what the server can do, asked once per server
    void askServer();
    void askWhoItIs(Server);
    void askItsName(const Server&);
    void learned(Server);
    void forget(); // another server
    void listen();
    void learnBus();
    // Unique names begin anew with each bus.
    std::string identity(const QString& uniqueName) const { return bus_.value_or("") + uniqueName.toStdString(); }
    QString uniqueName(const std::string& identity) const {
        return QString::fromStdString(identity.substr(bus_.value_or("").size()));
    }
    BubbleHandle handle(uint id, const QDBusMessage& signal) const {
        return {identity(signal.service()), std::to_string(id)};
    }
    void notify(const NotificationRequest&, const Server&,
                const std::function<void(const Error&, const BubbleHandle&)>& shown);
    void call(const QDBusMessage&, std::function<void(const QDBusMessage&)> answer, int milliseconds = patience);

    static constexpr int patience = 5000; // ms

    QString icon_;
    std::optional<QDBusConnection> connection_;
    std::optional<std::string> bus_; // its identity, once it told
    bool without_ = false;
    std::optional<Server> server_;
    unsigned servers_ = 0; // that came or went since the start
    std::vector<Learned> waiting_;
    std::map<BubbleHandle, std::string> activationTokens_; // each comes before its action
};

// Reminders as GNOME keeps them until they are answered: org.gtk.Notifications, urgent. They stay in the list with
// their buttons, also when the program ends; what is chosen comes as an action of the program itself (org.freedesktop.
// Application), which it starts if need be. Where GNOME does not know the program, the other server shows them.
class GnomeNotifications final : public QObject, public NotificationServer {
    Q_OBJECT

  public:
    explicit GnomeNotifications(NotificationServer& other);

    void use(const QDBusConnection& connection) { connection_ = connection; }

    static constexpr auto server = "org.gtk.Notifications"; // in the handles of what it shows

    void show(const NotificationRequest&, std::function<void(const Error&, const BubbleHandle&)> shown) override;
    void close(const BubbleHandle&) override;
    void ask(std::function<void(Capabilities)>) override;

  private:
    NotificationServer& other_;
    dravel::Connection otherResponded_, otherClosed_, otherChanged_;
    std::optional<QDBusConnection> connection_;
};

// The actions by which such a notification, and the desktop file, speak to the program.
namespace ApplicationAction {
inline constexpr auto newTask = "new-task", today = "today", late = "late";
inline constexpr auto done = "done", tomorrow = "tomorrow",
                      openTask = "open-task"; // with the notification's identifier
}

}
