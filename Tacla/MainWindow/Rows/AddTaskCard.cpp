#include "Tacla/MainWindow/Rows/AddTaskCard.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/FlowLayout.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QCoreApplication>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPointer>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;
using dravel::Switch;

AddTaskCard::AddTaskCard(AppModel& model, const dravel::Now& now, QWidget* parent)
    : Card(parent), model_(model), now_(now), today_(currentDay()),
      title_(new dravel::TextField(dravel::TextField::Kind::frameless, u"Nouvelle tâche…"_s, this)),
      offer_(new dravel::Offer(*title_, this)),
      reason_(new dravel::TextLabel(Theme::Typography::callout, Theme::dangerText, {}, this)), chips_{},
      date_(new dravel::DateField(u"Date"_s, this)), hasTime_(new Switch(u"Heure"_s, Switch::Kind::plain, this)),
      strong_(new Switch(u"Prioritaire"_s, Switch::Kind::danger, this)),
      time_(new dravel::TimeField(u"Heure de la tâche"_s, this)),
      add_(new dravel::Button(dravel::Button::Kind::prominent, u"Ajouter"_s, this)) {
    const auto days = quickDays(today_);
    for (std::size_t i = 0; i < chips_.size(); ++i) {
        chips_[i] = new dravel::Chip(toQt(days[i].label), this);
        chips_[i]->setFocusPolicy(Qt::NoFocus); // the date says the same, and so do words
    }
    date_->setDateRange({1, 1, 1}, {9999, 12, 31});
    nameFields();
    arrange();
    followFields();
    setToday(today_);
}

void AddTaskCard::nameFields() {
    setObjectName(u"add"_s);
    setAcceptDrops(true);
    title_->setObjectName(u"add.title"_s);
    title_->setAccessibleName(u"Nouvelle tâche"_s);
    offer_->setObjectName(u"add.offer"_s);
    reason_->setObjectName(u"add.reason"_s);
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
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(iconColumn, Theme::Space::sm, Theme::Space::md, Theme::Space::md);
    column->setSpacing(Theme::Space::xs);
    column->addLayout(fieldLine());
    reason_->setWraps(true);
    reason_->hide();
    for (QWidget* under : std::initializer_list<QWidget*>{reason_, offer_}) {
        auto* line = new QHBoxLayout;
        line->setSpacing(0);
        line->addSpacing(textColumn - iconColumn);
        line->addWidget(under, under == reason_ ? 1 : 0);
        if (under == offer_) line->addStretch(1);
        column->addLayout(line);
    }
    column->addLayout(choices());
}

QBoxLayout* AddTaskCard::fieldLine() {
    auto* line = new QHBoxLayout;
    line->setSpacing(textColumn - iconColumn - iconWidth);
    line->addWidget(
        new dravel::Disc({.diameter = iconWidth, .symbol = dravel::Symbol::plusLg, .symbolSize = 12}, this));
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
    connect(title_, &dravel::TextField::linesPasted, this, [this](const QStringList& lines) {
        pasted_ = Pasted{fromQt(title_->text()), {}};
        for (const auto& line : lines) pasted_->lines.push_back(fromQt(line));
    });
    connect(title_, &QLineEdit::textChanged, this, [this](const QString& text) {
        draft_.title = fromQt(text);
        explain({});
        offer();
    });
    connect(offer_, &QAbstractButton::clicked, this, [this] {
        if (const auto tasks = offeredTasks(); !tasks.empty()) return addAll(tasks);
        if (told_) take(MomentWords(*told_));
    });
    for (QWidget* control : std::initializer_list<QWidget*>{hasTime_, strong_}) control->installEventFilter(this);
    connect(add_, &QAbstractButton::clicked, this, [this] { add(false); });
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

// On the switches Return adds as everywhere in the card, and a time may be typed at once.
bool AddTaskCard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return Card::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
        keyPressEvent(key);
        return true;
    }
    const bool digit = !key->text().isEmpty() && key->text().front().isDigit();
    if (watched != hasTime_ || !digit) return false;
    startTime(key->text());
    return true;
}

void AddTaskCard::startTime(const QString& typed) {
    hasTime_->setChecked(true);
    time_->setFocus(Qt::TabFocusReason);
    QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, typed);
    QCoreApplication::sendEvent(time_, &key);
}

void AddTaskCard::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return Card::keyPressEvent(event);
    if (!event->isAutoRepeat()) add(event->modifiers().testFlag(Qt::ControlModifier));
}

std::vector<QWidget*> AddTaskCard::stops() const {
    if (draft_.hasTime) return {title_, date_, time_, strong_, add_};
    return {title_, date_, hasTime_, strong_, add_};
}

// Date and time are one stop each. A time that is set stands for its switch, which is the stop before it on the way
// back.
bool AddTaskCard::focusNextPrevChild(bool forward) {
    auto all = stops();
    if (!forward && draft_.hasTime) all.insert(std::ranges::find(all, time_), hasTime_);
    if (forward && hasTime_->hasFocus() && draft_.hasTime) return time_->setFocus(Qt::TabFocusReason), true;
    const auto at = std::ranges::find_if(all, [](const QWidget* stop) { return stop->hasFocus(); });
    if (at == all.end() || (forward ? at + 1 == all.end() : at == all.begin()))
        return Card::focusNextPrevChild(forward);
    (*(forward ? at + 1 : at - 1))->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void AddTaskCard::setToday(Day today) {
    if (today_ != today) draft_.dropPast(today);
    today_ = today;
    date_->setToday(toQt(today));
    showDraft();
}

void AddTaskCard::focusTitle() { title_->setFocus(Qt::OtherFocusReason); }

void AddTaskCard::forgetDay() {
    draft_.picked.reset();
    setToday(currentDay());
}

void AddTaskCard::pick(Day day) {
    today_ = currentDay();
    draft_.pick(day, today_);
    showDraft();
}

std::vector<NewTask> AddTaskCard::offeredTasks() const {
    constexpr std::size_t most = 200; // what is longer is a file of its own
    if (!pasted_ || pasted_->text != draft_.title || pasted_->lines.size() > most) return {};
    auto tasks = pastedTasks(pasted_->lines, draft_, currentDay());
    if (tasks.size() < 2) tasks.clear();
    return tasks;
}

void AddTaskCard::offer() {
    if (const auto several = offeredTasks().size(); several > 0)
        return offer_->make(u"Ajouter %1 tâches ?"_s.arg(several));
    told_ = momentWords(draft_.title, currentDay(), Clock::of(now_()));
    offer_->make(told_ ? toQt(label(*told_, currentDay())) : QString());
}

void AddTaskCard::take(const MomentWords& told) {
    draft_ = taking(told, draft_);
    title_->selectAll();
    title_->insert(toQt(draft_.title)); // undo brings the words back
    setToday(currentDay());
    focusTitle();
}

void AddTaskCard::add(bool more) {
    if (isAdding_) return; // a second Return, while a slow disk writes
    setToday(currentDay());
    focusTitle();
    const auto task = newTask(draft_, today_);
    if (!task) return finish({}, more);
    model_.list().add({*task}, beginAdding(more));
    title_->setReadOnly(isAdding_); // the disk is slow
}

void AddTaskCard::addAll(const std::vector<NewTask>& tasks) {
    if (isAdding_) return;
    model_.list().add(tasks, beginAdding(false));
    title_->setReadOnly(isAdding_);
}

std::function<void(const std::optional<std::string>&)> AddTaskCard::beginAdding(bool more) {
    isAdding_ = true;
    return [card = QPointer(this), more](const auto& why) {
        if (card) card->finish(why, more);
    };
}

// What could not be written stays in the field.
void AddTaskCard::finish(const std::optional<std::string>& why, bool more) {
    isAdding_ = false;
    title_->setReadOnly(false);
    if (why) return explain(toQt(*why));
    if (newTask(draft_, today_)) draft_ = afterAdding(draft_);
    draft_.title.clear();
    showDraft();
    Q_EMIT added(more);
}

// Text that is dropped anywhere on the card fills the field.
void AddTaskCard::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasText()) event->acceptProposedAction();
}

void AddTaskCard::dropEvent(QDropEvent* event) {
    title_->insert(event->mimeData()->text());
    event->acceptProposedAction();
    focusTitle();
}

void AddTaskCard::explain(const QString& why) {
    reason_->setText(why);
    reason_->setVisible(!why.isEmpty());
}

void AddTaskCard::showDraft() {
    const auto day = draft_.day(today_);
    const QSignalBlocker quiet(date_);
    date_->setDate(toQt(day));
    const auto days = quickDays(today_);
    for (std::size_t i = 0; i < chips_.size(); ++i) chips_[i]->setSelected(days[i].day == day);
    // Unlike clear(), this ends the field's own history: what was added is the list's to take back.
    if (draft_.title.empty() && !title_->text().isEmpty()) title_->setText({});
    hasTime_->setChecked(draft_.hasTime);
    time_->setVisible(draft_.hasTime);
    time_->setTime(toQt(draft_.time));
    strong_->setChecked(draft_.strong);
}

}
