#include "Tacla/MainWindow/Rows/TaskControls.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <optional>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;
using dravel::Button;

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

TaskEditor::TaskEditor(const TaskDraft& draft, const dravel::Now& now, QWidget* parent)
    : QWidget(parent), draft_(draft), opened_(draft), now_(now),
      title_(new dravel::TextField(dravel::TextField::Kind::boxed, u"Titre de la tâche"_s, this)),
      offer_(new dravel::Offer(*title_, this)), date_(new dravel::DateField(u"Date"_s, this)),
      hasTime_(new dravel::Switch(u"Heure"_s)), time_(new dravel::TimeField(u"Heure de la tâche"_s, this)),
      cancel_(new Button(Button::Kind::neutral, u"Annuler"_s, this)),
      save_(new Button(Button::Kind::prominent, u"Enregistrer"_s, this)),
      note_(new dravel::TextLabel(Theme::Typography::body, Theme::dangerText, {}, this)) {
    setObjectName(u"editor"_s);
    title_->setObjectName(u"editor.title"_s);
    title_->setAccessibleName(u"Titre de la tâche"_s);
    offer_->setObjectName(u"editor.offer"_s);
    date_->setObjectName(u"editor.date"_s);
    hasTime_->setObjectName(u"editor.hasTime"_s);
    time_->setObjectName(u"editor.time"_s);
    cancel_->setObjectName(u"editor.cancel"_s);
    save_->setObjectName(u"editor.save"_s);
    setToday(Day::of(now_()));
    fill();
    arrange();
    followFields();
}

void TaskEditor::setToday(Day today) { date_->setToday(toQt(today)); }

void TaskEditor::fill() {
    title_->setText(toQt(draft_.title));
    title_->setReadOnly(draft_.title.size() > longestDrawn); // there is more of it
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
    column->addWidget(offer_);
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

void TaskEditor::say(const QString& note) {
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
}

void TaskEditor::followFields() {
    connect(title_, &QLineEdit::textChanged, this, [this](const QString& text) {
        draft_.title = fromQt(text);
        offer();
    });
    connect(offer_, &QAbstractButton::clicked, this, [this] {
        if (told_) take(MomentWords(*told_));
    });
    connect(date_, &QDateEdit::dateChanged, this, [this](QDate date) { draft_.day = fromQt(date); });
    connect(time_, &QTimeEdit::timeChanged, this, [this](QTime time) { draft_.time = fromQt(time); });
    connect(hasTime_, &QAbstractButton::toggled, this, [this](bool on) {
        draft_.hasTime = on;
        time_->setVisible(on);
    });
    connect(cancel_, &QAbstractButton::clicked, this, [this] { Q_EMIT cancelled(Qt::OtherFocusReason); });
    connect(save_, &QAbstractButton::clicked, this, [this] { Q_EMIT saved(Qt::OtherFocusReason); });
}

int TaskEditor::fieldsHeight() const { return offer_->isVisibleTo(this) ? 104 : 68; }

int TaskEditor::neededHeight(int width) const {
    constexpr int gap = 8;
    return note_->isHidden() ? fieldsHeight() : fieldsHeight() + gap + note_->heightForWidth(width);
}

// A priority is not the editor's: words that tell one stay in the title.
void TaskEditor::offer() {
    const auto today = Day::of(now_());
    told_ = momentWords(draft_.title, today, Clock::of(now_()));
    if (told_ && told_->strong) told_.reset();
    const int before = fieldsHeight();
    offer_->make(told_ ? toQt(label(*told_, today)) : QString());
    if (fieldsHeight() != before) Q_EMIT heightChanged();
}

void TaskEditor::take(const MomentWords& told) {
    draft_ = taking(told, draft_);
    title_->selectAll();
    title_->insert(toQt(draft_.title)); // undo brings the words back
    const auto taken = draft_;
    date_->setDate(toQt(taken.day));
    time_->setTime(toQt(taken.time));
    hasTime_->setChecked(taken.hasTime);
    title_->setFocus(Qt::OtherFocusReason);
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

}
