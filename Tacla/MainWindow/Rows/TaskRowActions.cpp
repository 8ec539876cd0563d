// What a row does: its keys, its menu and its editor.
#include "Tacla/MainWindow/Rows/TaskRow.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Look.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/Rows/CheckButton.h"
#include "Tacla/MainWindow/Rows/TaskEditor.h"

#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenu>

#include <algorithm>

namespace tacla {

using namespace Qt::StringLiterals;

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
        return neighbourhood_.tab(*this, forward) || QWidget::focusNextPrevChild(forward);
    (*(forward ? at + 1 : at - 1))->setFocus(reason);
    return true;
}

bool TaskRow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) focusReason_ = static_cast<QFocusEvent*>(event)->reason();
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        return keyPressed(watched == check_ ? Stop::check : Stop::menu, key->key(), key->modifiers());
    }
    return QWidget::eventFilter(watched, event);
}

// True when the key was one of the row's.
bool TaskRow::keyPressed(Stop stop, int key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
    case Qt::Key_Up: neighbourhood_.step(*this, -1, stop); return true;
    case Qt::Key_Down: neighbourhood_.step(*this, 1, stop); return true;
    case Qt::Key_F2: startEditing(); return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (stop != Stop::check) return false;
        startEditing();
        return true;
    case Qt::Key_Menu: openMenu(); return true;
    case Qt::Key_F10:
        if (!modifiers.testFlag(Qt::ShiftModifier)) return false;
        openMenu();
        return true;
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
    menu_->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& entry : rowMenu(task_)) {
        if (entry.separatorBefore) menu_->addSeparator();
        auto* action = menu_->addAction(toQt(entry.label));
        if (entry.destructive) dravel::markDestructive(*action);
        connect(action, &QAction::triggered, this, [this, command = entry.command] { perform(command); });
    }
    connect(menu_, &QMenu::aboutToHide, this, [this] {
        menu_.clear();
        menuButton_->setOpen(false);
        highlightChanged();
    });
    menuButton_->setOpen(true);
    highlightChanged();
    // Not exec(): whoever pressed the button over the accessibility bus would wait for the menu to close.
    constexpr QPoint faceCorner{30, 32};
    menu_->popup(menuButton_->mapToGlobal(faceCorner) - QPoint(menu_->sizeHint().width(), 0));
}

void TaskRow::perform(RowCommand command) {
    const TaskItem task = task_; // the model reloads at once and may take the row away
    if (const auto day = postponedDay(command, task, currentDay())) return model_.reschedule(task, *day, task.time);
    switch (command) {
    case RowCommand::toggle: return model_.toggle(task);
    case RowCommand::edit: return startEditing();
    case RowCommand::remove: return model_.remove(task);
    case RowCommand::postponeToTomorrow:
    case RowCommand::postponeToMonday:
    case RowCommand::postponeByAWeek: break;
    }
}

void TaskRow::startEditing() {
    if (editor_) return;
    const auto today = currentDay();
    editor_ = new TaskEditor(draftOf(task_, today), today, this);
    connect(editor_, &TaskEditor::saved, this, &TaskRow::commitEdit);
    connect(editor_, &TaskEditor::cancelled, this, &TaskRow::cancelEdit);
    placeControls();
    editor_->show();
    menuButton_->hide();
    highlightChanged();
    neighbourhood_.heightChanged();
    editor_->stops().front()->setFocus(Qt::OtherFocusReason);
}

void TaskRow::closeEditor(Qt::FocusReason reason) {
    auto* closed = editor_;
    editor_ = nullptr;
    placeControls();
    menuButton_->show();
    check_->setFocus(reason);
    closed->hide();
    closed->deleteLater();
    highlightChanged();
    neighbourhood_.heightChanged();
}

void TaskRow::cancelEdit(Qt::FocusReason reason) {
    if (editor_) closeEditor(reason);
}

void TaskRow::commitEdit(Qt::FocusReason reason) {
    if (!editor_) return; // a second Return, or a late click
    const auto edit = editOf(editor_->draft(), currentDay());
    const TaskItem task = task_;
    closeEditor(reason);
    model_.edit(task, edit.title, edit.day, edit.time);
}

}
