#include "Tacla/MainWindow/Rows/AddTaskCard.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/FlowLayout.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;
using dravel::Switch;

AddTaskCard::AddTaskCard(AppModel& model, const dravel::Now& now, QWidget* parent)
    : Card(parent), model_(model), now_(now), today_(currentDay()),
      title_(new dravel::TextField(dravel::TextField::Kind::Frameless, u"Nouvelle tâche…"_s, this)), chips_{},
      date_(new dravel::DateField(u"Date"_s, this)), hasTime_(new Switch(u"Heure"_s, Switch::Kind::Plain, this)),
      strong_(new Switch(u"Prioritaire"_s, Switch::Kind::Danger, this)),
      time_(new dravel::TimeField(u"Heure de la tâche"_s, this)),
      add_(new dravel::Button(dravel::Button::Kind::Prominent, u"Ajouter"_s, this)) {
    const auto days = quickDays(today_);
    for (std::size_t i = 0; i < chips_.size(); ++i) chips_[i] = new dravel::Chip(toQt(days[i].label), this);
    date_->setDateRange({1, 1, 1}, {9999, 12, 31});
    nameFields();
    arrange();
    followFields();
    setToday(today_);
}

void AddTaskCard::nameFields() {
    setObjectName(u"add"_s);
    title_->setObjectName(u"add.title"_s);
    title_->setAccessibleName(u"Nouvelle tâche"_s);
    chips_[0]->setObjectName(u"add.today"_s);
    chips_[1]->setObjectName(u"add.tomorrow"_s);
    chips_[2]->setObjectName(u"add.monday"_s);
    date_->setObjectName(u"add.date"_s);
    hasTime_->setObjectName(u"add.hasTime"_s);
    time_->setObjectName(u"add.time"_s);
    strong_->setObjectName(u"add.strong"_s);
    add_->setObjectName(u"add.button"_s);
}

void AddTaskCard::arrange() {
    QWidget* previous = title_;
    for (QWidget* next :
         std::initializer_list<QWidget*>{chips_[0], chips_[1], chips_[2], date_, hasTime_, time_, strong_, add_}) {
        setTabOrder(previous, next);
        previous = next;
    }
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(iconColumn, Theme::Space::sm, Theme::Space::md, Theme::Space::md);
    column->setSpacing(Theme::Space::xs);
    column->addLayout(fieldLine());
    column->addLayout(choices());
}

QBoxLayout* AddTaskCard::fieldLine() {
    auto* line = new QHBoxLayout;
    line->setSpacing(textColumn - iconColumn - iconWidth);
    line->addWidget(
        new dravel::Disc({.diameter = iconWidth, .symbol = dravel::Symbol::PlusLg, .symbolSize = 12}, this));
    title_->setFixedHeight(40);
    line->addWidget(title_, 1);
    return line;
}

QBoxLayout* AddTaskCard::choices() {
    auto* flow = new dravel::FlowLayout(12, Theme::Space::sm);
    for (auto* chip : chips_) flow->addWidget(chip);
    flow->setGapBefore(chips_[1], Theme::Space::sm);
    flow->setGapBefore(chips_[2], Theme::Space::sm);
    flow->addWidget(date_);
    flow->addWidget(hasTime_);
    flow->addWidget(time_);
    flow->setGapBefore(time_, Theme::Space::sm);
    flow->addWidget(strong_);
    flow->addWidget(add_);
    flow->setTrailing(add_);
    auto* line = new QHBoxLayout;
    line->setSpacing(0);
    line->addSpacing(textColumn - iconColumn);
    line->addLayout(flow, 1);
    return line;
}

void AddTaskCard::followFields() {
    connect(title_, &dravel::TextField::focusChanged, this, &Card::setHighlighted);
    connect(title_, &QLineEdit::textChanged, this, [this](const QString& text) { draft_.title = fromQt(text); });
    connect(title_, &QLineEdit::returnPressed, this, &AddTaskCard::add);
    connect(add_, &QAbstractButton::clicked, this, &AddTaskCard::add);
    for (std::size_t i = 0; i < chips_.size(); ++i) {
        connect(chips_[i], &QAbstractButton::clicked, this, [this, i] { pick(quickDays(currentDay())[i].day); });
        connect(chips_[i], &QAbstractButton::toggled, this, [this, i](bool on) {
            const bool selected = quickDays(today_)[i].day == draft_.day(today_);
            if (on != selected) pick(quickDays(currentDay())[i].day); // a screen reader toggled it
        });
    }
    connect(date_, &QDateEdit::dateChanged, this, [this](QDate date) { pick(fromQt(date)); });
    connect(time_, &QTimeEdit::timeChanged, this, [this](QTime time) { draft_.time = fromQt(time); });
    connect(strong_, &QAbstractButton::toggled, this, [this](bool on) { draft_.strong = on; });
    connect(hasTime_, &QAbstractButton::toggled, this, [this](bool on) {
        draft_.hasTime = on;
        time_->setVisible(on);
    });
}

void AddTaskCard::setToday(Day today) {
    today_ = today;
    date_->setToday(toQt(today));
    showDraft();
}

void AddTaskCard::focusTitle() { title_->setFocus(Qt::OtherFocusReason); }

void AddTaskCard::pick(Day day) {
    today_ = currentDay();
    draft_.pick(day, today_);
    showDraft();
}

void AddTaskCard::add() {
    if (const auto task = newTask(draft_, currentDay())) {
        model_.add(task->title, task->day, task->time, task->strong);
        draft_ = afterAdding(draft_);
    }
    draft_.title.clear();
    showDraft();
    focusTitle();
}

void AddTaskCard::showDraft() {
    const auto day = draft_.day(today_);
    const QSignalBlocker quiet(date_);
    date_->setDate(toQt(day));
    const auto days = quickDays(today_);
    for (std::size_t i = 0; i < chips_.size(); ++i) chips_[i]->setSelected(days[i].day == day);
    if (draft_.title.empty()) title_->clear();
    hasTime_->setChecked(draft_.hasTime);
    time_->setVisible(draft_.hasTime);
    time_->setTime(toQt(draft_.time));
    strong_->setChecked(draft_.strong);
}

}
