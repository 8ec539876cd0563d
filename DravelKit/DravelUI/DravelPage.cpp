#include "DravelKit/DravelUI/DravelPage.h"

#include "DravelKit/DravelUI/TextLabel.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

constexpr int titleTop = 4, subtitleGap = 4;
constexpr int accentRoom = 8; // "À" reaches above its line box

}

DravelPage::DravelPage(QWidget* parent) : QScrollArea(parent) {
    auto* stage = new CardStage;
    stage->setObjectName(u"pageBody"_s);
    column_ = new QVBoxLayout(stage);
    column_->setSpacing(Theme::Space::md);
    column_->setAlignment(Qt::AlignTop);
    column_->addStretch();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setWidget(stage);
    verticalScrollBar()->setSingleStep(40);
    verticalScrollBar()->setFocusPolicy(Qt::NoFocus);
    verticalScrollBar()->setObjectName(u"pageScrollBar"_s);
    fitColumn();
}

DravelPage::DravelPage(const QString& title, const QString& subtitle, QWidget* parent) : DravelPage(parent) {
    setAccessibleName(title);
    head_ = new QWidget;
    auto* texts = new QVBoxLayout(head_);
    // The column adds its own 16 of the 24 below the head.
    texts->setContentsMargins(0, 0, 0, Theme::Space::lg - Theme::Space::md);
    texts->setSpacing(subtitleGap);
    auto* titleLabel = new TextLabel(Theme::Typography::pageTitle, Theme::text, title, head_);
    titleLabel->setObjectName(u"pageTitle"_s);
    titleLabel->setContentsMargins(0, accentRoom, 0, 0);
    subtitle_ = new TextLabel(Theme::Typography::body, Theme::textSecondary, subtitle, head_);
    subtitle_->setObjectName(u"pageSubtitle"_s);
    subtitle_->setWraps(true);
    subtitle_->setHidden(subtitle.isEmpty());
    texts->addWidget(titleLabel);
    texts->addWidget(subtitle_);
    column_->insertWidget(0, head_);
}

CardStage& DravelPage::stage() const { return *static_cast<CardStage*>(widget()); }

void DravelPage::setSubtitle(const QString& text) {
    if (!subtitle_ || subtitle_->text() == text) return;
    subtitle_->setText(text);
    subtitle_->setHidden(text.isEmpty());
}

void DravelPage::add(QWidget* card) { column_->insertWidget(column_->count() - 1, card); }

void DravelPage::remove(QWidget* card) {
    column_->removeWidget(card);
    card->hide();
}

QRect DravelPage::visiblePart(const QWidget& descendant) const {
    const QPoint corner = descendant.mapTo(viewport(), QPoint());
    return viewport()->rect().translated(-corner).intersected(descendant.rect());
}

void DravelPage::reveal(const QWidget& descendant, int slack) {
    const int top = descendant.mapTo(viewport(), QPoint()).y(), bottom = top + descendant.height();
    const int view = viewport()->height() - coveredFoot_;
    int shift = 0;
    if (bottom + slack > view) shift = bottom + slack - view;
    if (top - shift < slack) shift = top - slack; // what is higher than the view shows its head
    verticalScrollBar()->setValue(verticalScrollBar()->value() + shift);
}

void DravelPage::setCoveredFoot(int height) {
    if (std::exchange(coveredFoot_, height) != height) fitColumn();
}

// The thumb stands inside the right margin: the column is centred in the whole page, whether there is a thumb or not.
void DravelPage::fitColumn() {
    const int column = std::min(width() - 2 * margin, maximumColumn);
    const int left = std::max((width() - column) / 2, margin);
    const int right = viewport()->width() - left - column;
    const int top = head_ ? margin + titleTop - accentRoom : margin;
    column_->setContentsMargins(left, top, std::max(right, 0), Theme::Space::xl + coveredFoot_);
}

namespace {

bool takesKeys(const QWidget& widget) {
    const bool control = qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QLineEdit*>(&widget) ||
                         qobject_cast<const QAbstractSpinBox*>(&widget);
    return control && widget.focusPolicy() & Qt::TabFocus && !widget.focusProxy() && widget.isEnabled();
}

}

// The control nearest to the top of what shows, or to its foot.
QWidget* DravelPage::controlInView(bool topmost) const {
    QWidget* found = nullptr;
    int best = 0;
    for (auto* widget : stage().findChildren<QWidget*>()) {
        if (!widget->isVisible() || !takesKeys(*widget) || visiblePart(*widget) != widget->rect()) continue;
        const int top = widget->mapTo(&stage(), QPoint()).y();
        if (found && (topmost ? top >= best : top <= best)) continue;
        found = widget;
        best = top;
    }
    return found;
}

// Paging takes the focus along: it must be seen.
void DravelPage::keyPressEvent(QKeyEvent* event) {
    const int before = verticalScrollBar()->value();
    QScrollArea::keyPressEvent(event);
    const int moved = verticalScrollBar()->value() - before;
    const auto* focused = focusWidget();
    if (moved == 0 || !focused || !stage().isAncestorOf(focused) || !visiblePart(*focused).isEmpty()) return;
    if (auto* next = controlInView(moved > 0)) next->setFocus(Qt::TabFocusReason);
}

void DravelPage::resizeEvent(QResizeEvent* event) {
    fitColumn();
    QScrollArea::resizeEvent(event);
    Q_EMIT viewChanged();
}

void DravelPage::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    Q_EMIT viewChanged();
}

}
