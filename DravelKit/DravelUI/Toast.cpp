#include "DravelKit/DravelUI/Toast.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QPainter>

#include <algorithm>

namespace dravel {
namespace {

constexpr int faceHeight = 48, besideButton = 10, shadowReach = 6, widest = 560;

}

Toast::Toast(QWidget* parent)
    : QWidget(parent), text_(new TextLabel(Theme::Typography::body, Theme::text, {}, this)),
      action_(new Button(Button::Kind::Soft, {}, this)) {
    text_->setObjectName(QStringLiteral("toastText"));
    text_->setElide(Qt::ElideMiddle);
    action_->setObjectName(QStringLiteral("toastAction"));
    connect(action_, &QAbstractButton::clicked, this, &Toast::acted);
    auto* line = new QHBoxLayout(this);
    line->setSpacing(Theme::Space::md);
    line->addWidget(text_, 1);
    line->addWidget(action_);
    hide();
}

int Toast::placeAtFootOf(const QRect& page) {
    const int wanted = layout()->sizeHint().width(), room = page.width() - 2 * Theme::Space::lg + 2 * shadowReach;
    const int width = std::min({wanted, widest, room});
    constexpr int height = faceHeight + 2 * shadowReach, gap = Theme::Space::md;
    setGeometry(page.center().x() - width / 2, page.bottom() + 1 - gap + shadowReach - height, width, height);
    raise();
    return isHidden() ? 0 : faceHeight + gap;
}

void Toast::tell(const QString& text, const QString& action) {
    const bool again = isVisible();
    text_->setText(text);
    text_->setToolTip(text);
    setAccessibleName(text);
    action_->setText(action);
    action_->setAccessibleName(action + QStringLiteral(" : ") + text);
    action_->setHidden(action.isEmpty());
    action_->updateGeometry();
    const int right = action.isEmpty() ? Theme::Space::md : besideButton;
    layout()->setContentsMargins(Theme::Space::md + shadowReach, 0, right + shadowReach, 0);
    show();
    Q_EMIT changed();
    if (!again) return; // showing it has told screen readers
    QAccessibleEvent news(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&news);
}

void Toast::dismiss() {
    if (isHidden()) return;
    hide();
    Q_EMIT changed();
}

void Toast::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face = QRectF(rect()).adjusted(shadowReach, shadowReach, -shadowReach, -shadowReach);
    if (appearanceOf(*this) == Appearance::Light) paintShadow(painter, face, Theme::Radius::md);
    painter.setPen(Theme::border.on(*this));
    painter.setBrush(Theme::surface.on(*this));
    painter.drawRoundedRect(face.adjusted(0.5, 0.5, -0.5, -0.5), Theme::Radius::md - 0.5, Theme::Radius::md - 0.5);
}

}
