#include "Tacla/MainWindow/Pages/ColumnPlan.h"

#include "DravelKit/DravelUI/Theme.h"
#include "Tacla/MainWindow/Rows/TaskRow.h"

#include <QFontMetricsF>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tacla {

namespace {

// The index of the last of these tops that is at or above y; 0 when all are below.
std::size_t lastAtOrAbove(const std::vector<int>& tops, int y) {
    const auto next = std::upper_bound(tops.begin(), tops.end(), y);
    return next == tops.begin() ? 0 : static_cast<std::size_t>(next - tops.begin()) - 1;
}

std::size_t firstAtOrBelow(const std::vector<int>& tops, int y) {
    return static_cast<std::size_t>(std::lower_bound(tops.begin(), tops.end(), y) - tops.begin());
}

// Widths of ASCII letters; every other byte of UTF-8 counts as much as it can: two bytes make one wide letter.
class ByteWidths {
  public:
    ByteWidths() {
        const QFontMetricsF metrics(dravel::Theme::font(dravel::Theme::Typography::taskTitle));
        for (std::size_t byte = 0; byte < 128; ++byte)
            widths_[byte] = static_cast<float>(metrics.horizontalAdvance(QChar(static_cast<char16_t>(byte))));
        std::fill(widths_.begin() + 128, widths_.end(), static_cast<float>(metrics.maxWidth() / 4));
    }

    int lines(std::string_view text, int room) const {
        float width = 0;
        for (const char byte : text) width += widths_[static_cast<unsigned char>(byte)];
        return std::max(1, static_cast<int>(std::ceil(width / static_cast<float>(room))));
    }

  private:
    std::array<float, 256> widths_{};
};

using Rows = std::vector<std::size_t>;
using Keys = std::unordered_set<std::string_view>;
using RowsOfKey = std::unordered_map<std::string_view, Rows>;

template <class Visit>
void eachRow(const TaskGroups& groups, Visit visit) {
    std::size_t row = 0;
    for (const auto& group : groups)
        for (const auto& task : group.tasks) visit(row++, task);
}

Keys keysOf(const TaskGroups& groups, const Rows& rows) {
    Keys keys;
    eachRow(groups, [&](std::size_t row, const TaskItem& task) {
        if (std::ranges::binary_search(rows, row)) keys.insert(task.key);
    });
    return keys;
}

// One key may belong to several tasks: they are told apart by their order.
RowsOfKey rowsOfKeys(const TaskGroups& groups, const Keys* wanted = nullptr) {
    RowsOfKey found;
    eachRow(groups, [&](std::size_t row, const TaskItem& task) {
        if (!wanted || wanted->contains(task.key)) found[task.key].push_back(row);
    });
    return found;
}

std::optional<std::size_t> sameTask(std::size_t row, const Rows& before, const RowsOfKey& after, std::string_view key) {
    const auto found = after.find(key);
    const auto nth = static_cast<std::size_t>(std::ranges::find(before, row) - before.begin());
    if (found == after.end() || nth >= found->second.size()) return std::nullopt;
    return found->second[nth];
}

// On the line of a missing task, and of a name that was not there before.
std::map<std::size_t, MatchedRow> renamedRows(const TaskGroups& before, const TaskGroups& after,
                                              const std::unordered_map<std::int64_t, std::size_t>& missing) {
    std::unordered_map<std::string_view, std::pair<std::size_t, MatchedRow>> candidates;
    eachRow(after, [&](std::size_t row, const TaskItem& task) {
        if (const auto found = missing.find(task.line); found != missing.end())
            candidates[task.key] = {found->second, {.row = row, .renamed = true}};
    });
    eachRow(before, [&](std::size_t, const TaskItem& task) { candidates.erase(task.key); });
    std::map<std::size_t, MatchedRow> renamed;
    for (const auto& [key, match] : candidates) renamed.insert(match);
    return renamed;
}

}

ColumnLayout::ColumnLayout(const std::vector<std::size_t>& rowsPerCard, std::vector<int> rowHeights)
    : firstRows_{0}, rowHeights_(std::move(rowHeights)) {
    for (const auto count : rowsPerCard) firstRows_.push_back(firstRows_.back() + count);
    place();
}

void ColumnLayout::place() {
    rowTops_.resize(rowHeights_.size());
    cardTops_.resize(cardCount());
    int top = 0;
    for (std::size_t card = 0; card < cardCount(); ++card) {
        cardTops_[card] = top;
        const auto [first, last] = rowsOf(card);
        top += cardPadding + headerHeight;
        for (auto row = first; row < last; ++row) {
            rowTops_[row] = top;
            top += rowHeights_[row];
        }
        top += (first == last ? emptyTextHeight : 0) + cardPadding;
        height_ = top;
        top += cardGap;
    }
    if (cardCount() == 0) height_ = 0;
}

ColumnLayout::Span ColumnLayout::card(std::size_t card) const {
    const int bottom = card + 1 < cardCount() ? cardTops_[card + 1] - cardGap : height_;
    return {cardTops_[card], bottom - cardTops_[card]};
}

ColumnLayout::Span ColumnLayout::row(std::size_t row) const { return {rowTops_[row], rowHeights_[row]}; }

std::size_t ColumnLayout::cardOf(std::size_t row) const {
    const auto next = std::upper_bound(firstRows_.begin(), firstRows_.end(), row);
    return static_cast<std::size_t>(next - firstRows_.begin()) - 1;
}

ColumnLayout::Range ColumnLayout::cardsBetween(int top, int bottom) const {
    if (cardCount() == 0 || bottom <= top) return {0, 0};
    auto first = lastAtOrAbove(cardTops_, top);
    if (card(first).bottom() <= top) ++first;
    return {first, std::max(first, firstAtOrBelow(cardTops_, bottom))};
}

ColumnLayout::Range ColumnLayout::rowsBetween(int top, int bottom) const {
    if (rowCount() == 0 || bottom <= top) return {0, 0};
    auto first = lastAtOrAbove(rowTops_, top);
    if (row(first).bottom() <= top) ++first;
    return {first, std::max(first, firstAtOrBelow(rowTops_, bottom))};
}

bool ColumnLayout::measured(const std::vector<Measure>& measures) {
    bool moved = false;
    for (const auto& [row, rowHeight] : measures)
        if (rowHeights_[row] != rowHeight) {
            rowHeights_[row] = rowHeight;
            moved = true;
        }
    if (moved) place();
    return moved;
}

std::vector<int> estimatedRowHeights(const TaskGroups& groups, int rowWidth) {
    const ByteWidths widths;
    const int room = TaskRow::titleWidth(rowWidth);
    std::vector<int> heights;
    for (const auto& group : groups)
        for (const auto& task : group.tasks)
            heights.push_back(TaskRow::heightOf(widths.lines(std::string_view(task.title).substr(0, 10'000), room),
                                                hasTags(task, group.showDay) ? 1 : 0));
    return heights;
}

std::map<std::size_t, MatchedRow> matchedRows(const TaskGroups& before, const TaskGroups& after, const Rows& rows) {
    std::map<std::size_t, MatchedRow> matched;
    if (rows.empty()) return matched;
    const auto wanted = keysOf(before, rows);
    const auto old = rowsOfKeys(before, &wanted), now = rowsOfKeys(after, &wanted);
    std::unordered_map<std::int64_t, std::size_t> missing; // line to row
    eachRow(before, [&](std::size_t row, const TaskItem& task) {
        if (!std::ranges::binary_search(rows, row)) return;
        if (const auto place = sameTask(row, old.at(task.key), now, task.key))
            matched[row] = {.row = *place};
        else
            missing[task.line] = row;
    });
    if (!missing.empty()) matched.merge(renamedRows(before, after, missing));
    return matched;
}

std::optional<std::size_t> successor(const TaskGroups& before, const TaskGroups& after, std::size_t left) {
    const auto old = rowsOfKeys(before), now = rowsOfKeys(after);
    std::optional<std::size_t> above, below;
    eachRow(before, [&](std::size_t row, const TaskItem& task) {
        if (row == left || (row > left && below)) return;
        const auto place = sameTask(row, old.at(task.key), now, task.key);
        if (place) (row < left ? above : below) = place;
    });
    return below ? below : above;
}

}
