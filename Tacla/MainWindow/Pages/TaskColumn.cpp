#include "Tacla/MainWindow/Pages/TaskColumn.h"

#include "DravelKit/DravelUI/DravelPage.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/TaskListCard.h"
#include "Tacla/MainWindow/Rows/TaskControls.h"
#include "Tacla/TaskList/TaskFile.h"

#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyleHints>

#include <algorithm>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowInset = 8, slack = 240; // rows are built a little before they come into view

QAccessibleInterface* columnAccessible(const QString&, QObject* object) {
    if (auto* row = qobject_cast<TaskRow*>(object)) return new QAccessibleWidget(row, QAccessible::ListItem);
    if (auto* card = qobject_cast<TaskListCard*>(object)) return new QAccessibleWidget(card, QAccessible::List);
    if (auto* editor = qobject_cast<TaskEditor*>(object)) return new QAccessibleWidget(editor, QAccessible::Grouping);
    return nullptr;
}

// Tells screen readers what rows and their cards are. Each column says it anew: they must not be asked twice.
void installAccessibility() {
    QAccessible::removeFactory(columnAccessible);
    QAccessible::installFactory(columnAccessible);
}

}

TaskColumn::TaskColumn(dravel::DravelPage& page, AppModel& model, const dravel::Now& now)
    : page_(page), model_(model), now_(now), end_(new QWidget(this)) {
    installAccessibility();
    setObjectName(u"column"_s);
    end_->setObjectName(u"column.end"_s);
    for (QWidget* stop : {static_cast<QWidget*>(this), end_}) stop->setProperty(dravel::handsFocusOn, true);
    for (QWidget* stop : {static_cast<QWidget*>(this), end_}) stop->setFocusPolicy(Qt::TabFocus);
    end_->installEventFilter(this);
    connect(&page, &dravel::DravelPage::viewChanged, this, &TaskColumn::fill);
    hide();
}

void TaskColumn::setGroups(TaskGroups groups, Day today) {
    keepsDrafts_ = keepDrafts(groups);
    if (today == today_ && groups == groups_ && !keepsDrafts_) return;
    const auto focus = focused();
    const auto anchors = anchorsInView();
    std::swap(groups_, groups);
    today_ = today;
    estimate();
    const auto left = carryOver(groups, anchors);
    setVisible(!groups_.empty());
    const auto next = focus && left.contains(focus->row) ? successor(groups, groups_, focus->row) : std::nullopt;
    if (next)
        focusRow(*next, focus->stop, focus->reason);
    else
        fill();
    for (const auto& [index, row] : left) {
        row->hide();
        row->deleteLater(); // it may be in the middle of the click that took it away
    }
}

// A row whose editor holds something typed stays where it was, even if its task is gone.
bool TaskColumn::keepDrafts(TaskGroups& groups) const {
    bool any = false;
    for (const auto& [index, row] : rows_) {
        if (!row->holdsDraft()) continue;
        const auto& task = row->task();
        if (rowOf(groups, task.key)) continue;
        any = true;
        const auto card = layout_.cardOf(index);
        auto group = std::ranges::find(groups, groups_[card].title(), &TaskGroup::title);
        if (group == groups.end()) {
            group = groups.insert(groups.begin() + static_cast<std::ptrdiff_t>(std::min(card, groups.size())),
                                  groups_[card]);
            group->tasks.clear();
        }
        const auto place = std::min(index - layout_.rowsOf(card).first, group->tasks.size());
        group->tasks.insert(place, task);
    }
    return any;
}

// Rows of tasks that are still there move to their new places, without a jump on the screen; the others are handed
// back.
TaskColumn::Rows TaskColumn::carryOver(const TaskGroups& before, const std::vector<Anchor>& anchors) {
    std::vector<std::size_t> built;
    for (const auto& [index, row] : rows_) built.push_back(index);
    const auto matched = matchedRows(before, groups_, built);
    Rows left;
    for (const auto& [index, row] : std::exchange(rows_, {})) {
        const auto match = matched.find(index);
        // A draft never goes over to another name: the line may have become another task.
        const bool stays = match != matched.end() && !(match->second.renamed && row->isEditing());
        (stays ? rows_[match->second.row] : left[index]) = row;
    }
    for (const auto& [index, card] : cards_)
        if (index < groups_.size()) card->setGroup(groups_[index]);
    for (const auto& [index, row] : rows_) showTask(index);
    for (const auto& [row, top] : anchors)
        if (const auto match = matched.find(row); match != matched.end()) {
            keepInView({match->second.row, top});
            break;
        }
    return left;
}

std::optional<TaskColumn::Focus> TaskColumn::focused() const {
    for (const auto& [index, row] : rows_)
        if (const auto stop = row->focusedStop()) return Focus{index, *stop, row->focusReason()};
    return std::nullopt;
}

void TaskColumn::estimate() {
    std::vector<std::size_t> counts;
    for (const auto& group : groups_) counts.push_back(group.tasks.size());
    layout_ = ColumnLayout(counts, estimatedRowHeights(groups_, width() - 2 * rowInset));
    setFixedHeight(std::min(layout_.height(), QWIDGETSIZE_MAX));
}

// The rows in view, once the column begins above it: the first of them shall stay where it is.
std::vector<TaskColumn::Anchor> TaskColumn::anchorsInView() const {
    std::vector<Anchor> anchors;
    const auto part = page_.visiblePart(*this);
    if (part.isEmpty() || part.top() <= 0) return anchors;
    const auto [first, last] = layout_.rowsBetween(part.top(), part.bottom());
    for (auto row = first; row < last; ++row) anchors.push_back({row, layout_.row(row).top});
    return anchors;
}

void TaskColumn::keepInView(const Anchor& held) {
    const int moved = layout_.row(held.row).top - held.top;
    if (moved == 0) return;
    // The scroll range follows the column's height only after the page was laid out.
    QCoreApplication::sendPostedEvents(&page_.stage(), QEvent::LayoutRequest);
    auto* bar = page_.verticalScrollBar();
    bar->setValue(bar->value() + moved);
}

void TaskColumn::fill() {
    if (filling_) return;
    const QScopedValueRollback guard(filling_, true);
    constexpr int mostPasses = 4; // measured rows move others into view
    for (int pass = 0; pass < mostPasses; ++pass) {
        const auto part = page_.visiblePart(*this);
        const auto range =
            part.isEmpty() ? ColumnLayout::Range{0, 0} : layout_.rowsBetween(part.top() - slack, part.bottom() + slack);
        dropOutside(range);
        for (auto row = range.first; row < range.last; ++row) builtRow(row);
        if (!measure()) break;
    }
    place();
}

// True when rows turned out to have other heights than estimated.
bool TaskColumn::measure() {
    const auto anchors = anchorsInView();
    std::vector<ColumnLayout::Measure> measures;
    for (const auto& [index, row] : rows_) measures.push_back({index, row->heightFor(width() - 2 * rowInset)});
    if (!layout_.measured(measures)) return false;
    setFixedHeight(std::min(layout_.height(), QWIDGETSIZE_MAX));
    if (!anchors.empty()) keepInView(anchors.front());
    return true;
}

void TaskColumn::place() {
    const auto part = page_.visiblePart(*this);
    const auto cards =
        part.isEmpty() ? ColumnLayout::Range{0, 0} : layout_.cardsBetween(part.top() - slack, part.bottom() + slack);
    dropUnusedCards(cards);
    for (auto card = cards.first; card < cards.last; ++card) builtCard(card);
    for (const auto& [index, card] : cards_) {
        const auto span = layout_.card(index);
        card->setGeometry(x(), y() + span.top, width(), span.height);
    }
    for (const auto& [index, row] : rows_) {
        const auto span = layout_.row(index);
        const int cardTop = layout_.card(layout_.cardOf(index)).top;
        row->setGeometry(rowInset, span.top - cardTop, width() - 2 * rowInset, span.height);
    }
    separate();
}

void TaskColumn::separate() {
    for (const auto& [index, row] : rows_) {
        const bool first = layout_.rowsOf(layout_.cardOf(index)).first == index;
        const auto above = first ? rows_.end() : rows_.find(index - 1);
        row->setSeparated(!first && (above == rows_.end() || !above->second->isHighlighted()));
    }
}

void TaskColumn::resizeEvent(QResizeEvent* event) {
    if (event->size().width() == event->oldSize().width()) return;
    const auto anchors = anchorsInView();
    estimate();
    if (!anchors.empty()) keepInView(anchors.front());
    fill();
}

void TaskColumn::heightChanged() {
    for (const auto& [index, row] : rows_)
        if (row->isEditing()) keepEndBehind(*row); // an editor brings controls of its own
    fill();
    const bool given = std::ranges::none_of(rows_, [](const auto& entry) { return entry.second->isEditing(); });
    if (given && std::exchange(keepsDrafts_, false)) draftsGivenUp();
}

// The task of a row may have left, and the next one may have slid under the pointer, while a double click lasts.
bool TaskColumn::isRepeated(const QMouseEvent& press) {
    const auto before = std::exchange(lastPress_, {press.timestamp(), press.globalPosition()});
    const auto* hints = QGuiApplication::styleHints();
    const auto interval = static_cast<std::uint64_t>(hints->mouseDoubleClickInterval());
    return before.time != 0 && press.timestamp() - before.time < interval &&
           (press.globalPosition() - before.place).manhattanLength() <= hints->mouseDoubleClickDistance();
}

void TaskColumn::setSought(const SoughtWords& words) {
    sought_ = words;
    for (const auto& [index, row] : rows_) showTask(index);
}

void TaskColumn::postponeAll() {
    const auto group = std::ranges::find(groups_, true, &TaskGroup::postponable);
    if (group == groups_.end()) return;
    auto& card = builtCard(static_cast<std::size_t>(group - groups_.begin()));
    page_.reveal(card.postponeButton());
    card.offerDays();
}

TaskListCard& TaskColumn::builtCard(std::size_t index) {
    auto& card = cards_[index];
    if (!card) {
        card = new TaskListCard(model_, now_, &page_.stage());
        card->setGroup(groups_[index]);
        const auto span = layout_.card(index);
        card->setGeometry(x(), y() + span.top, width(), span.height);
        card->show();
        setTabOrder(previousInFocusChain(), &card->postponeButton());
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
        auto* focus = row->focusedStop() ? row->window()->focusWidget() : nullptr;
        row->setParent(&card);
        row->show();
        if (focus) focus->setFocus(row->focusReason()); // lost with the old parent
    }
    const auto& group = groups_[cardIndex];
    const auto task = group.tasks[index - layout_.rowsOf(cardIndex).first];
    row->setTask(task, today_, group.showDay);
    row->setMarks(sought_.rangesIn(TaskFile::dropStrongMark(task.title)));
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
        auto* card = entry.second;
        const bool used = std::ranges::any_of(rows_, [&](const auto& row) { return row.second->parent() == card; });
        if ((entry.first >= range.first && entry.first < range.last) || used) return false;
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

void TaskColumn::focusTask(const std::string& key) {
    if (const auto row = rowOf(groups_, key)) focusRow(*row, TaskRow::Stop::check, Qt::TabFocusReason);
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
    const bool forward = event->reason() != Qt::BacktabFocusReason;
    rowCount() == 0 || !forward ? leave(forward) : focusRow(0, TaskRow::Stop::check, event->reason());
}

bool TaskColumn::eventFilter(QObject* watched, QEvent* event) {
    if (watched == end_ && event->type() == QEvent::FocusIn) {
        const bool backward = static_cast<QFocusEvent*>(event)->reason() == Qt::BacktabFocusReason && rowCount() > 0;
        backward ? focusRow(rowCount() - 1, TaskRow::Stop::menu, Qt::BacktabFocusReason) : leave(true);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

}
