#include "Tacla/Linux/TrayGlyph.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tacla {

namespace {

// Everything is drawn on a grid of 18 by 18 units.
constexpr double grid = 18;

void drawTick(QPainter& painter, const QColor& colour) {
    painter.setPen(QPen(colour, 1.5));
    painter.drawRoundedRect(QRectF(2.5, 4.5, 11, 11), 2.6, 2.6);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillRect(QRectF(9, 2, 7, 8), Qt::black); // the tick leaves the box through this corner
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(QPen(colour, 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF{QPointF(5.6, 9.6), QPointF(7.9, 11.9), QPointF(15.6, 3.0)});
}

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

}

QImage trayGlyph(int pixels, std::size_t open, const QColor& colour) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / grid, pixels / grid);
    open > 0 ? drawNumber(painter, colour, open) : drawTick(painter, colour);
    return image;
}

}
