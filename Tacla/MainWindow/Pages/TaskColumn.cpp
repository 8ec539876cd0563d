#include "Tacla/MainWindow/Pages/TaskColumn.h"

#include "DravelKit/DravelUI/DravelPage.h"
#include "Tacla/MainWindow/Pages/RowHeights.h"
#include "Tacla/MainWindow/Pages/RowMatching.h"
#include "Tacla/MainWindow/Pages/TaskListCard.h"

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowInset = 8;
constexpr int slack = 240; // rows are built a little before they come into view

}

TaskColumn::TaskColumn(dravel::DravelPage& page, AppModel& model, const dravel::Now& now)
    : page_(page), model_(model), now_(now), end_(new QWidget(this)) {
    setObjectName(u"column"_s);
    end_->setObjectName(u"column.end"_s);
    for (QWidget* stop : {static_cast<QWidget*>(this), end_}) stop->setFocusPolicy(Qt::TabFocus);
    end_->installEventFilter(this);
    connect(&page, &dravel::DravelPage::viewChanged, this, &TaskColumn::fill);
    hide();
}

void TaskColumn::setGroups(TaskGroups groups, Day today) {
    if (today == today_ && groups == groups_) return;
    const auto focus = focused();
    const auto anchors = anchorsInView();
    std::swap(groups_, groups);
    today_ = today;
    estimate();
    const auto left = carryOver(groups, anchors);
    setVisible(!groups_.empty());
    const auto heir = focus && left.contains(focus->row) ? successor(groups, groups_, focus->row) : std::nullopt;
    if (heir)
        focusRow(*heir, focus->stop, focus->reason);
    else
        fill();
    for (const auto& [index, row] : left) {
        row->hide();
        row->deleteLater(); // it may be in the middle of the click that took it away
    }
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
}

}
