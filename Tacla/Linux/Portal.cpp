#include "Tacla/Linux/Portal.h"

#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QPointer>
#include <QWidget>

#include <utility>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String requests("org.freedesktop.portal.Request");
constexpr QLatin1String sessions("org.freedesktop.portal.Session");
constexpr QLatin1String shortcuts("org.freedesktop.portal.GlobalShortcuts");
constexpr QLatin1String newTask("new-task");
constexpr int patience = 5000; // ms, until a request is open

QDBusMessage call(const QString& path, QLatin1String interface, QLatin1String method) {
    return QDBusMessage::createMethodCall(Portal::name, path, interface, method);
}

void answered(QObject* owner, const QDBusPendingCall& call, const std::function<void(const QDBusPendingCall&)>& then) {
    auto* watcher = new QDBusPendingCallWatcher(call, owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner, [watcher, then] {
        watcher->deleteLater();
        then(*watcher);
    });
}

}

void Portal::use(const QDBusConnection& session) {
    session_.emplace(session);
    qDBusRegisterMetaType<PortalEntry>();
    qDBusRegisterMetaType<PortalEntries>();
    auto* watcher = new QDBusServiceWatcher(name, session, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this](auto&, auto& before, auto& now) {
        if (!before.isEmpty()) // who was asked is gone
            for (const auto& [request, then] : std::exchange(asked_, {})) then(Outcome::failed, {});
        if (now.isEmpty() || introducing_) return; // to us it is coming up
        introduce();
        back();
    });
    introduce();
}

// Older portals find it out themselves, and know no such call.
void Portal::introduce() {
    auto message = call(path, QLatin1String("org.freedesktop.host.portal.Registry"), QLatin1String("Register"));
    message << u"fr.dravel.Tacla"_s << QVariantMap();
    introducing_ = true;
    answered(this, session_->asyncCall(message), [this](const QDBusPendingCall&) { introducing_ = false; });
}

QString Portal::nextToken() { return u"tacla%1"_s.arg(++tokens_); }

void Portal::ask(Question question, Answered then) {
    if (!session_) return then(Outcome::failed, {});
    const auto token = nextToken();
    const auto sender = session_->baseService().mid(1).replace(u'.', u'_');
    const auto request = path + u"/request/"_s + sender + u'/' + token;
    asked_.emplace(request, std::move(then));
    // Before the question: the answer may overtake the reply to it. Not with the portal's name: Qt would wait for the
    // bus to tell whose it is, and libdbus ends the program when the bus goes meanwhile.
    session_->connect({}, request, requests, u"Response"_s, this, SLOT(response(uint, QVariantMap, QDBusMessage)));
    question.options[u"handle_token"_s] = token;
    auto message = call(path, question.interface, question.method);
    message.setArguments(question.arguments);
    message << question.options;
    answered(this, session_->asyncCall(message, patience), [this, request](const QDBusPendingCall& reply) {
        if (!reply.isError() || !asked_.contains(request)) return;
        session_->send(call(request, requests, QLatin1String("Close"))); // should it still come up
        answer(request, Outcome::failed);
    });
}

void Portal::response(uint outcome, const QVariantMap& results, const QDBusMessage& signal) {
    answer(signal.path(), outcome == 0 ? Outcome::done : outcome == 1 ? Outcome::left : Outcome::failed, results);
}

void Portal::answer(const QString& request, Outcome outcome, const QVariantMap& results) {
    session_->disconnect({}, request, requests, u"Response"_s, this, SLOT(response(uint, QVariantMap, QDBusMessage)));
    if (const auto asked = asked_.extract(request)) asked.mapped()(outcome, results);
}

void Portal::askVersion(QLatin1String interface, const std::function<void(uint)>& then) {
    if (!session_) return then(0);
    auto message = call(path, QLatin1String("org.freedesktop.DBus.Properties"), QLatin1String("Get"));
    message << interface << u"version"_s;
    answered(this, session_->asyncCall(message), [then](const QDBusPendingCall& reply) {
        const QDBusPendingReply<QDBusVariant> version = reply;
        then(version.isValid() ? version.value().variant().toUInt() : 0);
    });
}

QString portalParent(const QWidget* window) {
    if (window == nullptr || QGuiApplication::platformName() != u"xcb") return {};
    return u"x11:"_s + QString::number(window->window()->winId(), 16);
}

QDBusArgument& operator<<(QDBusArgument& argument, const PortalEntry& entry) {
    argument.beginStructure();
    argument << entry.id << entry.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalEntry& entry) {
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.endStructure();
    return argument;
}

namespace {

QVariant wantedKeys() {
    const QVariantMap newTaskKey{{u"description"_s, u"Ajouter une tâche"_s}, {u"preferred_trigger"_s, u"LOGO+ALT+t"_s}};
    return QVariant::fromValue(PortalEntries{{newTask, newTaskKey}});
}

// GNOME says "Press <Alt><Super>t".
QString readableKey(QString key) {
    const auto first = key.indexOf(u'<');
    if (first < 0) return key;
    key = key.mid(first).remove(u'<').replace(u'>', u'+');
    return key.left(key.lastIndexOf(u'+') + 1) + key.mid(key.lastIndexOf(u'+') + 1).toUpper();
}

// As the desktop calls it; nothing where it is not among these.
std::optional<std::string> keyIn(const QVariant& entries) {
    for (const auto& [id, properties] : qdbus_cast<PortalEntries>(entries))
        if (id == newTask) return readableKey(properties.value(u"trigger_description"_s).toString()).toStdString();
    return {};
}

}

QuickEntryKey::QuickEntryKey(Portal& portal) : portal_(portal) {}

void QuickEntryKey::use(bool chosenBefore) {
    wanted_ = chosenBefore;
    auto session = *portal_.session();
    const auto listen = [&](const char* signal, const char* slot) {
        session.connect({}, Portal::path, shortcuts, QLatin1String(signal), this, slot);
    };
    listen("Activated", SLOT(activated(QDBusMessage)));
    listen("ShortcutsChanged", SLOT(shortcutsChanged(QDBusMessage)));
    back_ = portal_.back.connect([this] { offer(); });
    offer();
}

void QuickEntryKey::offer() {
    portal_.askVersion(shortcuts, [this](uint version) {
        version_ = version;
        leave();
        if (wanted_ && version > 0) begin(nullptr, false);
    });
}

void QuickEntryKey::choose(const QWidget* over) {
    constexpr uint versionThatAsksAgain = 2;
    if (sessionPath_.isEmpty()) return begin(over, true);
    if (version_ < versionThatAsksAgain) return bind(sessionPath_, over, true);
    auto message = call(Portal::path, shortcuts, QLatin1String("ConfigureShortcuts"));
    message << QVariant::fromValue(QDBusObjectPath(sessionPath_)) << portalParent(over) << QVariantMap();
    portal_.session()->send(message);
}

// Where the portal does not know which program asks, the key is remembered by the session's token. The first portals
// that had keys take them here; where they are told already which key it is, nobody needs to be asked.
void QuickEntryKey::begin(const QWidget* over, bool byUser) {
    const QVariantMap options{{u"session_handle_token"_s, u"tacla"_s}, {u"shortcuts"_s, wantedKeys()}};
    portal_.ask({.interface = shortcuts, .method = QLatin1String("CreateSession"), .options = options},
                [this, over = QPointer(over), byUser](Portal::Outcome outcome, const QVariantMap& results) {
                    if (outcome != Portal::Outcome::done) return;
                    const auto session = results.value(u"session_handle"_s).toString();
                    if (byUser || !bound(session, results)) bind(session, over, byUser);
                });
}

void QuickEntryKey::bind(const QString& session, const QWidget* over, bool byUser) {
    const QVariantList arguments{QVariant::fromValue(QDBusObjectPath(session)), wantedKeys(), portalParent(over)};
    portal_.ask({.interface = shortcuts, .method = QLatin1String("BindShortcuts"), .arguments = arguments},
                [this, session, byUser](Portal::Outcome outcome, const QVariantMap& results) {
                    // GNOME 48 tells of a failure together with the key that it has bound.
                    if (outcome != Portal::Outcome::left && bound(session, results)) {
                        wanted_ = true;
                        if (byUser) chosen();
                    } else if (session != sessionPath_) {
                        portal_.session()->send(call(session, sessions, QLatin1String("Close")));
                    }
                });
}

// Whether the session has our key.
bool QuickEntryKey::bound(const QString& session, const QVariantMap& results) {
    const auto key = keyIn(results.value(u"shortcuts"_s));
    if (!key) return false;
    if (std::exchange(sessionPath_, session) != session)
        portal_.session()->connect({}, session, sessions, u"Closed"_s, this, SLOT(closed(QDBusMessage)));
    setKey(key);
    return true;
}

// The key before, if there is one.
void QuickEntryKey::leave() {
    if (const auto session = std::exchange(sessionPath_, {}); !session.isEmpty())
        portal_.session()->send(call(session, sessions, QLatin1String("Close")));
    setKey(version_ > 0 ? std::optional(std::string()) : std::nullopt);
}

void QuickEntryKey::setKey(std::optional<std::string> key) {
    if (std::exchange(key_, std::move(key)) != key_) changed();
}

void QuickEntryKey::activated(const QDBusMessage& signal) {
    const auto arguments = signal.arguments(); // session, key, time, more
    if (arguments.size() < 4 || arguments[1].toString() != newTask) return;
    pressed(qdbus_cast<QVariantMap>(arguments[3]).value(u"activation_token"_s).toString().toStdString());
}

void QuickEntryKey::shortcutsChanged(const QDBusMessage& signal) {
    const auto arguments = signal.arguments(); // session, keys
    if (qvariant_cast<QDBusObjectPath>(arguments.value(0)).path() != sessionPath_) return;
    if (const auto key = keyIn(arguments.value(1))) setKey(key);
}

void QuickEntryKey::closed(const QDBusMessage& signal) {
    if (signal.path() != sessionPath_) return;
    sessionPath_.clear();
    setKey("");
}

}
