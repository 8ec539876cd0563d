#include "Tacla/TaskList/Labels.h"

#include <gtest/gtest.h>

using namespace tacla;

TEST(Labels, countAndCapitaliseInFrench) {
    EXPECT_EQ(counted(0, "faite"), "0 faite");
    EXPECT_EQ(counted(1, "tâche"), "1 tâche");
    EXPECT_EQ(counted(2, "tâche"), "2 tâches");
    EXPECT_EQ(capitalised("été"), "Été");
    EXPECT_EQ(capitalised(""), "");
    EXPECT_EQ(dayAndMonth({2025, 3, 4}), "04/03");
}

TEST(Labels, cutsMenuEntriesOfSixtyFiveCharactersOrMore) {
    const std::string e64 = [] {
        std::string text;
        for (int i = 0; i < 64; ++i) text += "é";
        return text;
    }();
    EXPECT_EQ(menuLabel(e64), e64);
    EXPECT_EQ(menuLabel(e64 + "x"), e64.substr(0, 63 * 2) + "…");
}
