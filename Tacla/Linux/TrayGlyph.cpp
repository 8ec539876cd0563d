#include "Tacla/Linux/TrayGlyph.h"

#include "DravelKit/DravelLogo/TickIcon.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tacla {

namespace {

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

}

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

}
