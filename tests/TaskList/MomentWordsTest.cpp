#include "Tacla/TaskList/MomentWords.h"
#include "DravelKit/Foundation/Text.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tacla;

// A line of the table has one of two forms. "Dentiste + le 12 / le 12 décembre → samedi 12 décembre | demain → demain":
// the words behind the title, and what the chip says; the title is what is left. With "< " the words come first.
// "Demain : Paul | Demain, Paul → Paul → demain": whole titles as typed, what is left of each, and what the chip says;
// "–" where nothing is offered.
// "= 2026-11-18 10:00" sets the clock; "_" is a no-break space.
TEST(MomentWords, AreTheOnesOfTheTable) {
    std::ifstream table(TACLA_PHRASES);
    Day today{};
    Clock now{};
    int phrases = 0;
    const std::string arrow = " → ";
    const auto check = [&](const std::string& typed, std::string_view expected) {
        const auto told = momentWords(typed, today, now);
        EXPECT_EQ(told ? withoutWords(typed, *told) + arrow + label(*told, today) : "–", expected) << typed;
        ++phrases;
    };
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line.starts_with("# ")) continue;
        if (line.starts_with("= ")) {
            today = Day::parse(line.substr(2, 10)).value();
            now = Clock::parse(line.substr(13)).value();
            continue;
        }
        line = dravel::replacedAll(line, "_", "\u00A0");
        const auto plus = line.find(" + "), end = line.find(arrow);
        const bool before = line.starts_with("< ");
        const auto title = before ? line.substr(2, plus - 2) : line.substr(0, plus);
        if (plus == line.npos) {
            for (const auto typed : dravel::split(std::string_view(line).substr(0, end), " | "))
                check(std::string(typed), line.substr(end + arrow.size()));
            continue;
        }
        for (const auto moment : dravel::split(std::string_view(line).substr(plus + 3), " | "))
            for (const auto words : dravel::split(moment.substr(0, moment.find(arrow)), " / "))
                check(before ? std::string(words) + " " + title : title + " " + std::string(words),
                      title + std::string(moment.substr(moment.find(arrow))));
    }
    EXPECT_GE(phrases, 271);
}
