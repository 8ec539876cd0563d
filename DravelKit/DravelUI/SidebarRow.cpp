#include "DravelKit/DravelUI/SidebarRow.h"

#include "DravelKit/DravelUI/TextPaint.h"

#include <QKeyEvent>
#include <QPainter>

namespace dravel {
namespace {

constexpr int padding = 10, symbolSize = 16, symbolGap = 10;

}

SidebarRow::SidebarRow(Symbol symbol, const QString& title, QWidget* parent) : Control(parent), symbol_(symbol) {
    setText(title);
    setCheckable(true);
}

void SidebarRow::paint(QPainter& painter) {
    const bool lit = isChecked() || isDown();
    if (lit || isHovered()) {
        const auto& fill = isDown() ? Theme::accentSoftPressed : isChecked() ? Theme::accentSoft : Theme::tile;
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill.on(*this));
        painter.drawRoundedRect(rect(), faceRadius(), faceRadius());
    }
    if (ringed_) {
        painter.setPen(QPen(Theme::accent.on(*this), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), faceRadius() - 1, faceRadius() - 1);
    }
    const auto& ink = lit ? Theme::accentOnSoft : isHovered() ? Theme::text : Theme::textSecondary;
    const auto& symbolInk = lit ? ink : Theme::textTertiary;
    paintSymbol(painter, QRectF(padding, 0, symbolSize, height()), symbol_, symbolSize, symbolInk.on(*this));
    paintLine(painter, rect().adjusted(padding + symbolSize + symbolGap, 0, -padding, 0), Theme::Typography::bodyMedium,
              ink.on(*this), text());
}

// Inside the row, not around it.
void SidebarRow::showRing(bool on) {
    ringed_ = on;
    update();
}

void SidebarRow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End: event->ignore(); return; // the list moves
    default: Control::keyPressEvent(event);
    }
}

}
