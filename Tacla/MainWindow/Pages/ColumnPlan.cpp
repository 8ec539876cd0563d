#include "Tacla/MainWindow/Pages/ColumnPlan.h"

#include <algorithm>

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

}
