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
    // About so many fit into a line.
    std::uint32_t usualLine(int room) const {
        return std::max(1U, static_cast<std::uint32_t>(static_cast<float>(room) / widths_['n']));
    }

  private:
    std::array<float, 256> widths_{};
};

using Rows = std::vector<std::size_t>;
using RowsOfKey = std::unordered_map<KeyNumber, Rows>;

template <class Visit>
void eachRow(const TaskGroups& groups, Visit visit) {
    std::size_t row = 0;
    for (const auto& group : groups)
        for (std::size_t i = 0; i < group.tasks.size(); ++i) visit(row++, group.tasks, i);
}

// The same for these rows, which are in order.
template <class Visit>
void eachOf(const Rows& rows, const TaskGroups& groups, Visit visit) {
    std::size_t first = 0;
    auto row = rows.begin();
    for (const auto& group : groups) {
        for (; row != rows.end() && *row < first + group.tasks.size(); ++row) visit(*row, group.tasks, *row - first);
        first += group.tasks.size();
    }
}

// One value of each task of the list that the groups show. Rows jump about in a long list: what is asked of all of them
// is looked up here, in as little memory as can be.
template <class Value, class Of>
std::vector<Value> columnOf(const TaskGroups& groups, Of of) {
    if (groups.empty()) return {};
    const auto& list = groups.front().tasks.list();
    std::vector<Value> values(list.size());
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = of(list, i);
    return values;
}

// One key may belong to several tasks: they are told apart by their order.
RowsOfKey rowsOfKeys(const TaskGroups& groups, const KeySet& wanted) {
    const auto isWanted =
        columnOf<bool>(groups, [&](const TaskList& list, std::size_t i) { return wanted.contains(list.key(i)); });
    RowsOfKey found;
    std::size_t row = 0;
    for (const auto& group : groups)
        for (std::size_t i = 0; i < group.tasks.size(); ++i, ++row) {
            const auto place = group.tasks.places()[i];
            if (place < isWanted.size() && !isWanted[place]) continue;
            if (const auto key = group.tasks.key(i); wanted.contains(key)) found[key].push_back(row);
        }
    return found;
}

std::optional<std::size_t> sameTask(std::size_t row, const Rows& before, const RowsOfKey& after, KeyNumber key) {
    const auto found = after.find(key);
    const auto nth = static_cast<std::size_t>(std::ranges::find(before, row) - before.begin());
    if (found == after.end() || nth >= found->second.size()) return std::nullopt;
    return found->second[nth];
}

// On the line of a missing task, and of a name that was not there before.
std::map<std::size_t, MatchedRow> renamedRows(const TaskGroups& before, const TaskGroups& after,
                                              const std::unordered_map<std::int64_t, std::size_t>& missing) {
    std::unordered_map<KeyNumber, std::pair<std::size_t, MatchedRow>> candidates;
    eachRow(after, [&](std::size_t row, const TaskSelection& tasks, std::size_t i) {
        if (const auto found = missing.find(tasks.line(i)); found != missing.end())
            candidates[tasks.key(i)] = {found->second, {.row = row, .renamed = true}};
    });
    eachRow(before, [&](std::size_t, const TaskSelection& tasks, std::size_t i) { candidates.erase(tasks.key(i)); });
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
    constexpr std::size_t mostRead = 20'000; // titles; of those beyond, the length must do
    const ByteWidths widths;
    const int room = TaskRow::titleWidth(rowWidth);
    const auto height = [](int lines, bool tags) { return static_cast<std::uint16_t>(TaskRow::heightOf(lines, tags)); };
    const auto usualLine = widths.usualLine(room);
    using Heights = std::array<std::uint16_t, 2>; // without the day, and with it
    std::vector<int> heights;
    for (const auto& group : groups) heights.resize(heights.size() + group.tasks.size());
    std::vector<Heights> roughly;
    if (heights.size() > mostRead)
        roughly = columnOf<Heights>(groups, [&](const TaskList& list, std::size_t i) {
            const auto& brief = list.brief(i);
            const auto length = std::min(brief.titleLength, static_cast<std::uint32_t>(longestDrawn));
            const auto lines = static_cast<int>(std::max(1U, (length + usualLine - 1) / usualLine));
            return Heights{height(lines, hasTags(brief, false)), height(lines, hasTags(brief, true))};
        });
    std::size_t row = 0;
    for (const auto& group : groups) {
        const auto& tasks = group.tasks;
        for (std::size_t i = 0; i < tasks.size(); ++i, ++row)
            heights[row] = row >= mostRead && tasks.places()[i] < roughly.size()
                               ? roughly[tasks.places()[i]][group.showDay ? 1 : 0]
                               : height(widths.lines(tasks.title(i).substr(0, longestDrawn), room),
                                        hasTags(tasks.brief(i), group.showDay));
    }
    return heights;
}

std::optional<std::size_t> rowOf(const TaskGroups& groups, std::string_view key) {
    KeySet wanted;
    wanted.insert(keyNumber(key).value_or(0));
    const auto rows = rowsOfKeys(groups, wanted);
    return rows.empty() ? std::nullopt : std::optional(rows.begin()->second.front());
}

std::map<std::size_t, MatchedRow> matchedRows(const TaskGroups& before, const TaskGroups& after, const Rows& rows) {
    std::map<std::size_t, MatchedRow> matched;
    if (rows.empty()) return matched;
    KeySet wanted;
    eachOf(rows, before, [&](std::size_t, const TaskSelection& tasks, std::size_t i) { wanted.insert(tasks.key(i)); });
    const auto old = rowsOfKeys(before, wanted), now = rowsOfKeys(after, wanted);
    std::unordered_map<std::int64_t, std::size_t> missing; // line to row
    eachOf(rows, before, [&](std::size_t row, const TaskSelection& tasks, std::size_t i) {
        if (const auto place = sameTask(row, old.at(tasks.key(i)), now, tasks.key(i)))
            matched[row] = {.row = *place};
        else
            missing[tasks.line(i)] = row;
    });
    if (!missing.empty()) matched.merge(renamedRows(before, after, missing));
    return matched;
}

std::optional<std::size_t> successor(const TaskGroups& before, const TaskGroups& after, std::size_t left) {
    constexpr std::size_t mostTried = 1000; // on either side
    Rows near;
    for (auto row = left - std::min(left, mostTried); row <= left + mostTried; ++row)
        if (row != left) near.push_back(row);
    std::optional<std::size_t> above, below;
    for (const auto& [row, match] : matchedRows(before, after, near)) {
        if (match.renamed || (row > left && below)) continue;
        (row < left ? above : below) = match.row;
    }
    return below ? below : above;
}

}
