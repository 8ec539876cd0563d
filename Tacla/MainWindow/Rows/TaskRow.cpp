#include "Tacla/MainWindow/Rows/TaskRow.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/Theme.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/Rows/TaskControls.h"
#include "Tacla/TaskList/Labels.h"

#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 8, textLeft = 40, titleTop = 10, tagTop = 2, tagHeight = 18, tagGap = 12, tagLineGap = 4;
constexpr int hitArea = 32, menuFace = 28, menuGap = 12, editorBottom = 12;

const QString menuHelp = u"Modifier, reporter ou supprimer"_s;
const QString taskIsGone =
    u"Cette tâche n'est plus dans la liste : elle a été renommée ou supprimée ailleurs. Votre saisie reste ici."_s;

Theme::TextStyle titleStyle(bool done) { return Theme::Typography::taskTitle.struckOut(done); }

}

TaskRow::TaskRow(AppModel& model, const dravel::Now& now, Container& container, QWidget* parent)
    : QWidget(parent), model_(model), now_(now), container_(container), check_(new CheckButton(this)),
      menuButton_(new dravel::IconButton(dravel::Symbol::threeDots, menuHelp, this)),
      againButton_(new dravel::IconButton(dravel::Symbol::arrowRepeat, u"Refaire"_s, this)) {
    setObjectName(u"task"_s);
    menuButton_->setObjectName(u"menu"_s);
    menuButton_->setToolTip(menuHelp);
    againButton_->setObjectName(u"again"_s);
    againButton_->setToolTip(u"Refaire (R)"_s);
    againButton_->setShy(true);
    againButton_->setFocusPolicy(Qt::NoFocus); // the key R does it
    againButton_->hide();
    connect(againButton_, &QAbstractButton::clicked, this, &TaskRow::openAgainMenu);
    check_->installEventFilter(this);
    menuButton_->installEventFilter(this);
    // The row may show another task by the time the button is let go. The model reloads at once and may take the row
    // away: it gets a copy.
    connect(check_, &QAbstractButton::pressed, this, [this] { pressed_ = task_; });
    connect(check_, &QAbstractButton::clicked, this, [this] { model_.list().toggle(TaskItem(pressed_)); });
    connect(check_, &QAbstractButton::toggled, this, [this](bool on) {
        if (on == task_.done) return;
        check_->setChecked(task_.done); // a screen reader toggled it: the same as a click
        model_.list().toggle(TaskItem(task_));
    });
    connect(menuButton_, &QAbstractButton::clicked, this, &TaskRow::openMenu);
}

// The menu goes with the row, but must not tell it so.
TaskRow::~TaskRow() {
    if (menu_) menu_->disconnect(this);
}

void TaskRow::setTask(const TaskItem& task, Day today, bool showDay) {
    const bool titleChanged = task.title != task_.title || task.done != task_.done || titleText_.isNull();
    task_ = task;
    today_ = today;
    if (titleChanged) {
        titleText_ = toQt(drawnTitle(task.title));
        title_.reset();
        check_->setTask(titleText_, task.done, task.strong());
        setAccessibleName(titleText_);
        menuButton_->setAccessibleName(menuHelp + u" : "_s + titleText_);
        againButton_->setAccessibleName(u"Refaire : "_s + titleText_);
    }
    againButton_->setVisible(task.done && !editor_);
    tags_.clear();
    for (auto& tag : taskTags(task, today, showDay)) tags_.push_back({std::move(tag), {}});
    setAccessibleDescription(toQt(spokenTags(task, today, showDay)));
    const auto moment = toQt(spokenTags(task, today, true));
    for (QWidget* control : std::initializer_list<QWidget*>{check_, menuButton_}) // the focus goes to these
        control->setAccessibleDescription(moment.isEmpty() ? u"Sans date"_s : moment);
    if (editor_) {
        editor_->setToday(today);
        editor_->say(isIn(model_.state().tasks, edited_) ? QString() : taskIsGone);
    }
    placeTags(width());
    update();
}

void TaskRow::setMarks(const std::vector<dravel::TextRange>& ranges) {
    if (ranges.empty() && marks_.isEmpty()) return;
    marks_ = formatRanges(titleText_.toStdString(), ranges);
    update();
}

void TaskRow::setSeparated(bool on) {
    if (separated_ == on) return;
    separated_ = on;
    update();
}

int TaskRow::titleWidth(int rowWidth) { return std::max(1, rowWidth - textLeft - padding - menuFace - menuGap); }

int TaskRow::heightOf(int titleLines, int tagLines) {
    const int titleHeight = titleLines * Theme::Typography::taskTitle.line;
    if (tagLines == 0) return titleTop + titleHeight + titleTop;
    return titleTop + titleHeight + tagTop + tagLines * tagHeight + (tagLines - 1) * tagLineGap + padding;
}

int TaskRow::heightFor(int width) {
    if (editor_) return padding + editor_->neededHeight(width - textLeft - padding) + editorBottom;
    const int titleLines = title(width).height() / Theme::Typography::taskTitle.line;
    return heightOf(titleLines, placeTags(width));
}

const dravel::Paragraph& TaskRow::title(int width) {
    const int room = titleWidth(width) - (task_.done ? hitArea : 0);
    if (!title_ || title_->width() != room) title_.emplace(titleText_, titleStyle(task_.done), room);
    return *title_;
}

int TaskRow::placeTags(int width) {
    if (tags_.empty()) return 0;
    const int right = textLeft + titleWidth(width);
    int lines = 1;
    QPoint position(textLeft, titleTop + title(width).height() + tagTop);
    for (auto& [tag, place] : tags_) {
        const int tagWidth = dravel::tagSize(tagLookOf(tag.role), toQt(tag.text)).width();
        if (position.x() > textLeft && position.x() + tagWidth > right) {
            position = {textLeft, position.y() + tagHeight + tagLineGap};
            ++lines;
        }
        place = position;
        position.rx() += tagWidth + tagGap;
    }
    return lines;
}

void TaskRow::placeControls() {
    constexpr int firstLine = 20; // the middle of the title's first line
    const int checkMiddle = editor_ ? padding + TaskEditor::titleHeight / 2 : firstLine;
    check_->setGeometry(padding + 10 - hitArea / 2, checkMiddle - hitArea / 2, hitArea, hitArea);
    menuButton_->setGeometry(width() - padding - (menuFace + hitArea) / 2, firstLine - hitArea / 2, hitArea, hitArea);
    againButton_->setGeometry(menuButton_->geometry().translated(-hitArea, 0));
    if (editor_) editor_->setGeometry(editorPlace());
}

QRect TaskRow::editorPlace() const {
    const int room = width() - textLeft - padding;
    return {textLeft, padding, room, editor_->neededHeight(room)};
}

void TaskRow::resizeEvent(QResizeEvent*) {
    placeControls();
    placeTags(width());
}

void TaskRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isHighlighted()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::rowHover.on(*this));
        painter.drawRoundedRect(rect(), Theme::Radius::sm, Theme::Radius::sm);
    } else if (separated_) {
        dravel::paintSeparator(painter, textLeft, width() - padding, Theme::tile.on(*this));
    }
    if (editor_) return;
    const auto appearance = dravel::appearanceOf(*this);
    for (auto& mark : marks_) {
        mark.format.setBackground(Theme::accentSoftPressed.on(*this));
        mark.format.setForeground(Theme::text.on(*this));
    }
    title(width()).paint(painter, {textLeft, titleTop}, (task_.done ? Theme::textTertiary : Theme::text).on(*this),
                         marks_);
    for (const auto& [tag, position] : tags_)
        dravel::paintTag(painter, position, appearance, tag.symbol, toQt(tag.text), tagLookOf(tag.role));
}

void TaskRow::setHovered(bool on) {
    hovered_ = on;
    highlightChanged();
}

void TaskRow::highlightChanged() {
    check_->setRowHighlighted(isHighlighted());
    menuButton_->setEmphasised(isHighlighted());
    againButton_->setEmphasised(isHighlighted() || focusedStop());
    update();
    container_.highlightChanged();
}

bool TaskRow::isPinned() const {
    const auto* focused = focusWidget();
    return isEditing() || menu_ || (focused && focused->hasFocus() && isAncestorOf(focused));
}

bool TaskRow::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && !editor_) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const QRect area(textLeft, titleTop, titleWidth(width()), title(width()).height());
        if (area.contains(help->pos()))
            QToolTip::showText(help->globalPos(), u"Double-clic pour modifier"_s, this, area);
        return true;
    }
    return QWidget::event(event);
}

void TaskRow::mouseDoubleClickEvent(QMouseEvent*) { startEditing(); }

QWidget* TaskRow::lastControl() const { return editor_ ? editor_->stops().back() : menuButton_; }

void TaskRow::focus(Stop stop, Qt::FocusReason reason) {
    (stop == Stop::check ? static_cast<QWidget*>(check_) : lastControl())->setFocus(reason);
}

std::optional<TaskRow::Stop> TaskRow::focusedStop() const {
    if (menuButton_->hasFocus()) return Stop::menu;
    const auto* focused = focusWidget();
    if (focused && focused->hasFocus() && isAncestorOf(focused)) return Stop::check;
    return std::nullopt;
}

bool TaskRow::focusNextPrevChild(bool forward) {
    std::vector<QWidget*> stops{check_};
    if (editor_) {
        const auto inner = editor_->stops();
        stops.insert(stops.end(), inner.begin(), inner.end());
    } else {
        stops.push_back(menuButton_);
    }
    const auto reason = forward ? Qt::TabFocusReason : Qt::BacktabFocusReason;
    const auto at = std::ranges::find_if(stops, [](const QWidget* stop) { return stop->hasFocus(); });
    if (at == stops.end()) return QWidget::focusNextPrevChild(forward);
    if (forward ? at + 1 == stops.end() : at == stops.begin())
        return container_.tab(*this, forward) || QWidget::focusNextPrevChild(forward);
    (*(forward ? at + 1 : at - 1))->setFocus(reason);
    return true;
}

bool TaskRow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        const bool in = event->type() == QEvent::FocusIn;
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // A menu or another window only gives back what came by a key, or did not.
        if (in && reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason) focusReason_ = reason;
        againButton_->setEmphasised(in || isHighlighted());
    }
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        return keyPressed(watched == check_ ? Stop::check : Stop::menu, key->key(), key->modifiers());
    }
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
        return watched == check_ && container_.isRepeated(*static_cast<QMouseEvent*>(event));
    return QWidget::eventFilter(watched, event);
}

// True when the key was one of the row's.
bool TaskRow::keyPressed(Stop stop, int key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
    case Qt::Key_Up: container_.step(*this, -1, stop); return true;
    case Qt::Key_Down: container_.step(*this, 1, stop); return true;
    case Qt::Key_F2: startEditing(); return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (stop != Stop::check) return false;
        startEditing();
        return true;
    case Qt::Key_R:
        if (!task_.done || modifiers != Qt::NoModifier) return false;
        openAgainMenu();
        return true;
    case Qt::Key_F10:
        if (!modifiers.testFlag(Qt::ShiftModifier)) return false;
        [[fallthrough]];
    case Qt::Key_Menu: openMenu(); return true;
    default: return false;
    }
}

void TaskRow::contextMenuEvent(QContextMenuEvent* event) {
    if (editor_) return QWidget::contextMenuEvent(event);
    openMenu();
}

void TaskRow::openMenu() {
    if (menu_ || editor_) return;
    menu_ = new QMenu(this);
    menu_->setObjectName(u"actions"_s);
    for (const auto& entry : rowMenu(task_)) {
        if (entry.separatorBefore) menu_->addSeparator();
        auto* action = menu_->addAction(toQt(entry.label));
        if (entry.destructive) dravel::markDestructive(*action);
        connect(action, &QAction::triggered, this,
                [this, command = entry.command, task = task_] { perform(command, TaskItem(task)); });
    }
    popUp(*menu_, *menuButton_);
}

void TaskRow::openAgainMenu() {
    if (menu_ || editor_ || !task_.done) return;
    menu_ = new QMenu(this);
    menu_->setObjectName(u"again.menu"_s);
    for (const auto& choice : againDays(currentDay()))
        connect(menu_->addAction(toQt(choice.label)), &QAction::triggered, this,
                [this, shown = task_, day = choice.day] {
                    model_.list().add({again(model_.state().tasks.whole(shown), day)});
                });
    popUp(*menu_, *againButton_);
}

void TaskRow::popUp(QMenu& menu, dravel::IconButton& button) {
    menu.setAttribute(Qt::WA_DeleteOnClose);
    connect(&menu, &QMenu::aboutToHide, this, [this, &button] {
        menu_.clear();
        button.setOpen(false);
        highlightChanged();
    });
    button.setOpen(true);
    highlightChanged();
    constexpr QPoint faceCorner{30, 32};
    dravel::popUp(menu, button.mapToGlobal(faceCorner) - QPoint(menu.sizeHint().width(), 0));
}

// The task is the one that the menu was opened for.
void TaskRow::perform(RowCommand command, const TaskItem& task) {
    if (const auto day = postponedDay(command, task, currentDay()))
        return model_.list().reschedule(task, *day, task.time);
    if (command == RowCommand::toggle) model_.list().toggle(task);
    if (command == RowCommand::edit) startEditing();
    if (command == RowCommand::remove) model_.list().remove(task);
}

void TaskRow::startEditing() {
    if (editor_) return;
    edited_ = task_;
    editor_ = new TaskEditor(draftOf(task_, currentDay()), now_, this);
    editor_->setAccessibleName(u"Modifier "_s + titleText_);
    connect(editor_, &TaskEditor::saved, this, &TaskRow::commitEdit);
    connect(editor_, &TaskEditor::cancelled, this, &TaskRow::cancelEdit);
    connect(editor_, &TaskEditor::heightChanged, this, &TaskRow::editorGrew);
    placeControls();
    editor_->show();
    menuButton_->hide();
    againButton_->hide();
    highlightChanged();
    container_.heightChanged();
    editor_->stops().front()->setFocus(Qt::OtherFocusReason);
}

void TaskRow::closeEditor(Qt::FocusReason reason) {
    auto* closed = editor_;
    editor_ = nullptr;
    placeControls();
    menuButton_->show();
    againButton_->setVisible(task_.done);
    check_->setFocus(reason);
    closed->hide();
    closed->deleteLater();
    highlightChanged();
    container_.heightChanged();
}

bool TaskRow::holdsDraft() const { return editor_ && editor_->isTouched(); }

void TaskRow::explain(const QString& whyNotSaved) {
    editor_->say(whyNotSaved);
    editorGrew();
}

void TaskRow::commitEdit(Qt::FocusReason reason) {
    if (!editor_ || isCommitting_) return; // a second Return, or a late click
    const auto change = editor_->change(currentDay());
    if (change == TaskChange()) return closeEditor(reason);
    isCommitting_ = true;
    const auto committed = [row = QPointer(this), change, reason](LiveDocument::Outcome outcome) {
        if (row) row->isCommitting_ = false;
        if (!row || !row->editor_) return;
        const auto& state = row->model_.state();
        if (outcome == LiveDocument::Outcome::failed) return row->explain(toQt(state.fileError.value_or("")));
        if (outcome == LiveDocument::Outcome::unchanged && !isIn(state.tasks, row->edited_))
            return row->explain(taskIsGone);
        if (row->editor_->change(row->currentDay()) == change) row->closeEditor(reason); // what was typed since stays
    };
    // The list is read again once it is saved, and may take the row away: the model gets a copy.
    model_.list().edit(TaskItem(edited_), change, committed);
}

}
