#include "DravelKit/DravelUI/Button.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <QPainter>

namespace dravel {
namespace {

struct Faces {
    Theme::Tone rest, hover, pressed, ink;
};

Faces faces(Button::Kind kind) {
    switch (kind) {
    case Button::Kind::neutral: return {Theme::tile, Theme::neutralHover, Theme::neutralPressed, Theme::text};
    case Button::Kind::neutralOnBackground:
        return {Theme::surface, Theme::neutralHover, Theme::neutralPressed, Theme::text};
    case Button::Kind::soft:
        return {Theme::accentSoft, Theme::softHover, Theme::accentSoftPressed, Theme::accentOnSoft};
    case Button::Kind::prominent: return {Theme::accent, Theme::accentHover, Theme::accentPressed, Theme::onAccent};
    }
    Q_UNREACHABLE();
}

const Theme::TextStyle& typeStyle(Button::Kind kind) {
    return kind == Button::Kind::prominent ? Theme::Typography::subtitle : Theme::Typography::bodyMedium;
}

}

Button::Button(Kind kind, const QString& text, QWidget* parent) : Control(parent), kind_(kind) {
    setText(text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Button::setKind(Kind kind) {
    if (kind == kind_) return;
    kind_ = kind;
    updateGeometry();
    update();
}

void Button::setLarge(bool large) {
    large_ = large;
    updateGeometry();
}

QSize Button::sizeHint() const {
    const int padding = large_ ? Theme::Space::lg : 12;
    return {textWidth(typeStyle(kind_), text()) + 2 * padding, large_ ? 40 : 28};
}

void Button::paint(QPainter& painter) {
    const Faces tones = faces(kind_);
    const auto& fill = isDown() ? tones.pressed : isHovered() ? tones.hover : tones.rest;
    // The neutral fills alone are not seen in the dark.
    const bool bordered = kind_ == Kind::neutralOnBackground,
               outlined = (kind_ == Kind::neutral || bordered) && appearanceOf(*this) == Appearance::dark;
    const qreal inset = bordered || outlined ? 0.5 : 0;
    painter.setPen(outlined   ? QPen(Theme::outline.on(*this))
                   : bordered ? QPen(Theme::border.on(*this))
                              : QPen(Qt::NoPen));
    painter.setBrush(fill.on(*this));
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), Theme::Radius::sm - inset,
                            Theme::Radius::sm - inset);
    paintLine(painter, rect(), typeStyle(kind_), tones.ink.on(*this), text(), Qt::AlignHCenter);
}

IconButton::IconButton(Symbol symbol, const QString& accessibleName, QWidget* parent)
    : Control(parent), symbol_(symbol) {
    setAccessibleName(accessibleName);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconButton::setSymbolSize(int size) {
    symbolSize_ = size;
    update();
}

void IconButton::setFaceSize(QSize size) {
    faceSize_ = size;
    update();
}

void IconButton::setEmphasised(bool on) {
    if (std::exchange(emphasised_, on) != on) update();
}

void IconButton::setOpen(bool on) {
    if (std::exchange(open_, on) != on) update();
}

QRect IconButton::face() const {
    QRect face({}, faceSize_);
    face.moveTopLeft({(width() - faceSize_.width()) / 2, (height() - faceSize_.height()) / 2});
    return face;
}

void IconButton::paint(QPainter& painter) {
    if (shy_ && !emphasised_ && !open_ && !isHovered()) return;
    if (open_ || isHovered()) {
        const auto& fill = open_ ? Theme::accentSoft : isDown() ? Theme::neutralPressed : Theme::tile;
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill.on(*this));
        painter.drawRoundedRect(face(), faceRadius(), faceRadius());
    }
    const auto& ink = open_         ? Theme::accentOnSoft
                      : isHovered() ? Theme::text
                      : emphasised_ ? Theme::textSecondary
                                    : Theme::textTertiary;
    paintSymbol(painter, face(), symbol_, symbolSize_, ink.on(*this));
}

Chip::Chip(const QString& text, QWidget* parent) : Control(parent) {
    setText(text);
    setCheckable(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Chip::sizeHint() const { return {textWidth(Theme::Typography::callout, text()) + 24, 28}; }

void Chip::paint(QPainter& painter) {
    const auto& fill = isDown()      ? Theme::accentSoftPressed
                       : isChecked() ? Theme::accentSoft
                       : isHovered() ? Theme::neutralHover
                                     : Theme::tile;
    const auto& ink = isChecked() || isDown() ? Theme::accentOnSoft : Theme::textSecondary;
    // Chosen is told by a ring too: the two fills are hardly told apart.
    painter.setPen(isChecked() ? QPen(Theme::accent.on(*this), 1.5) : QPen(Qt::NoPen));
    painter.setBrush(fill.on(*this));
    const qreal inset = isChecked() ? 0.75 : 0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), faceRadius() - inset,
                            faceRadius() - inset);
    paintLine(painter, rect(), Theme::Typography::callout, ink.on(*this), text(), Qt::AlignHCenter);
}

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
    const bool danger = kind_ == Kind::danger;
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
