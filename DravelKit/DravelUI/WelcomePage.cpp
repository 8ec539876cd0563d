#include "DravelKit/DravelUI/WelcomePage.h"

#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;
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
