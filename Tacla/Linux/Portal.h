#pragma once

#include "DravelKit/Foundation/Signal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <map>
#include <optional>

class QWidget;

namespace tacla {

// What the desktop's portal does for programs: shows its file panel, opens what they name, binds keys. A question opens
// a request, whose answer comes when the user has given one.
class Portal final : public QObject {
    Q_OBJECT

  public:
    // Before anything else on that connection turns to the portal: tells it which program this is.
    void use(const QDBusConnection& session);
    dravel::Signal<> back; // another portal than before is there, which knows nothing of us

    enum class Outcome { done, left, failed }; // failed: also where no portal offers such a thing
    using Answered = std::function<void(Outcome, const QVariantMap& results)>;
    struct Question {
        QLatin1String interface, method;
        QVariantList arguments{}; // what stands before the options
        QVariantMap options{};
    };
    void ask(Question, Answered);

    // The version of an interface; 0 where it is not offered.
    void askVersion(QLatin1String interface, const std::function<void(uint)>& answered);

    // A name under which the portal makes an object for us.
    QString nextToken();

    std::optional<QDBusConnection> session() const { return session_; }

    static constexpr QLatin1String name{"org.freedesktop.portal.Desktop"};
    static constexpr QLatin1String path{"/org/freedesktop/portal/desktop"};

  private Q_SLOTS:
    void response(uint outcome, const QVariantMap& results, const QDBusMessage& signal);

  private:
    void introduce();
    void answer(const QString& request, Outcome, const QVariantMap& results = {});

    std::optional<QDBusConnection> session_;
    std::map<QString, Answered> asked_; // by the request's path
    bool introducing_ = false;
    int tokens_ = 0;
};

// How the portal calls a window over which it is to stand: not at all on Wayland, where only the toolkit could name it.
QString portalParent(const QWidget*);

// A name and what belongs to it, as several of the portal's lists are made: (sa{sv}).
struct PortalEntry {
    QString id;
    QVariantMap properties;
};
using PortalEntries = QList<PortalEntry>;

QDBusArgument& operator<<(QDBusArgument&, const PortalEntry&);
const QDBusArgument& operator>>(const QDBusArgument&, PortalEntry&);

// A key that begins a task from within any program, where the portal lets the user choose one. The desktop keeps which
// key it is; the program only says at each start that it still wants it.
class QuickEntryKey final : public QObject {
    Q_OBJECT

  public:
    explicit QuickEntryKey(Portal&);

    void use(bool chosenBefore);      // with the portal that is in use
    void choose(const QWidget* over); // asks the user

    // The key as the desktop calls it, "" when none is chosen; nothing where there is no choosing.
    const std::optional<std::string>& key() const { return key_; }
    dravel::Signal<> changed;
    dravel::Signal<> chosen;
    dravel::Signal<const std::string&> pressed; // with the activation token

  private Q_SLOTS:
    void activated(const QDBusMessage&);
    void shortcutsChanged(const QDBusMessage&);
    void closed(const QDBusMessage&);

  private:
    void offer();
    void begin(const QWidget* over, bool byUser);
    void bind(const QString& session, const QWidget* over, bool byUser);
    bool bound(const QString& session, const QVariantMap& results);
    void leave();
    void setKey(std::optional<std::string>);

    Portal& portal_;
    dravel::Connection back_;
    uint version_ = 0;
    bool wanted_ = false;
    QString sessionPath_; // of the bound key
    std::optional<std::string> key_;
};

}
