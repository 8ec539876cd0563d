#include "DravelKit/DravelUI/Chip.h"

#include "DravelKit/DravelUI/TextPaint.h"

#include <QPainter>

namespace dravel {

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
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill.on(*this));
    painter.drawRoundedRect(rect(), faceRadius(), faceRadius());
    paintLine(painter, rect(), Theme::Typography::callout, ink.on(*this), text(), Qt::AlignHCenter);
}

}
