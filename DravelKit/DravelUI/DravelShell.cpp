#include "DravelKit/DravelUI/DravelShell.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStackedWidget>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

constexpr int faceHeight = 48, besideButton = 10, shadowReach = 6, widest = 560;

}

Toast::Toast(QWidget* parent)
    : QWidget(parent), text_(new TextLabel(Theme::Typography::body, Theme::text, {}, this)),
      action_(new Button(Button::Kind::soft, {}, this)) {
    text_->setObjectName(u"toastText"_s);
    text_->setElide(Qt::ElideMiddle);
    action_->setObjectName(u"toastAction"_s);
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
    action_->setAccessibleName(action + u" : "_s + text);
    action_->setHidden(action.isEmpty());
    action_->updateGeometry();
    const int right = action.isEmpty() ? Theme::Space::md : besideButton;
    layout()->setContentsMargins(Theme::Space::md + shadowReach, 0, right + shadowReach, 0);
    show();
    Q_EMIT changed();
    if (again) announce(*this);
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
    if (appearanceOf(*this) == Appearance::light) paintShadow(painter, face, Theme::Radius::md);
    painter.setPen(Theme::border.on(*this));
    painter.setBrush(Theme::surface.on(*this));
    painter.drawRoundedRect(face.adjusted(0.5, 0.5, -0.5, -0.5), Theme::Radius::md - 0.5, Theme::Radius::md - 0.5);
}

namespace {

constexpr int handleWidth = 5, sidePadding = 12, footPadding = 12, iconLeft = 20, iconTop = 20, iconSide = 28;
constexpr int brandGap = 10, listTop = 72, narrowestPage = 480;

// Invisible: only the cursor tells that the sidebar can be dragged.
class Handle final : public QWidget {
  public:
    explicit Handle(DravelShell& shell) : QWidget(&shell), shell_(shell) {
        setObjectName(u"sidebarHandle"_s);
        setCursor(Qt::SplitHCursor);
    }

  protected:
    void mousePressEvent(QMouseEvent* event) override {
        grab_ = event->globalPosition().toPoint().x() - shell_.sidebarWidth();
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        shell_.setSidebarWidth(event->globalPosition().toPoint().x() - grab_);
    }
    void mouseDoubleClickEvent(QMouseEvent*) override { shell_.setSidebarWidth(DravelShell::idealSidebar); }

  private:
    DravelShell& shell_;
    int grab_ = 0;
};

}

DravelShell::DravelShell(const QString& brand, const QIcon& icon, const QString& listName, QWidget* parent)
    : QWidget(parent), icon_(icon), brand_(new TextLabel(Theme::Typography::cardTitle, Theme::text, brand, this)),
      list_(new SidebarList(listName, this)), toast_(new Toast(this)), pages_(new QStackedWidget(this)),
      handle_(new Handle(*this)) {
    brand_->setObjectName(u"brand"_s);
    list_->setObjectName(u"sidebarList"_s);
    pages_->setObjectName(u"pages"_s);
    handle_->raise();
    toast_->setObjectName(u"toast"_s);
    connect(toast_, &Toast::changed, this, &DravelShell::arrangeToast);
}

void DravelShell::setFoot(QWidget* foot) {
    foot_ = foot;
    foot->setParent(this);
    foot->show();
    setTabOrder(list_, pages_);
    arrange();
}

void DravelShell::setTool(QWidget* tool) {
    tool_ = tool;
    tool->setParent(this);
    arrange();
}

void DravelShell::showPage(QWidget* page) {
    if (pages_->indexOf(page) < 0) pages_->addWidget(page);
    pages_->setCurrentWidget(page);
    arrangeToast();
}

QWidget* DravelShell::page() const { return pages_->currentWidget(); }

void DravelShell::setSidebarWidth(int wanted) {
    wantedSidebar_ = std::max(wanted, minimumSidebar);
    arrange();
}

// In the sidebar the arrows do what dragging its edge does.
void DravelShell::keyPressEvent(QKeyEvent* event) {
    constexpr int step = 16;
    const int by = event->key() == Qt::Key_Left ? -step : event->key() == Qt::Key_Right ? step : 0;
    const auto* focused = focusWidget();
    if (by == 0 || !focused || !list_->isAncestorOf(focused)) return QWidget::keyPressEvent(event);
    setSidebarWidth(sidebarWidth_ + by);
}

void DravelShell::resizeEvent(QResizeEvent*) { arrange(); }

void DravelShell::arrange() {
    const bool folded = width() < foldsBelow;
    sidebarWidth_ =
        folded ? foldedSidebar : std::max(std::min(wantedSidebar_, width() - narrowestPage), minimumSidebar);
    const int room = sidebarWidth_ - 1 - 2 * sidePadding; // 1: the line at its right
    brand_->setHidden(folded);
    handle_->setHidden(folded);
    const int textLeft = iconLeft + iconSide + brandGap;
    brand_->setGeometry(textLeft, iconTop + 4, sidebarWidth_ - 1 - textLeft - sidePadding, 20);
    if (tool_) {
        const QSize size = tool_->sizeHint();
        const QPoint corner(sidebarWidth_ - 1 - sidePadding - size.width(), iconTop + (iconSide - size.height()) / 2);
        tool_->setGeometry({corner, size});
        tool_->setHidden(folded);
    }
    list_->setGeometry(sidePadding, listTop, room, list_->sizeHint().height());
    if (foot_) {
        const int height = foot_->sizeHint().height();
        foot_->setGeometry(sidePadding, this->height() - footPadding - height, room, height);
    }
    pages_->setGeometry(sidebarWidth_, 0, width() - sidebarWidth_, height());
    handle_->setGeometry(sidebarWidth_ - 1 - handleWidth / 2, 0, handleWidth, height());
    update(0, 0, sidebarWidth_, height());
    arrangeToast();
}

void DravelShell::arrangeToast() {
    const int covered = toast_->placeAtFootOf(pages_->geometry());
    if (auto* page = qobject_cast<DravelPage*>(pages_->currentWidget())) page->setCoveredFoot(covered);
}

void DravelShell::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(0, 0, sidebarWidth_ - 1, height(), Theme::surface.on(*this));
    painter.fillRect(sidebarWidth_ - 1, 0, 1, height(), Theme::border.on(*this));
    const int left = brand_->isHidden() ? (sidebarWidth_ - 1 - iconSide) / 2 : iconLeft;
    icon_.paint(&painter, left, iconTop, iconSide, iconSide);
}

}
