#include "Tacla/Linux/StatusItem.h"

#include "Tacla/Linux/TrayGlyph.h"
#include "statusnotifieritemadaptor.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QtEndian>

#include <array>
#include <utility>

namespace tacla {

namespace {

constexpr QLatin1String itemPath("/StatusNotifierItem");
constexpr QLatin1String watcherName("org.kde.StatusNotifierWatcher");
constexpr QLatin1String watcherPath("/StatusNotifierWatcher");
constexpr std::array sizes{16, 18, 22, 24, 32, 36, 44, 48, 64};

StatusPixmap pixmap(const QImage& image) {
    const auto argb = image.convertToFormat(QImage::Format_ARGB32);
    QByteArray data(argb.sizeInBytes(), Qt::Uninitialized);
    qToBigEndian<quint32>(argb.constBits(), argb.sizeInBytes() / 4, data.data());
    return {argb.width(), argb.height(), data};
}

QDBusMessage toWatcher(const QString& interface, const QString& method) {
    auto message = QDBusMessage::createMethodCall(watcherName, watcherPath, interface, method);
    message.setAutoStartService(false);
    return message;
}

}

StatusItem::StatusItem(QDBusConnection connection) : connection_(std::move(connection)) {
    qRegisterMetaType<StatusPixmaps>("tacla::StatusPixmaps");
    qRegisterMetaType<StatusToolTip>("tacla::StatusToolTip");
    qDBusRegisterMetaType<StatusPixmap>();
    qDBusRegisterMetaType<StatusPixmaps>();
    qDBusRegisterMetaType<StatusToolTip>();
    new StatusNotifierItemAdaptor(this);
    connection_.registerObject(itemPath, this);

    auto* watcher = new QDBusServiceWatcher(watcherName, connection_, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { registerWithWatcher(); });
    registerWithWatcher();
}

StatusItem::~StatusItem() { connection_.unregisterObject(itemPath); }

void StatusItem::registerWithWatcher() {
    auto message = toWatcher(watcherName, QStringLiteral("RegisterStatusNotifierItem"));
    message << connection_.baseService();
    connection_.send(message);
}

void StatusItem::askIfShown(std::function<void(bool)> answer) {
    auto message = toWatcher(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message << QString(watcherName) << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* call = new QDBusPendingCallWatcher(connection_.asyncCall(message, 5000), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [call, answer = std::move(answer)] {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        answer(reply.isValid() && reply.value().variant().toBool());
    });
}

void StatusItem::show(const Content& content) {
    const auto before = std::exchange(content_, content);
    if (before.open != content.open || before.colour != content.colour) {
        pixmaps_.reset();
        Q_EMIT NewIcon();
    }
    if (before.toolTip != content.toolTip) Q_EMIT NewToolTip();
    if (before.title != content.title) Q_EMIT XAyatanaNewLabel(label(), label());
}

StatusPixmaps StatusItem::pixmaps() const {
    if (!pixmaps_) {
        pixmaps_.emplace();
        for (const int size : sizes) pixmaps_->append(pixmap(trayGlyph(size, content_.open, content_.colour)));
    }
    return *pixmaps_;
}

StatusToolTip StatusItem::toolTip() const { return {{}, {}, QString::fromStdString(content_.toolTip), {}}; }

void StatusItem::Activate(int, int) {
    QMetaObject::invokeMethod(
        this, [this] { activated(std::exchange(activationToken_, {})); }, Qt::QueuedConnection);
}

void StatusItem::SecondaryActivate(int x, int y) { Activate(x, y); }

void StatusItem::ProvideXdgActivationToken(const QString& token) { activationToken_ = token.toStdString(); }

QDBusArgument& operator<<(QDBusArgument& argument, const StatusPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.data;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.data;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.icon >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

}
