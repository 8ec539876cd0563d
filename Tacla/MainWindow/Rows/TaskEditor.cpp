#include "Tacla/MainWindow/Rows/TaskEditor.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/DateField.h"
#include "DravelKit/DravelUI/Switch.h"
#include "DravelKit/DravelUI/TextField.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace tacla {

using namespace Qt::StringLiterals;
using dravel::Button;

TaskEditor::TaskEditor(const TaskDraft& draft, Day today, QWidget* parent)
    : QWidget(parent), draft_(draft),
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

}
