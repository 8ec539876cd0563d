#pragma once

#include "Tacla/MainWindow/PageContents.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

// Where the rows of a column stand, and where they go. Rows are counted through all groups, from 0.
namespace tacla {

// Where the cards of a column and the rows in them stand, in pixels from the column's top. A row's height is an
// estimate until the row has been in view, so that a list of any length is laid out at once.
class ColumnLayout {
  public:
    static constexpr int cardGap = 16, cardPadding = 8, headerHeight = 36, emptyTextHeight = 34;

    struct Span {
        int top, height;
        int bottom() const { return top + height; }
        bool operator==(const Span&) const = default;
    };
    struct Range { // first until last, the last one excluded
        std::size_t first, last;
        bool operator==(const Range&) const = default;
    };

    // As many rows a card as told, and a height for each row.
    explicit ColumnLayout(const std::vector<std::size_t>& rowsPerCard = {}, std::vector<int> rowHeights = {});

    int height() const { return height_; }
    std::size_t cardCount() const { return firstRows_.empty() ? 0 : firstRows_.size() - 1; }
    std::size_t rowCount() const { return rowHeights_.size(); }

    Span card(std::size_t) const;
    Span row(std::size_t) const;
    Range rowsOf(std::size_t card) const { return {firstRows_[card], firstRows_[card + 1]}; }
    std::size_t cardOf(std::size_t row) const;

    Range cardsBetween(int top, int bottom) const; // that reach into the band
    Range rowsBetween(int top, int bottom) const;

    struct Measure {
        std::size_t row;
        int height;
    };
    bool measured(const std::vector<Measure>&); // true when something moved

  private:
    void place();

    std::vector<std::size_t> firstRows_; // of each card, and the end
    std::vector<int> rowHeights_, rowTops_, cardTops_;
    int height_ = 0;
};

// Estimated heights of all rows of the groups, in order, for rows of that width. Exact for a title of plain letters
// that fits into one line; measuring every title of a long list would take seconds.
std::vector<int> estimatedRowHeights(const TaskGroups&, int rowWidth);

std::optional<std::size_t> rowOf(const TaskGroups&, std::string_view key); // of the first task with that key

struct MatchedRow {
    std::size_t row;
    bool renamed = false; // another key, on the same line of the file
    bool operator==(const MatchedRow&) const = default;
};

// Where the tasks of these rows stand after a reload. A task that left is missing.
std::map<std::size_t, MatchedRow> matchedRows(const TaskGroups& before, const TaskGroups& after,
                                              const std::vector<std::size_t>& rows);

// The row that takes over when the task of `row` left: the next one that stayed, else the one above.
std::optional<std::size_t> successor(const TaskGroups& before, const TaskGroups& after, std::size_t row);

}
