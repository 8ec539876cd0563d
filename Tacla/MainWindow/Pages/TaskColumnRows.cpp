// The rows of a column as widgets: made, dropped, and walked through by keyboard.
#include "DravelKit/DravelUI/DravelPage.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "Tacla/MainWindow/Pages/TaskListCard.h"

#include <QFocusEvent>

#include <algorithm>

namespace tacla {

TaskListCard& TaskColumn::builtCard(std::size_t index) {
    auto& card = cards_[index];
    if (!card) {
        card = new TaskListCard(&page_.stage());
        card->setGroup(groups_[index]);
        const auto span = layout_.card(index);
        card->setGeometry(x(), y() + span.top, width(), span.height);
        card->show();
    }
    return *card;
}

TaskRow& TaskColumn::builtRow(std::size_t index) {
    if (const auto found = rows_.find(index); found != rows_.end()) return *found->second;
    auto* row = new TaskRow(model_, now_, *this, &builtCard(layout_.cardOf(index)));
    rows_[index] = row;
    showTask(index);
    row->show();
    keepEndBehind(*row);
    return *row;
}

// New controls join the window's Tab order at its end; the stop that leads in from below must come after them.
void TaskColumn::keepEndBehind(const TaskRow& row) { setTabOrder(row.lastControl(), end_); }

// Gives the row its task, in the card where that now stands.
void TaskColumn::showTask(std::size_t index) {
    auto* row = rows_.at(index);
    const auto cardIndex = layout_.cardOf(index);
    auto& card = builtCard(cardIndex);
    if (row->parentWidget() != &card) {
        auto* inside = row->focusedStop() ? row->window()->focusWidget() : nullptr;
        row->setParent(&card);
        row->show();
        if (inside) inside->setFocus(row->focusReason()); // lost with the old parent
    }
    const auto& group = groups_[cardIndex];
    row->setTask(group.tasks[index - layout_.rowsOf(cardIndex).first], today_, group.showDay);
}

void TaskColumn::dropOutside(ColumnLayout::Range range) {
    for (auto it = rows_.begin(); it != rows_.end();) {
        auto& [index, row] = *it;
        if ((index >= range.first && index < range.last) || row->isPinned()) {
            ++it;
            continue;
        }
        row->hide();
        row->deleteLater();
        it = rows_.erase(it);
    }
}

void TaskColumn::dropUnusedCards(ColumnLayout::Range range) {
    std::erase_if(cards_, [&](const auto& entry) {
        const auto& [index, card] = entry;
        const bool used =
            std::ranges::any_of(rows_, [&, card = card](const auto& row) { return row.second->parent() == card; });
        if ((index >= range.first && index < range.last) || used) return false;
        card->hide();
        card->deleteLater();
        return true;
    });
}

std::size_t TaskColumn::indexOf(const TaskRow& row) const {
    return std::ranges::find(rows_, &row, [](const auto& entry) { return entry.second; })->first;
}

void TaskColumn::focusRow(std::size_t index, TaskRow::Stop stop, Qt::FocusReason reason) {
    auto& row = builtRow(index);
    row.focus(stop, reason); // from now on it stays while it is out of view
    measure();
    place();
    page_.reveal(row);
    fill();
}

void TaskColumn::step(const TaskRow& row, int by, TaskRow::Stop stop) {
    const auto index = indexOf(row);
    if (by < 0 ? index == 0 : index + 1 == rowCount()) return;
    focusRow(by < 0 ? index - 1 : index + 1, stop, Qt::TabFocusReason);
}

bool TaskColumn::tab(const TaskRow& row, bool forward) {
    const auto index = indexOf(row);
    if (forward ? index + 1 == rowCount() : index == 0) {
        leave(forward);
        return true;
    }
    if (forward)
        focusRow(index + 1, TaskRow::Stop::check, Qt::TabFocusReason);
    else
        focusRow(index - 1, TaskRow::Stop::menu, Qt::BacktabFocusReason);
    return true;
}

// To the control before or after the column, whatever the order in which the rows were made.
void TaskColumn::leave(bool forward) {
    const auto inRow = [this](const QWidget* widget) {
        return widget == this || widget == end_ ||
               std::ranges::any_of(rows_, [&](const auto& entry) { return entry.second->isAncestorOf(widget); });
    };
    QWidget* const from = forward ? end_ : this;
    const auto next = [forward](QWidget* widget) {
        return forward ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (auto* widget = next(from); widget != from; widget = next(widget)) {
        const bool stop = widget->focusPolicy() & Qt::TabFocus && !widget->focusProxy() && widget->isEnabled() &&
                          widget->isVisibleTo(window()) && !widget->isWindow() && !inRow(widget);
        if (stop) return widget->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    }
}

void TaskColumn::focusInEvent(QFocusEvent* event) {
    if (rowCount() == 0 || event->reason() == Qt::BacktabFocusReason)
        return leave(event->reason() != Qt::BacktabFocusReason);
    focusRow(0, TaskRow::Stop::check, event->reason());
}

bool TaskColumn::eventFilter(QObject* watched, QEvent* event) {
    if (watched == end_ && event->type() == QEvent::FocusIn) {
        if (rowCount() == 0 || static_cast<QFocusEvent*>(event)->reason() != Qt::BacktabFocusReason)
            leave(true);
        else
            focusRow(rowCount() - 1, TaskRow::Stop::menu, Qt::BacktabFocusReason);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

}
