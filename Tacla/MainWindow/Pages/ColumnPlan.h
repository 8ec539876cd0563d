#pragma once

#include <cstddef>
#include <vector>

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

}
