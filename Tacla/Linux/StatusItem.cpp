#include "Tacla/Linux/StatusItem.h"

#include "DravelKit/DravelLogo/DravelLogo.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/Linux/SystemEvents.h"
#include "statusnotifieritemadaptor.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QSaveFile>
#include <QStandardPaths>
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

// A box with the number in it, as outlines: text would be laid out on whole pixels, and symbols be filled where they
// are only stroked.
QPainterPath numberGlyph(std::size_t open) {
    QPainterPath box;
    box.addRoundedRect(QRectF(1.25, 1.25, 15.5, 15.5), 3.6, 3.6);
    QPainterPathStroker pen;
    pen.setWidth(1.5);
    const bool twoDigits = open > 9;
    QFont font = QGuiApplication::font();
    font.setPixelSize(twoDigits ? 10 : 12);
    font.setBold(true);
    font.setHintingPreference(QFont::PreferNoHinting);
    if (twoDigits) font.setLetterSpacing(QFont::AbsoluteSpacing, -0.3);
    QPainterPath digits;
    digits.addText(0, twoDigits ? 12.5 : 13.2, font, QString::number(open));
    digits.translate(grid / 2 - digits.boundingRect().center().x(), 0);
    auto glyph = pen.createStroke(box);
    glyph.addPath(digits);
    glyph.setFillRule(Qt::OddEvenFill);
    return glyph;
}

// The same as a file in which a panel finds nothing but a shape to colour.
QByteArray symbol(const QPainterPath& glyph) {
    QByteArray outline;
    for (int i = 0; i < glyph.elementCount(); ++i) {
        const auto element = glyph.elementAt(i);
        if (element.isMoveTo()) outline += 'M';
        if (element.isLineTo()) outline += 'L';
        if (element.isCurveTo()) outline += 'C'; // the next two belong to it
        outline += QByteArray::number(element.x, 'f', 3) + ' ' + QByteArray::number(element.y, 'f', 3) + ' ';
    }
    return R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 18 18" width="16" height="16"><path fill="#2e3436")"
           R"( fill-rule="evenodd" d=")" +
           outline + R"("/></svg>)";
}

// A ticked box when nothing is open, else a box with the number.
void paintGlyph(QPainter& painter, std::size_t open, const QColor& colour) {
    if (open > 0)
        painter.fillPath(numberGlyph(open), colour);
    else
        dravel::paintTickGlyph(painter, QRectF(0, 0, grid, grid), colour);
}

// The icon at that many pixels. On a panel of which nothing is known it is light with a dark edge.
QImage trayGlyph(int pixels, std::size_t open, const QColor& colour) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / grid, pixels / grid);
    if (colour.isValid()) {
        paintGlyph(painter, open, colour);
        return image;
    }
    constexpr double edge = 0.9;
    for (const auto& [right, down] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}}) {
        painter.save();
        painter.translate(right * edge, down * edge);
        paintGlyph(painter, open, trayColour(ColourScheme::Preference::light));
        painter.restore();
    }
    paintGlyph(painter, open, trayColour(ColourScheme::Preference::dark));
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
    if (host_.coloursSymbols)
        themePath_ = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + u"/Tacla/icons"_s;
    nameSymbol();
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
        nameSymbol();
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

// Only a symbol gets the panel's own colour: the ticked box that is installed, or one of ours with the number, of which
// each has a name, since hosts remember what they found under one; it begins unlike the installed ones, to which they
// would fall back. Where none can be written, the count stands beside.
void StatusItem::nameSymbol() {
    if (!host_.coloursSymbols) return;
    numbered_ = false;
    iconName_ = u"fr.dravel.Tacla-symbolic"_s;
    const auto open = std::min<std::size_t>(content_.open, 99);
    const auto name = u"tacla%1-symbolic"_s.arg(open);
    QSaveFile file(themePath_ + u'/' + name + u".svg"_s);
    if (open == 0 || !QDir().mkpath(themePath_) || !file.open(QIODevice::WriteOnly)) return;
    file.write(symbol(numberGlyph(open)));
    numbered_ = file.commit();
    if (numbered_) iconName_ = name;
}

StatusPixmaps StatusItem::pixmaps() const {
    if (!pixmaps_) {
        pixmaps_.emplace();
        const auto number = host_.showsTitle ? 0 : std::min<std::size_t>(content_.open, 99);
        for (const int size : sizes) pixmaps_->append(pixmap(trayGlyph(size, number, content_.colour)));
    }
    return *pixmaps_;
}

StatusToolTip StatusItem::toolTip() const { return {{}, {}, QString::fromStdString(content_.toolTip), {}}; }

void StatusItem::Activate(int, int) {
    const auto activate = [this] { activated(takeActivationToken()); };
    QMetaObject::invokeMethod(this, activate, Qt::QueuedConnection);
}

void StatusItem::SecondaryActivate(int, int) {
    const auto activate = [this] { middleClicked(takeActivationToken()); };
    QMetaObject::invokeMethod(this, activate, Qt::QueuedConnection);
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
