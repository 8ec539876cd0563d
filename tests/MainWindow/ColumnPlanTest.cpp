#include "Tacla/MainWindow/Pages/ColumnPlan.h"
#include "tests/MainWindow/ModelStates.h"

#include <random>

namespace tacla::testing {

TEST(ColumnLayout, MovesWhatStandsBelowAMeasuredRow) {
    ColumnLayout layout({2, 1}, {58, 58, 58});
    EXPECT_FALSE(layout.measured({{0, 58}, {2, 58}}));
    EXPECT_TRUE(layout.measured({{0, 78}, {2, 98}}));
    EXPECT_EQ(layout.card(1).top, 8 + 36 + 78 + 58 + 8 + 16);
    EXPECT_EQ(layout.height(), layout.row(2).bottom() + 8);
}

TEST(ColumnLayout, FindsTheRowsAndCardsOfAnyBand) {
    std::mt19937 random(7); // the same columns at each run
    for (int round = 0; round < 200; ++round) {
        std::vector<std::size_t> cards(random() % 6);
        std::vector<int> heights;
        for (auto& rows : cards) {
            rows = random() % 5;
            for (std::size_t row = 0; row < rows; ++row) heights.push_back(40 + static_cast<int>(random() % 60));
        }
        const ColumnLayout layout(cards, heights);
        const int top = static_cast<int>(random() % 1500) - 100, bottom = top + 1 + static_cast<int>(random() % 600);
        const auto reaches = [&](ColumnLayout::Span span) { return span.top < bottom && span.bottom() > top; };
        const auto rows = layout.rowsBetween(top, bottom);
        for (std::size_t row = 0; row < layout.rowCount(); ++row)
            EXPECT_EQ(row >= rows.first && row < rows.last, reaches(layout.row(row))) << round << " " << row;
        const auto found = layout.cardsBetween(top, bottom);
        for (std::size_t card = 0; card < layout.cardCount(); ++card)
            EXPECT_EQ(card >= found.first && card < found.last, reaches(layout.card(card))) << round << " " << card;
    }
}

static TaskGroups groupsOf(std::string_view taskFile) {
    const TaskList tasks{std::string(taskFile)};
    return {{.heading = {}, .day = {}, .symbol = {}, .tasks = {tasks, undated(tasks)}, .empty = {}}};
}

TEST(RowMatching, FollowsEachTaskThroughAReload) {
    const auto before = groupsOf("- [ ] a\n- [ ] b\n- [ ] c\n- [ ] b\n");
    const std::tuple<const char*, const char*, std::map<std::size_t, MatchedRow>> cases[] = {
        {"a line above", "- [ ] x\n- [ ] a\n- [ ] b\n- [ ] c\n- [ ] b\n", {{0, {1}}, {1, {2}}, {2, {3}}, {3, {4}}}},
        {"sorted anew", "- [ ] c\n- [ ] b\n- [ ] a\n", {{0, {2}}, {1, {1}}, {2, {0}}}},
        {"one deleted", "- [ ] a\n- [ ] c\n", {{0, {0}}, {2, {1}}}},
        {"one renamed", "- [ ] a\n- [ ] b\n- [ ] x\n- [ ] b\n", {{0, {0}}, {1, {1}}, {2, {2, true}}, {3, {3}}}},
        {"all gone", "", {}},
    };
    for (const auto& [what, after, rows] : cases)
        EXPECT_EQ(matchedRows(before, groupsOf(after), {0, 1, 2, 3}), rows) << what;
}

}
