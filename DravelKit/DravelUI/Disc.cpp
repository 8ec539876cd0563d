#include "DravelKit/DravelUI/Disc.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/TextPaint.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QConicalGradient>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

constexpr int frame = 40, turn = 1200; // ms

}

Disc::Disc(const Face& face, QWidget* parent) : QWidget(parent), face_(face) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    resize(sizeHint());
    timer_.setInterval(frame);
    connect(&timer_, &QTimer::timeout, this, [this] {
        angle_ = std::fmod(angle_ + 360.0 * frame / turn, 360);
        update();
    });
}

Disc::Face Disc::done(int diameter) {
    return {.diameter = diameter,
            .fill = Theme::successSoft,
            .symbol = Symbol::checkLg,
            .symbolSize = 14,
            .ink = Theme::successText};
}

void Disc::setFace(const Face& face) {
    if (face == face_) return;
    face_ = face;
    updateGeometry();
    runClock();
    update();
}

void Disc::runClock() {
    if (face_.turning && isVisible() && animates(*this)) {
        if (!timer_.isActive()) timer_.start();
        return;
    }
    timer_.stop();
    angle_ = 0;
}

void Disc::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(face_.fill.on(*this));
    const QRectF circle(0, 0, face_.diameter, face_.diameter);
    painter.drawEllipse(circle);
    if (!face_.number.isEmpty()) {
        paintLine(painter, circle, Theme::Typography::cardTitle, face_.ink.on(*this), face_.number, Qt::AlignHCenter);
        return;
    }
    if (angle_ > 0) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.translate(circle.center());
        painter.rotate(angle_);
        painter.translate(-circle.center());
    }
    paintSymbol(painter, circle, face_.symbol, face_.symbolSize, face_.ink.on(*this));
}

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
        paintSymbol(painter, square, Symbol::sun, 20, Theme::accent.on(*this));
        return;
    }
    const qreal part = std::clamp(done_ / static_cast<qreal>(total_), 0.0, 1.0);
    const bool dark = appearanceOf(*this) == Appearance::dark;
    const QColor start = (dark ? Theme::Palette::violet : Theme::Palette::blue).color();
    const QColor end = (dark ? Theme::Palette::pink : Theme::Palette::violet).color();
    if (part > 0) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(arcGradient(square.center(), part, start, end), stroke, Qt::SolidLine,
                            part < 1 ? Qt::RoundCap : Qt::FlatCap));
        painter.drawArc(circle, 90 * 16, -qRound(part * 360 * 16));
    }
    paintLine(painter, square, Theme::Typography::subtitle, Theme::text.on(*this), u"%1/%2"_s.arg(done_).arg(total_),
              Qt::AlignHCenter);
}

}
