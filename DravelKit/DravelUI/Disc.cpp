#include "DravelKit/DravelUI/Disc.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <QPainter>

#include <cmath>

namespace dravel {
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
            .symbol = Symbol::CheckLg,
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

}
