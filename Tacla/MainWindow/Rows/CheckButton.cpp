#include "Tacla/MainWindow/Rows/CheckButton.h"

#include <QPainter>

#include <optional>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;

struct CheckButton::Look {
    struct Stroke {
        Theme::Tone tone;
        qreal width = 1.5;
    };
    std::optional<Stroke> stroke;
    std::optional<Theme::Tone> fill, tick;
};

CheckButton::CheckButton(QWidget* parent) : Control(parent) {
    setObjectName(u"check"_s);
    setCheckable(true);
    setTask({}, false, false);
}

void CheckButton::setTask(const QString& title, bool done, bool strong) {
    const QString help = done ? u"Décocher"_s : u"Cocher"_s;
    setToolTip(help);
    setAccessibleName(help + u' ' + title);
    setChecked(done);
    strong_ = strong && !done;
    update();
}

void CheckButton::setRowHighlighted(bool on) {
    if (rowHighlighted_ == on) return;
    rowHighlighted_ = on;
    update();
}

CheckButton::Look CheckButton::look() const {
    const bool pressed = isDown(), hovered = pressed || isHovered();
    if (isChecked()) {
        if (hovered) return {Look::Stroke{Theme::textTertiary}, std::nullopt, Theme::textTertiary};
        return {std::nullopt, Theme::successSoft, Theme::successText};
    }
    if (strong_) {
        const auto tick = hovered ? std::optional(Theme::dangerText) : std::nullopt;
        return {Look::Stroke{Theme::dangerText, 2}, Theme::dangerSoft, tick};
    }
    if (hovered)
        return {Look::Stroke{Theme::accent}, pressed ? Theme::accentSoftPressed : Theme::accentSoft, Theme::accent};
    return {Look::Stroke{rowHighlighted_ ? Theme::textTertiary : Theme::outline}, std::nullopt, std::nullopt};
}

void CheckButton::paint(QPainter& painter) {
    const auto [stroke, fill, tick] = look();
    const qreal inset = stroke ? stroke->width / 2 : 0;
    painter.translate(face().topLeft());
    painter.setPen(stroke ? QPen(stroke->tone.on(*this), stroke->width) : QPen(Qt::NoPen));
    painter.setBrush(fill ? QBrush(fill->on(*this)) : QBrush(Qt::NoBrush));
    painter.drawEllipse(QRectF(inset, inset, 20 - 2 * inset, 20 - 2 * inset));
    if (!tick) return;
    painter.setPen(QPen(tick->on(*this), 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF{{6, 10.4}, {8.8, 13.1}, {14, 7.4}});
}

}
