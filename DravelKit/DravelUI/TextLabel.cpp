#include "DravelKit/DravelUI/TextLabel.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;

namespace {

constexpr int symbolSize = 12, symbolGap = 4, tagHeight = 18, strongPadding = 6;

const Theme::TextStyle& typeStyle(const TagLook& look) {
    return look.fill ? Theme::Typography::captionStrong : Theme::Typography::caption;
}

}

TextLabel::TextLabel(const Theme::TextStyle& style, const Theme::Tone& tone, const QString& text, QWidget* parent)
    : QLabel(parent), style_(style), tone_(tone) {
    setTextFormat(Qt::PlainText);
    setFont(Theme::font(style));
    setText(text);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void TextLabel::setTone(const Theme::Tone& tone) {
    if (tone == tone_) return;
    tone_ = tone;
    update();
}

void TextLabel::setWraps(bool on) {
    wraps_ = on;
    QSizePolicy policy(QSizePolicy::Preferred, on ? QSizePolicy::Minimum : QSizePolicy::Fixed);
    policy.setHeightForWidth(on);
    setSizePolicy(policy);
}

void TextLabel::setSelectable(bool on) {
    selectable_ = on;
    setFocusPolicy(on ? Qt::ClickFocus : Qt::NoFocus);
    setCursor(on ? Qt::IBeamCursor : Qt::ArrowCursor);
}

QSize TextLabel::sizeHint() const {
    int widest = 0;
    const auto lines = QStringView(text()).split(u'\n');
    for (const auto& line : lines) widest = std::max(widest, textWidth(style_, line.toString()));
    return {widest, static_cast<int>(lines.size()) * style_.line + contentsMargins().top()};
}

QSize TextLabel::minimumSizeHint() const {
    return {std::min(sizeHint().width(), 40), style_.line + contentsMargins().top()};
}

int TextLabel::heightForWidth(int width) const { return wraps_ ? paragraph(width).height() : style_.line; }

const Paragraph& TextLabel::paragraph(int width) const {
    if (!paragraph_ || paragraph_->width() != width || laidOut_ != text()) {
        laidOut_ = text();
        paragraph_.emplace(laidOut_, style_, width, alignment() & Qt::AlignHorizontal_Mask);
    }
    return *paragraph_;
}

void TextLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor colour = tone_.on(*this);
    if (!wraps_ && !selectable_) {
        paintLine(painter, contentsRect(), style_, colour, text(), alignment(), elide_);
        return;
    }
    QList<QTextLayout::FormatRange> selections;
    if (anchor_ != cursor_) {
        QTextCharFormat format;
        format.setBackground(Theme::accentSoft.on(*this));
        format.setForeground(Theme::accentOnSoft.on(*this));
        selections.append({std::min(anchor_, cursor_), std::abs(cursor_ - anchor_), format});
    }
    const Paragraph& laidOut = paragraph(width());
    // A paragraph that got more room than it needs stands in the middle, as a line does.
    laidOut.paint(painter, QPointF(0, std::max(0, (height() - laidOut.height()) / 2)), colour, selections);
}

QString TextLabel::selectedPart() const { return text().mid(std::min(anchor_, cursor_), std::abs(cursor_ - anchor_)); }

void TextLabel::mousePressEvent(QMouseEvent* event) {
    if (!selectable_ || event->button() != Qt::LeftButton) return QLabel::mousePressEvent(event);
    anchor_ = cursor_ = paragraph(width()).positionAt(event->position());
    update();
}

void TextLabel::mouseMoveEvent(QMouseEvent* event) {
    if (!selectable_ || !event->buttons().testFlag(Qt::LeftButton)) return QLabel::mouseMoveEvent(event);
    cursor_ = paragraph(width()).positionAt(event->position());
    update();
}

void TextLabel::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!selectable_) return QLabel::mouseDoubleClickEvent(event);
    selectAll();
}

void TextLabel::selectAll() {
    anchor_ = 0;
    cursor_ = static_cast<int>(text().size());
    update();
}

void TextLabel::keyPressEvent(QKeyEvent* event) {
    if (selectable_ && event->matches(QKeySequence::Copy))
        QGuiApplication::clipboard()->setText(selectedPart());
    else if (selectable_ && event->matches(QKeySequence::SelectAll))
        selectAll();
    else
        QLabel::keyPressEvent(event);
}

void TextLabel::focusOutEvent(QFocusEvent* event) {
    QLabel::focusOutEvent(event);
    if (event->reason() == Qt::PopupFocusReason) return;
    anchor_ = cursor_ = 0;
    update();
}

void TextLabel::contextMenuEvent(QContextMenuEvent* event) {
    if (!selectable_) return QLabel::contextMenuEvent(event);
    QMenu menu(this);
    QAction* copy = menu.addAction(u"Copier"_s);
    copy->setEnabled(anchor_ != cursor_);
    QAction* all = menu.addAction(u"Tout sélectionner"_s);
    const QAction* chosen = menu.exec(event->globalPos());
    if (chosen == copy) QGuiApplication::clipboard()->setText(selectedPart());
    if (chosen == all) selectAll();
}

TagLook TagLook::plain() { return {Theme::textSecondary, Theme::textTertiary, {}}; }
TagLook TagLook::danger() { return {Theme::dangerText, Theme::dangerText, Theme::dangerSoft}; }
TagLook TagLook::warning() { return {Theme::warningText, Theme::warningText, Theme::warningSoft}; }
TagLook TagLook::success() { return {Theme::successText, Theme::successText, Theme::successSoft}; }

QSize tagSize(const TagLook& look, const QString& text) {
    const int padding = look.fill ? strongPadding : 0;
    return {symbolSize + symbolGap + textWidth(typeStyle(look), text) + 2 * padding, tagHeight};
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
    paintSymbol(painter, QRectF(rect.left(), rect.top(), symbolSize, tagHeight), symbol, symbolSize,
                look.icon.in(appearance).color());
    paintLine(painter, rect.adjusted(symbolSize + symbolGap, 0, 0, 0), typeStyle(look),
              look.text.in(appearance).color(), text);
}

}
