#include "DravelKit/DravelUI/ProgressRing.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/TextPaint.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QConicalGradient>
#include <QPainter>

#include <algorithm>

namespace dravel {
namespace {

constexpr qreal stroke = 8;

// Runs from start to end along the arc, clockwise from 12 o'clock. The gradient itself counts the other way round;
// its last part has the start's colour, under the round cap of the start.
QConicalGradient arcGradient(QPointF centre, qreal part, const QColor& start, const QColor& end) {
    QConicalGradient gradient(centre, 90);
    gradient.setColorAt(0, start);
    if (part < 0.96) {
        gradient.setColorAt(0.04, start);
        gradient.setColorAt(0.0401, end);
    }
    gradient.setColorAt(std::max(1 - part, 0.0002), end);
    gradient.setColorAt(1, start);
    return gradient;
}

}

ProgressRing::ProgressRing(QWidget* parent) : QWidget(parent) { setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed); }

void ProgressRing::setProgress(int done, int total, const QString& detail) {
    setAccessibleName(detail);
    setToolTip(detail);
    if (done == done_ && total == total_) return;
    done_ = done;
    total_ = total;
    update();
}

void ProgressRing::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF square(0, 0, 78, 78);
    const QRectF circle = square.adjusted(4, 4, -4, -4);
    painter.setPen(QPen(Theme::accentSoftPressed.on(*this), stroke));
    painter.setBrush(Theme::surface.on(*this));
    painter.drawEllipse(circle);
    if (total_ == 0) {
        paintSymbol(painter, square, Symbol::Sun, 20, Theme::accent.on(*this));
        return;
    }
    const qreal part = std::clamp(done_ / static_cast<qreal>(total_), 0.0, 1.0);
    const bool dark = appearanceOf(*this) == Appearance::Dark;
    const QColor start = (dark ? Theme::Palette::violet : Theme::Palette::blue).color();
    const QColor end = (dark ? Theme::Palette::pink : Theme::Palette::violet).color();
    if (part > 0) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(arcGradient(square.center(), part, start, end), stroke, Qt::SolidLine,
                            part < 1 ? Qt::RoundCap : Qt::FlatCap));
        painter.drawArc(circle, 90 * 16, -qRound(part * 360 * 16));
    }
    paintLine(painter, square, Theme::Typography::subtitle, Theme::text.on(*this),
              QStringLiteral("%1/%2").arg(done_).arg(total_), Qt::AlignHCenter);
}

}
