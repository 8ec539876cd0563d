#include "Tacla/MainWindow/Rows/TaskControls.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/FlowLayout.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <optional>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;
using dravel::Button;
using dravel::Switch;

struct CheckButton::Look {
    struct Stroke {
        Theme::Tone tone;
        qreal width = 1.5;
    };
    std::optional<Stroke> stroke;
    std::optional<Theme::Tone> fill, tick;
};

CheckButton::CheckButton(QWidget* parent) : Control(parent) {
    setObjectName(u"check"_s);
    setCheckable(true);
    setTask({}, false, false);
}

void CheckButton::setTask(const QString& title, bool done, bool strong) {
    const QString help = done ? u"Décocher"_s : u"Cocher"_s;
    setToolTip(help);
    setAccessibleName(help + u' ' + title);
    setChecked(done);
    strong_ = strong && !done;
    update();
}

void CheckButton::setRowHighlighted(bool on) {
    if (rowHighlighted_ == on) return;
    rowHighlighted_ = on;
    update();
}

CheckButton::Look CheckButton::look() const {
    const bool pressed = isDown(), hovered = pressed || isHovered();
    if (isChecked()) {
        if (hovered) return {Look::Stroke{Theme::textTertiary}, std::nullopt, Theme::textTertiary};
        return {std::nullopt, Theme::successSoft, Theme::successText};
    }
    if (strong_) {
        const auto tick = hovered ? std::optional(Theme::dangerText) : std::nullopt;
        return {Look::Stroke{Theme::dangerText, 2}, Theme::dangerSoft, tick};
    }
    if (hovered)
        return {Look::Stroke{Theme::accent}, pressed ? Theme::accentSoftPressed : Theme::accentSoft, Theme::accent};
    return {Look::Stroke{rowHighlighted_ ? Theme::textTertiary : Theme::outline}, std::nullopt, std::nullopt};
}

void CheckButton::paint(QPainter& painter) {
    const auto [stroke, fill, tick] = look();
    const qreal inset = stroke ? stroke->width / 2 : 0;
    painter.translate(face().topLeft());
    painter.setPen(stroke ? QPen(stroke->tone.on(*this), stroke->width) : QPen(Qt::NoPen));
    painter.setBrush(fill ? QBrush(fill->on(*this)) : QBrush(Qt::NoBrush));
    painter.drawEllipse(QRectF(inset, inset, 20 - 2 * inset, 20 - 2 * inset));
    if (!tick) return;
    painter.setPen(QPen(tick->on(*this), 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF{{6, 10.4}, {8.8, 13.1}, {14, 7.4}});
}

TaskEditor::TaskEditor(const TaskDraft& draft, Day today, QWidget* parent)
    : QWidget(parent), draft_(draft), opened_(draft),
      note_(new dravel::TextLabel(Theme::Typography::body, Theme::dangerText, {}, this)),
      title_(new dravel::TextField(dravel::TextField::Kind::Boxed, u"Titre de la tâche"_s, this)),
      date_(new dravel::DateField(u"Date"_s, this)), hasTime_(new dravel::Switch(u"Heure"_s)),
      time_(new dravel::TimeField(u"Heure de la tâche"_s, this)),
      cancel_(new Button(Button::Kind::Neutral, u"Annuler"_s, this)),
      save_(new Button(Button::Kind::Prominent, u"Enregistrer"_s, this)) {
    setObjectName(u"editor"_s);
    title_->setObjectName(u"editor.title"_s);
    title_->setAccessibleName(u"Titre de la tâche"_s);
    date_->setObjectName(u"editor.date"_s);
    hasTime_->setObjectName(u"editor.hasTime"_s);
    time_->setObjectName(u"editor.time"_s);
    cancel_->setObjectName(u"editor.cancel"_s);
    save_->setObjectName(u"editor.save"_s);
    setToday(today);
    fill();
    arrange();
    followFields();
}

void TaskEditor::setToday(Day today) { date_->setToday(toQt(today)); }

void TaskEditor::fill() {
    title_->setText(toQt(draft_.title));
    date_->setDateRange({1, 1, 1}, {9999, 12, 31});
    date_->setDate(toQt(draft_.day));
    hasTime_->setChecked(draft_.hasTime);
    time_->setTime(toQt(draft_.time));
    time_->setVisible(draft_.hasTime);
}

void TaskEditor::arrange() {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    title_->setFixedHeight(titleHeight);
    column->addWidget(title_);
    auto* line = new QHBoxLayout;
    line->setSpacing(8);
    line->addWidget(date_);
    line->addSpacing(4); // 12 before a switch's label
    line->addWidget(hasTime_);
    line->addWidget(time_);
    line->addStretch();
    line->addWidget(cancel_);
    line->addWidget(save_);
    column->addLayout(line);
    column->addWidget(note_);
    column->addStretch();
    note_->setObjectName(u"editor.note"_s);
    note_->setWraps(true);
    note_->setSelectable(true);
    note_->hide();
}

int TaskEditor::neededHeight(int width) const {
    constexpr int fields = 68, gap = 8;
    return note_->isHidden() ? fields : fields + gap + note_->heightForWidth(width);
}

void TaskEditor::say(const QString& note) {
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
}

void TaskEditor::followFields() {
    connect(title_, &QLineEdit::textChanged, this, [this](const QString& text) { draft_.title = fromQt(text); });
    connect(date_, &QDateEdit::dateChanged, this, [this](QDate date) { draft_.day = fromQt(date); });
    connect(time_, &QTimeEdit::timeChanged, this, [this](QTime time) { draft_.time = fromQt(time); });
    connect(hasTime_, &QAbstractButton::toggled, this, [this](bool on) {
        draft_.hasTime = on;
        time_->setVisible(on);
    });
    connect(cancel_, &QAbstractButton::clicked, this, [this] { Q_EMIT cancelled(Qt::OtherFocusReason); });
    connect(save_, &QAbstractButton::clicked, this, [this] { Q_EMIT saved(Qt::OtherFocusReason); });
}

std::vector<QWidget*> TaskEditor::stops() const {
    if (draft_.hasTime) return {title_, date_, hasTime_, time_, cancel_, save_};
    return {title_, date_, hasTime_, cancel_, save_};
}

void TaskEditor::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape: Q_EMIT cancelled(Qt::TabFocusReason); break;
    case Qt::Key_Return:
    case Qt::Key_Enter: Q_EMIT saved(Qt::TabFocusReason); break;
    default: QWidget::keyPressEvent(event);
    }
}

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
    // Unlike clear(), this ends the field's own history: what was added is the list's to take back.
    if (draft_.title.empty() && !title_->text().isEmpty()) title_->setText({});
    hasTime_->setChecked(draft_.hasTime);
    time_->setVisible(draft_.hasTime);
    time_->setTime(toQt(draft_.time));
    strong_->setChecked(draft_.strong);
}

}
