#include "DravelKit/DravelUI/DayCell.h"

#include "DravelKit/DravelUI/TextPaint.h"

#include <QKeyEvent>
#include <QLocale>
#include <QPainter>

#include <optional>

namespace dravel {

DayCell::DayCell(QWidget* parent) : Control(parent) { setCheckable(true); }

void DayCell::setDay(const Day& day) {
    day_ = day;
    setText(QString::number(day.date.day()));
    setAccessibleName(QLocale(QLocale::French).toString(day.date, QStringLiteral("dddd d MMMM yyyy")));
    setChecked(day.selected);
    update();
}

// Arrows belong to the month around it.
void DayCell::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space: Control::keyPressEvent(event); break;
    default: event->ignore();
    }
}

void DayCell::paint(QPainter& painter) {
    const auto fill = [this]() -> std::optional<Theme::Tone> {
        if (day_.selected) return Theme::accent;
        if (day_.today) return Theme::accentSoft;
        if (isHovered()) return Theme::tile;
        return {};
    }();
    if (fill) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill->on(*this));
        painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), faceRadius(), faceRadius());
    }
    const auto& ink = day_.selected     ? Theme::onAccent
                      : day_.today      ? Theme::accentOnSoft
                      : day_.otherMonth ? Theme::textTertiary
                                        : Theme::text;
    Theme::TextStyle style = Theme::Typography::callout;
    if (day_.selected || day_.today) style.weight = QFont::DemiBold;
    paintLine(painter, rect(), style, ink.on(*this), text(), Qt::AlignHCenter);
}

}
