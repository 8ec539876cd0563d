#include "Tacla/MainWindow/Pages/RowMatching.h"
#include "tests/MainWindow/ModelStates.h"

#include <gtest/gtest.h>

namespace tacla {
namespace {

TaskGroups groupsOf(std::string_view taskFile) {
    return {{.heading = {}, .day = {}, .symbol = {}, .tasks = TaskFile::parse(taskFile), .empty = {}}};
}

TEST(RowMatching, FollowsEachTaskThroughAReload) {
    const auto before = groupsOf("- [ ] Pain\n- [ ] Vin\n- [ ] Sel\n- [ ] Vin\n");
    struct Case {
        const char *what, *after;
        std::map<std::size_t, MatchedRow> rows;
    };
    const Case cases[] = {
        {"nothing changed", "- [ ] Pain\n- [ ] Vin\n- [ ] Sel\n- [ ] Vin\n", {{0, {0}}, {1, {1}}, {2, {2}}, {3, {3}}}},
        {"a line above",
         "- [ ] Eau\n- [ ] Pain\n- [ ] Vin\n- [ ] Sel\n- [ ] Vin\n",
         {{0, {1}}, {1, {2}}, {2, {3}}, {3, {4}}}},
        {"sorted anew", "- [ ] Sel\n- [ ] Vin\n- [ ] Pain\n", {{0, {2}}, {1, {1}}, {2, {0}}}},
        {"one deleted", "- [ ] Pain\n- [ ] Sel\n", {{0, {0}}, {2, {1}}}},
        {"one renamed",
         "- [ ] Pain\n- [ ] Vin\n- [ ] Poivre\n- [ ] Vin\n",
         {{0, {0}}, {1, {1}}, {2, {2, true}}, {3, {3}}}},
        {"all gone", "", {}},
    };
    for (const auto& [what, after, rows] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(matchedRows(before, groupsOf(after), {0, 1, 2, 3}), rows);
    }
    EXPECT_EQ(matchedRows(before, before, {2}), (std::map<std::size_t, MatchedRow>{{2, {2}}}))
        << "only those asked for";
}

TEST(RowMatching, HandsTheFocusToTheNextRowElseToTheOneAbove) {
    const auto before = groupsOf("- [ ] Pain\n- [ ] Vin\n- [ ] Sel\n");
    EXPECT_EQ(successor(before, groupsOf("- [ ] Pain\n- [ ] Sel\n"), 1), 1u);
    EXPECT_EQ(successor(before, groupsOf("- [ ] Pain\n- [ ] Vin\n"), 2), 1u);
    EXPECT_EQ(successor(before, groupsOf("- [ ] Pain\n"), 1), 0u) << "the next one left too";
    EXPECT_EQ(successor(before, groupsOf(""), 1), std::nullopt);
}

}
}
