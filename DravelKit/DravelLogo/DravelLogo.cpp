#include "DravelKit/DravelLogo/DravelLogo.h"

#include "DravelKit/DravelUI/Theme.h"

#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSvgRenderer>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

// Six letters of one stroke each, with round ends, on a line 48 high: base at 38, top of the small letters at 16.
constexpr QSize drawing{190, 48};
constexpr char wordmark[] = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 190 48">
<g fill="none" stroke="%1" stroke-width="5.5" stroke-linecap="round" stroke-linejoin="round">
<path d="M8 6 V38 H18 C30 38 36 31 36 22 C36 13 30 6 18 6 Z"/>
<path d="M49 38 V16 M49 25 C50 19 55 15.5 62 16.5"/>
<path d="M90 27 C90 33.5 85.5 38 79.5 38 C73.500 38 69 33.5 69 27 C69 20.5 73.5 16 79.5 16 C85.5 16 90 20.5 90 27 Z M90 16 V38"/>
<path d="M101 16 L111 38 L121 16"/>
<path d="M130.500 27 H151 C151 20.500 146.500 16 140.500 16 C134.500 16 130 20.500 130 27 C130 33.500 134.500 38 141 38 C145 38 148 36.500 150 34"/>
<path d="M163 4 V32 C163 36 165 38 169 38"/>
</g>
<circle cx="181" cy="37" r="4" fill="%2"/>
</svg>)";

}

DravelLogo::DravelLogo(int height, QWidget* parent) : QLabel(parent) {
    setText(u"Dravel"_s); // its name for screen readers
    setObjectName(u"dravelLogo"_s);
    setFixedSize(height * drawing.width() / drawing.height(), height);
}

QSize DravelLogo::sizeHint() const { return minimumSize(); }

void DravelLogo::paintEvent(QPaintEvent*) {
    const QString svg = QString::fromLatin1(wordmark).arg(Theme::text.on(*this).name(), Theme::accent.on(*this).name());
    QSvgRenderer renderer(svg.toLatin1());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, rect());
}

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
