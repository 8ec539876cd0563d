#include "DravelKit/DravelUI/SidebarList.h"

#include "DravelKit/DravelUI/TextLabel.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

constexpr int rowHeight = 36, rowGap = 4, rowPadding = 10, symbolSize = 16, symbolGap = 10;

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
    paintSymbol(painter, QRectF(rowPadding, 0, symbolSize, height()), symbol_, symbolSize, symbolInk.on(*this));
    if (isFolded()) return;
    paintLine(painter, rect().adjusted(rowPadding + symbolSize + symbolGap, 0, -rowPadding, 0),
              Theme::Typography::bodyMedium, ink.on(*this), text());
}

bool SidebarRow::isFolded() const { return width() < 2 * rowPadding + 2 * symbolSize + symbolGap; }

void SidebarRow::resizeEvent(QResizeEvent*) { setToolTip(isFolded() ? text() : QString()); }

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
    case Qt::Key_End: // the list moves
    case Qt::Key_Left:
    case Qt::Key_Right: event->ignore(); return; // and so does the sidebar's edge
    default: Control::keyPressEvent(event);
    }
}

SidebarList::SidebarList(const QString& accessibleName, QWidget* parent) : QWidget(parent) {
    setAccessibleName(accessibleName);
}

int SidebarList::addRow(Symbol symbol, const QString& title, const QString& objectName) {
    auto* row = new SidebarRow(symbol, title, this);
    const int index = count();
    row->setObjectName(objectName);
    row->setFocusPolicy(Qt::NoFocus);
    rows_.push_back(row);
    connect(row, &QAbstractButton::clicked, this, [this, index] {
        setCurrent(index);
        Q_EMIT clicked(index);
    });
    if (index == 0) setCurrent(0);
    updateGeometry();
    return index;
}

void SidebarList::setCurrent(int index) {
    if (index == current_ || index < 0 || index >= count()) return;
    const bool focused = current_ >= 0 && rows_[static_cast<std::size_t>(current_)]->hasFocus();
    current_ = index;
    for (int at = 0; at < count(); ++at) {
        SidebarRow* row = rows_[static_cast<std::size_t>(at)];
        row->setChecked(at == index);
        row->setFocusPolicy(at == index ? Qt::TabFocus : Qt::NoFocus); // one stop of the Tab key
    }
    SidebarRow* chosen = rows_[static_cast<std::size_t>(index)];
    if (focused) chosen->setFocus(Qt::TabFocusReason);
    QAccessibleEvent selection(chosen, QAccessible::Selection);
    QAccessible::updateAccessibility(&selection);
    Q_EMIT currentChanged(index);
}

QSize SidebarList::sizeHint() const { return {186, count() * rowHeight + std::max(count() - 1, 0) * rowGap}; }

void SidebarList::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up: setCurrent(std::max(current_ - 1, 0)); break;
    case Qt::Key_Down: setCurrent(std::min(current_ + 1, count() - 1)); break;
    case Qt::Key_Home: setCurrent(0); break;
    case Qt::Key_End: setCurrent(count() - 1); break;
    default: QWidget::keyPressEvent(event);
    }
}

void SidebarList::resizeEvent(QResizeEvent*) {
    for (int at = 0; at < count(); ++at)
        rows_[static_cast<std::size_t>(at)]->setGeometry(0, at * (rowHeight + rowGap), width(), rowHeight);
}

SidebarBadge::SidebarBadge(QWidget* parent)
    : QWidget(parent), disc_(new Disc({.fill = Theme::surface, .ink = Theme::successText}, this)),
      title_(new TextLabel(Theme::Typography::subtitle, Theme::text, {}, this)),
      subtitle_(new TextLabel(Theme::Typography::caption, Theme::textSecondary, {}, this)) {
    title_->setObjectName(u"badgeTitle"_s);
    subtitle_->setObjectName(u"badgeSubtitle"_s);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void SidebarBadge::setContent(const Content& content) {
    disc_->setFace({.fill = content.trouble && !content.busy ? Theme::warningSoft : Theme::surface,
                    .symbol = content.symbol,
                    .ink = content.busy      ? Theme::accent
                           : content.trouble ? Theme::warningText
                                             : Theme::successText,
                    .turning = content.busy});
    if (title_->text() != content.title) title_->setText(content.title);
    if (subtitle_->text() != content.subtitle) subtitle_->setText(content.subtitle);
    subtitle_->setTone(content.trouble ? Theme::warningText : Theme::textSecondary);
    setAccessibleName(content.title + u", "_s + content.subtitle);
    setToolTip(content.subtitle);
}

void SidebarBadge::resizeEvent(QResizeEvent*) {
    constexpr int padding = 12, gap = 10, disc = 28, lines = 32; // 18 + 14
    const int left = padding + disc + gap, room = width() - left - padding, top = (height() - lines) / 2;
    const bool folded = room < disc; // the disc alone says how things stand
    disc_->move(folded ? (width() - disc) / 2 : padding, (height() - disc) / 2);
    for (auto* line : {title_, subtitle_}) line->setHidden(folded);
    title_->setGeometry(left, top, room, 18);
    subtitle_->setGeometry(left, top + 18, room, 14);
}

void SidebarBadge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::tile.on(*this));
    painter.drawRoundedRect(rect(), Theme::Radius::md, Theme::Radius::md);
}

}
