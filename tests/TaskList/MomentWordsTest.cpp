#include "Tacla/TaskList/MomentWords.h"
#include "DravelKit/Foundation/Text.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tacla;

// Each line is a title as typed, then what is left of it and what the chip says: "–" where nothing is offered. A line
// "= 2026-11-18 10:00" sets the clock; "_" stands for a no-break space.
TEST(MomentWords, areTheOnesOfTheTable) {
    std::ifstream table(TACLA_PHRASES);
    Day today{};
    Clock now{};
    int phrases = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line.starts_with("# ")) continue;
        if (line.starts_with("= ")) {
            today = Day::parse(line.substr(2, 10)).value();
            now = Clock::parse(line.substr(13)).value();
            continue;
        }
        line = dravel::replacedAll(line, "_", "\u00A0");
        const auto title = line.substr(0, line.find(" → "));
        const auto told = momentWords(title, today, now);
        EXPECT_EQ(title + " → " + (told ? withoutWords(title, *told) + " → " + label(*told, today) : "–"), line);
        ++phrases;
    }
    EXPECT_GE(phrases, 200);
}
