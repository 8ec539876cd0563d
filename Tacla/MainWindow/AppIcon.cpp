#include "Tacla/MainWindow/AppIcon.h"

#include "DravelKit/DravelUI/Theme.h"

#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace tacla {

namespace Palette = dravel::Theme::Palette;

namespace {

// A ticked box on a grid of 18: the tick leaves the box through its erased corner.
void paintGlyph(QPainter& painter) {
    QPainterPath shown, corner;
    shown.addRect(0, 0, 18, 18);
    corner.addRect(9, 2, 7, 8);
    painter.save();
    painter.setClipPath(shown - corner);
    painter.setPen(QPen(Qt::white, 1.5));
    painter.drawRoundedRect(QRectF(2.5, 4.5, 11, 11), 2.6, 2.6);
    painter.restore();
    painter.setPen(QPen(Qt::white, 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF{{5.6, 9.6}, {7.9, 11.9}, {15.6, 3.0}});
}

class Engine final : public QIconEngine {
  public:
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const qreal side = std::min(rect.width(), rect.height());
        const QPointF corner = QRectF(rect).center() - QPointF(side / 2, side / 2);
        QLinearGradient gradient(0, 0, side, side);
        gradient.setColorAt(0, Palette::blueDark.color());
        gradient.setColorAt(0.4, Palette::blue.color());
        gradient.setColorAt(1, Palette::violet.color());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(corner);
        painter->setPen(Qt::NoPen);
        painter->setBrush(gradient);
        painter->drawRoundedRect(QRectF(0, 0, side, side), side * 2 / 7, side * 2 / 7);
        painter->setBrush(Qt::NoBrush);
        painter->translate(side * 5 / 28, side * 5 / 28);
        painter->scale(side / 28, side / 28); // the glyph's 18 units take 18/28 of the side
        paintGlyph(*painter);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({}, size), mode, state);
        return pixmap;
    }

    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        return {{16, 16}, {24, 24}, {32, 32}, {48, 48}, {64, 64}, {128, 128}};
    }

    QIconEngine* clone() const override { return new Engine; }
};

}

QIcon applicationIcon() { return QIcon(new Engine); }

}
