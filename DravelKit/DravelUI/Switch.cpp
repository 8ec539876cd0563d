#include "DravelKit/DravelUI/Switch.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <QPainter>

namespace dravel {
namespace {

constexpr QSize track{34, 20};
constexpr int labelGap = 8;

}

Switch::Switch(const QString& label, Kind kind, QWidget* parent) : Control(parent), kind_(kind) {
    setText(label);
    setCheckable(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    animation_.setDuration(120);
    animation_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        knob_ = value.toReal();
        update();
    });
    connect(this, &QAbstractButton::toggled, this, &Switch::slide);
}

void Switch::slide(bool on) {
    const qreal target = on ? 1 : 0;
    animation_.stop();
    if (!isVisible() || !animates(*this)) {
        knob_ = target;
        update();
        return;
    }
    animation_.setStartValue(knob_);
    animation_.setEndValue(target);
    animation_.start();
}

QSize Switch::sizeHint() const {
    const int label = text().isEmpty() ? 0 : textWidth(Theme::Typography::callout, text()) + labelGap;
    return {label + track.width(), 28};
}

QRect Switch::face() const { return {QPoint(width() - track.width(), (height() - track.height()) / 2), track}; }

void Switch::paint(QPainter& painter) {
    const bool danger = kind_ == Kind::Danger;
    if (!text().isEmpty()) {
        const auto& ink = danger && isChecked() ? Theme::dangerText : Theme::textSecondary;
        paintLine(painter, rect().adjusted(0, 0, -track.width() - labelGap, 0), Theme::Typography::callout,
                  ink.on(*this), text());
    }
    const QRectF box = face();
    if (isChecked()) {
        const auto& fill = danger ? Theme::danger : isHovered() ? Theme::accentHover : Theme::accent;
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill.on(*this));
        painter.drawRoundedRect(box, 10, 10);
        painter.setBrush((danger ? Theme::white : Theme::onAccent).on(*this));
    } else {
        const QColor line = (isHovered() ? Theme::textTertiary : Theme::outline).on(*this);
        painter.setPen(line);
        painter.setBrush(Theme::surface.on(*this));
        painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), 9.5, 9.5);
        painter.setPen(Qt::NoPen);
        painter.setBrush(line);
    }
    // The knob grows from 12 to 16 on its way; its middle moves from 10 to 24.
    painter.drawEllipse(QPointF(box.left() + 10 + 14 * knob_, box.center().y()), 6 + 2 * knob_, 6 + 2 * knob_);
}

}
