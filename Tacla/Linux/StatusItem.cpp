#include "Tacla/Linux/StatusItem.h"

#include "DravelKit/DravelLogo/DravelLogo.h"
#include "DravelKit/Foundation/Text.h"
#include "statusnotifieritemadaptor.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <utility>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1String itemPath("/StatusNotifierItem");
constexpr QLatin1String watcherName("org.kde.StatusNotifierWatcher");
constexpr QLatin1String watcherPath("/StatusNotifierWatcher");
constexpr std::array sizes{16, 18, 22, 24, 32, 36, 44, 48, 64};

// Everything is drawn on a grid of 18 by 18 units.
constexpr double grid = 18;

void drawNumber(QPainter& painter, const QColor& colour, std::size_t open) {
    painter.setPen(QPen(colour, 1.5));
    painter.drawRoundedRect(QRectF(1.25, 1.25, 15.5, 15.5), 3.6, 3.6);
    const bool twoDigits = open > 9;
    QFont font = QGuiApplication::font();
    font.setPixelSize(twoDigits ? 10 : 12);
    font.setBold(true);
    font.setHintingPreference(QFont::PreferNoHinting);
    if (twoDigits) font.setLetterSpacing(QFont::AbsoluteSpacing, -0.3);
    QPainterPath digits; // outlines, for text would be laid out on whole pixels
    digits.addText(0, twoDigits ? 12.5 : 13.2, font, QString::number(std::min<std::size_t>(open, 99)));
    digits.translate(grid / 2 - digits.boundingRect().center().x(), 0);
    painter.fillPath(digits, colour);
}

// The icon at that many pixels: a ticked box when nothing is open, else a box with the number.
QImage trayGlyph(int pixels, std::size_t open, const QColor& colour) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / grid, pixels / grid);
    if (open > 0)
        drawNumber(painter, colour, open);
    else
        dravel::paintTickGlyph(painter, QRectF(0, 0, grid, grid), colour);
    return image;
}

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

TrayHost TrayHost::of(std::string_view currentDesktop) {
    for (const auto name : dravel::split(currentDesktop, ":")) {
        if (name == "GNOME") return {.showsTitle = true, .drawsBoxes = false, .coloursSymbols = true};
        if (name == "Unity" || name == "MATE") return {.showsTitle = true};
    }
    return {};
}

StatusItem::StatusItem(QDBusConnection connection, TrayHost host) : connection_(std::move(connection)), host_(host) {
    qRegisterMetaType<StatusPixmaps>("tacla::StatusPixmaps");
    qRegisterMetaType<StatusToolTip>("tacla::StatusToolTip");
    qDBusRegisterMetaType<StatusPixmap>();
    qDBusRegisterMetaType<StatusPixmaps>();
    qDBusRegisterMetaType<StatusToolTip>();
    new StatusNotifierItemAdaptor(this);
    connection_.registerObject(itemPath, this);

    auto* watcher = new QDBusServiceWatcher(watcherName, connection_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { registerWithWatcher(); });
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusItem::askIfShown);
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        connection_.connect({}, watcherPath, watcherName, QLatin1String(signal), this, SLOT(askIfShown()));
    registerWithWatcher();
    askIfShown();
}

StatusItem::~StatusItem() { connection_.unregisterObject(itemPath); }

void StatusItem::registerWithWatcher() {
    auto message = toWatcher(watcherName, u"RegisterStatusNotifierItem"_s);
    message << connection_.baseService();
    connection_.send(message);
}

void StatusItem::askIfShown() {
    auto message = toWatcher(u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message << QString(watcherName) << u"IsStatusNotifierHostRegistered"_s;
    auto* call = new QDBusPendingCallWatcher(connection_.asyncCall(message, 5000), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        shown(reply.isValid() && reply.value().variant().toBool());
    });
}

void StatusItem::show(const Content& content) {
    const auto before = std::exchange(content_, content);
    if (before.open != content.open || before.colour != content.colour) {
        pixmaps_.reset();
        Q_EMIT NewIcon();
        Q_EMIT NewAttentionIcon();
        announceCount();
    }
    if (before.needsAttention != content.needsAttention) Q_EMIT NewStatus(status());
    if (before.toolTip != content.toolTip) Q_EMIT NewToolTip();
    if (before.title != content.title) Q_EMIT XAyatanaNewLabel(label(), label());
}

// The badge on the launcher's icon, in docks and task bars that know it.
void StatusItem::announceCount() {
    auto message =
        QDBusMessage::createSignal(u"/fr/dravel/Tacla/launcher"_s, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    message << u"application://fr.dravel.Tacla.desktop"_s
            << QVariantMap{{u"count"_s, QVariant::fromValue<qlonglong>(static_cast<qlonglong>(content_.open))},
                           {u"count-visible"_s, content_.open > 0}};
    connection_.send(message);
}

// Only a symbol gets the panel's own colour; it is the ticked box, and the count stands beside it.
QString StatusItem::iconName() const { return host_.coloursSymbols ? u"fr.dravel.Tacla-symbolic"_s : QString(); }

StatusPixmaps StatusItem::pixmaps() const {
    if (!pixmaps_) {
        pixmaps_.emplace();
        const auto number = host_.showsTitle ? 0 : content_.open;
        for (const int size : sizes) pixmaps_->append(pixmap(trayGlyph(size, number, content_.colour)));
    }
    return *pixmaps_;
}

StatusToolTip StatusItem::toolTip() const { return {{}, {}, QString::fromStdString(content_.toolTip), {}}; }

void StatusItem::Activate(int, int) {
    QMetaObject::invokeMethod(
        this, [this] { activated(takeActivationToken()); }, Qt::QueuedConnection);
}

void StatusItem::SecondaryActivate(int, int) {
    QMetaObject::invokeMethod(
        this, [this] { middleClicked(takeActivationToken()); }, Qt::QueuedConnection);
}

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
