#include "DravelKit/DravelLogo/TickIcon.h"

#include "DravelKit/DravelUI/Theme.h"

#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace dravel {
namespace {

constexpr qreal grid = 18;

// Draws itself anew at every size, so that no size is ever a scaled one.
class TickIconEngine final : public QIconEngine {
  public:
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        paintTickIcon(*painter, rect);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintTickIcon(painter, pixmap.rect());
        return pixmap;
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        QList<QSize> sizes;
        for (const int side : {16, 22, 24, 32, 48, 64, 128, 256}) sizes << QSize(side, side);
        return sizes;
    }
    QIconEngine* clone() const override { return new TickIconEngine; }
};

}

void paintTickGlyph(QPainter& painter, const QRectF& rect, const QColor& colour) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / grid, rect.height() / grid);

    painter.setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    // The box is open where the tick leaves it.
    QPainterPath open;
    open.addRect(0, 0, grid, grid);
    QPainterPath gap;
    gap.addRect(9, 2, 7, 8);
    painter.save();
    painter.setClipPath(open.subtracted(gap), Qt::IntersectClip);
    painter.drawRoundedRect(QRectF(2.5, 4.5, 11, 11), 2.6, 2.6);
    painter.restore();

    painter.setPen(QPen(colour, 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF{{5.6, 9.6}, {7.9, 11.9}, {15.6, 3.0}});
    painter.restore();
}

void paintTickIcon(QPainter& painter, const QRectF& rect) {
    QLinearGradient gradient(rect.topLeft(), rect.bottomRight());
    gradient.setColorAt(0, Theme::Palette::blueDark.color());
    gradient.setColorAt(0.4, Theme::Palette::blue.color());
    gradient.setColorAt(1, Theme::Palette::violet.color());
    const qreal side = rect.width(), radius = side * 2 / 7, glyph = side * 18 / 28;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(rect, radius, radius);
    painter.restore();
    QRectF inner(0, 0, glyph, glyph);
    inner.moveCenter(rect.center());
    paintTickGlyph(painter, inner, Theme::Palette::white.color());
}

QIcon tickIcon() { return QIcon(new TickIconEngine); }

}
