#include "DravelKit/DravelUI/DravelPage.h"

#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

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

void DravelPage::resizeEvent(QResizeEvent* event) {
    fitColumn();
    QScrollArea::resizeEvent(event);
    Q_EMIT viewChanged();
}

void DravelPage::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    Q_EMIT viewChanged();
}

namespace {

constexpr int columnWidth = 600, introWidth = 560, iconSide = 64, discSide = 32;

class IconLabel final : public QWidget {
  public:
    IconLabel(const QIcon& icon, QWidget* parent) : QWidget(parent), icon_(icon) { setFixedSize(iconSide, iconSide); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        icon_.paint(&painter, rect());
    }

  private:
    QIcon icon_;
};

}

WelcomeStep::WelcomeStep(const QString& title, const QString& text, QWidget* parent)
    : Card(parent), disc_(new Disc({.diameter = discSide}, this)), button_(new Button(Button::Kind::neutral, {}, this)),
      note_(new TextLabel(Theme::Typography::callout, Theme::textSecondary, {}, this)), buttons_(new QVBoxLayout) {
    setAccessibleName(title);
    auto* titleLabel = new TextLabel(Theme::Typography::cardTitle, Theme::text, title, this);
    titleLabel->setObjectName(u"stepTitle"_s);
    auto* textLabel = new TextLabel(Theme::Typography::body, Theme::textSecondary, text, this);
    textLabel->setObjectName(u"stepText"_s);
    textLabel->setWraps(true);
    button_->setObjectName(u"stepButton"_s);
    button_->hide();
    note_->setObjectName(u"stepNote"_s);
    note_->setWraps(true);
    note_->hide();

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addStretch();
    texts->addWidget(titleLabel);
    texts->addWidget(textLabel);
    texts->addWidget(note_);
    texts->addStretch();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Theme::Space::md, Theme::Space::md, Theme::Space::lg, Theme::Space::md);
    row->setSpacing(Theme::Space::md);
    row->addWidget(disc_);
    row->addLayout(texts, 1);
    buttons_->setSpacing(Theme::Space::sm);
    buttons_->addStretch();
    buttons_->addWidget(button_);
    buttons_->addStretch();
    row->addLayout(buttons_);
    setMinimumHeight(76);
}

void WelcomeStep::setNumber(int number) {
    number_ = number;
    refresh();
}

void WelcomeStep::setDone(bool done) {
    done_ = done;
    refresh();
}

void WelcomeStep::setButton(const QString& text, Button::Kind kind) {
    button_->setText(text);
    button_->setKind(kind);
    button_->updateGeometry();
    refresh();
}

Button& WelcomeStep::addSecondButton(const QString& text) {
    auto* second = new Button(Button::Kind::neutral, text, this);
    second->hide();
    buttons_->insertWidget(buttons_->count() - 1, second);
    setTabOrder(button_, second);
    return *second;
}

void WelcomeStep::setNote(const QString& text, const Theme::Tone& tone) {
    note_->setText(text);
    note_->setTone(tone);
    note_->setHidden(text.isEmpty());
}

void WelcomeStep::refresh() {
    disc_->setFace(done_ ? Disc::done(discSide) : Disc::Face{.diameter = discSide, .number = QString::number(number_)});
    button_->setVisible(!done_ && !button_->text().isEmpty());
}

WelcomePage::WelcomePage(const QIcon& icon, const QString& title, const QString& intro, const QString& closing,
                         QWidget* parent)
    : QScrollArea(parent), column_(new CardStage), steps_(new QVBoxLayout),
      closing_(new Button(Button::Kind::prominent, closing)) {
    setAccessibleName(title);
    auto* titleLabel = new TextLabel(Theme::Typography::pageTitle, Theme::text, title);
    titleLabel->setObjectName(u"pageTitle"_s);
    titleLabel->setAlignment(Qt::AlignHCenter);
    auto* introLabel = new TextLabel(Theme::Typography::body, Theme::textSecondary, intro);
    introLabel->setObjectName(u"welcomeIntro"_s);
    introLabel->setAlignment(Qt::AlignHCenter);
    introLabel->setWraps(true);
    introLabel->setFixedWidth(introWidth);
    closing_->setObjectName(u"welcomeClose"_s);
    closing_->setLarge(true);
    steps_->setSpacing(Theme::Space::md);

    auto* rows = new QVBoxLayout(column_);
    rows->setSpacing(0);
    rows->addStretch();
    rows->addWidget(new IconLabel(icon, column_), 0, Qt::AlignHCenter);
    rows->addSpacing(Theme::Space::md);
    rows->addWidget(titleLabel);
    rows->addSpacing(Theme::Space::sm);
    rows->addWidget(introLabel, 0, Qt::AlignHCenter);
    rows->addSpacing(Theme::Space::xl);
    rows->addLayout(steps_);
    rows->addSpacing(Theme::Space::xl);
    rows->addWidget(closing_, 0, Qt::AlignHCenter);
    rows->addStretch();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setWidget(column_);
}

WelcomeStep* WelcomePage::addStep(WelcomeStep* step) {
    step->setNumber(++count_);
    steps_->addWidget(step);
    QWidget* before =
        count_ > 1 ? static_cast<WelcomeStep*>(steps_->itemAt(count_ - 2)->widget())->findChild<Button*>() : nullptr;
    if (before) setTabOrder(before, &step->button());
    setTabOrder(&step->button(), closing_);
    return step;
}

void WelcomePage::resizeEvent(QResizeEvent* event) {
    const int side = std::max((width() - columnWidth) / 2, Theme::Space::lg);
    const int right = viewport()->width() - (width() - side);
    column_->layout()->setContentsMargins(side, Theme::Space::xl, std::max(right, 0), Theme::Space::xl);
    QScrollArea::resizeEvent(event);
    column_->layout()->activate(); // in the same frame, when the scroll bar has just gone
}

void WelcomePage::showEvent(QShowEvent* event) {
    QScrollArea::showEvent(event);
    closing_->setFocus(Qt::OtherFocusReason);
}

}
