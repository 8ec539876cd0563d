#pragma once

#include "Tacla/Reminders/NotificationServer.h"

#include <QDBusConnection>
#include <QObject>

#include <optional>

namespace tacla {

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
