#include "DravelKit/DravelUI/StatusTag.h"

#include "DravelKit/DravelUI/TextPaint.h"

#include <QPainter>

namespace dravel {
namespace {

constexpr int symbolSize = 12, symbolGap = 4, height = 18, strongPadding = 6;

const Theme::TextStyle& typeStyle(const TagLook& look) {
    return look.fill ? Theme::Typography::captionStrong : Theme::Typography::caption;
}

}

TagLook TagLook::plain() { return {Theme::textSecondary, Theme::textTertiary, {}}; }
TagLook TagLook::danger() { return {Theme::dangerText, Theme::dangerText, Theme::dangerSoft}; }
TagLook TagLook::warning() { return {Theme::warningText, Theme::warningText, Theme::warningSoft}; }
TagLook TagLook::success() { return {Theme::successText, Theme::successText, Theme::successSoft}; }

QSize tagSize(const TagLook& look, const QString& text) {
    const int padding = look.fill ? strongPadding : 0;
    return {symbolSize + symbolGap + textWidth(typeStyle(look), text) + 2 * padding, height};
}

void paintTag(QPainter& painter, QPointF topLeft, Appearance appearance, Symbol symbol, const QString& text,
              const TagLook& look) {
    QRectF rect(topLeft, QSizeF(tagSize(look, text)));
    if (look.fill) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.fill->in(appearance).color());
        painter.drawRoundedRect(rect, Theme::Radius::xs, Theme::Radius::xs);
        rect.adjust(strongPadding, 0, -strongPadding, 0);
    }
    paintSymbol(painter, QRectF(rect.left(), rect.top(), symbolSize, height), symbol, symbolSize,
                look.icon.in(appearance).color());
    paintLine(painter, rect.adjusted(symbolSize + symbolGap, 0, 0, 0), typeStyle(look),
              look.text.in(appearance).color(), text);
}

}
