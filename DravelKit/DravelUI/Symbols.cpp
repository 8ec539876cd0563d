#include "DravelKit/DravelUI/Symbols.h"

#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <QTransform>

#include <array>
#include <cmath>

static void initResources() { Q_INIT_RESOURCE(dravel_ui); }

namespace dravel {
namespace {

using namespace Qt::StringLiterals;

// In the order of the enumeration.
constexpr std::array files{"sun",
                           "sun-fill",
                           "exclamation-circle",
                           "calendar3",
                           "calendar4",
                           "check-circle",
                           "check-circle-fill",
                           "gear",
                           "arrow-repeat",
                           "exclamation-lg",
                           "exclamation-triangle-fill",
                           "check-lg",
                           "clock",
                           "hourglass-split",
                           "inbox",
                           "file-earmark-text",
                           "file-earmark",
                           "files",
                           "arrow-left-right",
                           "bell-fill",
                           "bell",
                           "send",
                           "person-circle",
                           "calendar-plus",
                           "compass",
                           "power",
                           "terminal",
                           "three-dots",
                           "plus-lg",
                           "chevron-left",
                           "chevron-right",
                           "hand-thumbs-up-fill",
                           "search",
                           "keyboard"};
static_assert(files.size() == static_cast<std::size_t>(Symbol::keyboard) + 1);

QPixmap render(Symbol symbol, int pixels, const QColor& colour) {
    initResources();
    const auto* file = files.at(static_cast<std::size_t>(symbol));
    QSvgRenderer renderer(u":/dravel/symbols/%1.svg"_s.arg(QLatin1StringView(file)));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), colour);
    return pixmap;
}

}

QPixmap symbolPixmap(Symbol symbol, int size, const QColor& colour, qreal devicePixelRatio) {
    const int pixels = qRound(size * devicePixelRatio);
    const QString key = u"dravel/%1/%2/%3"_s.arg(static_cast<int>(symbol)).arg(pixels).arg(colour.rgba());
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = render(symbol, pixels, colour);
        QPixmapCache::insert(key, pixmap);
    }
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

void paintSymbol(QPainter& painter, const QRectF& rect, Symbol symbol, int size, const QColor& colour) {
    // The painter knows the scale of what it really draws on, a picture of a widget included.
    const QTransform& scale = painter.deviceTransform();
    const qreal ratio = std::hypot(scale.m11(), scale.m12());
    const QPixmap pixmap = symbolPixmap(symbol, size, colour, ratio);
    const QPointF exact(rect.center().x() - size / 2.0, rect.center().y() - size / 2.0);
    const QPointF whole(std::floor(exact.x() * ratio) / ratio, std::floor(exact.y() * ratio) / ratio);
    painter.drawPixmap(whole, pixmap);
}

}
