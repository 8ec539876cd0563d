#include "DravelKit/DravelUI/SidebarBadge.h"

#include "DravelKit/DravelUI/TextLabel.h"

#include <QPainter>

namespace dravel {

SidebarBadge::SidebarBadge(QWidget* parent)
    : QWidget(parent), disc_(new Disc({.fill = Theme::surface, .ink = Theme::successText}, this)),
      title_(new TextLabel(Theme::Typography::subtitle, Theme::text, {}, this)),
      subtitle_(new TextLabel(Theme::Typography::caption, Theme::textSecondary, {}, this)) {
    title_->setObjectName(QStringLiteral("badgeTitle"));
    subtitle_->setObjectName(QStringLiteral("badgeSubtitle"));
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
    setAccessibleName(content.title + QStringLiteral(", ") + content.subtitle);
    setToolTip(content.subtitle);
}

void SidebarBadge::resizeEvent(QResizeEvent*) {
    constexpr int padding = 12, gap = 10, disc = 28, lines = 32; // 18 + 14
    disc_->move(padding, (height() - disc) / 2);
    const int left = padding + disc + gap, room = width() - left - padding, top = (height() - lines) / 2;
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
