#include "DravelKit/DravelUI/Button.h"

#include "DravelKit/DravelUI/TextPaint.h"

#include <QPainter>

namespace dravel {
namespace {

struct Faces {
    Theme::Tone rest, hover, pressed, ink;
};

Faces faces(Button::Kind kind) {
    switch (kind) {
    case Button::Kind::Neutral: return {Theme::tile, Theme::neutralHover, Theme::neutralPressed, Theme::text};
    case Button::Kind::NeutralOnBackground:
        return {Theme::surface, Theme::neutralHover, Theme::neutralPressed, Theme::text};
    case Button::Kind::Soft:
        return {Theme::accentSoft, Theme::softHover, Theme::accentSoftPressed, Theme::accentOnSoft};
    case Button::Kind::Prominent: return {Theme::accent, Theme::accentHover, Theme::accentPressed, Theme::onAccent};
    }
    Q_UNREACHABLE();
}

const Theme::TextStyle& typeStyle(Button::Kind kind) {
    return kind == Button::Kind::Prominent ? Theme::Typography::subtitle : Theme::Typography::bodyMedium;
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
    const bool bordered = kind_ == Kind::NeutralOnBackground;
    const qreal inset = bordered ? 0.5 : 0;
    painter.setPen(bordered ? QPen(Theme::border.on(*this)) : QPen(Qt::NoPen));
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

}
