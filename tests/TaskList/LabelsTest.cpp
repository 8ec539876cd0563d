#include "Tacla/TaskList/Labels.h"

#include <gtest/gtest.h>

using namespace tacla;

TEST(Labels, CountAndCapitaliseInFrench) {
    EXPECT_EQ(counted(0, "faite"), "0 faite");
    EXPECT_EQ(counted(1, "tâche"), "1 tâche");
    EXPECT_EQ(counted(2, "tâche"), "2 tâches");
    EXPECT_EQ(capitalised("été"), "Été");
    EXPECT_EQ(capitalised(""), "");
    EXPECT_EQ(dayAndMonth({2025, 3, 4}), "04/03");
}

TEST(Labels, CutsMenuEntriesOfSixtyFiveCharactersOrMore) {
    std::string long63;
    for (int i = 0; i < 63; ++i) long63 += "é";
    EXPECT_EQ(menuLabel(long63 + "é"), long63 + "é");
    EXPECT_EQ(menuLabel(long63 + "éx"), long63 + "…");
}
