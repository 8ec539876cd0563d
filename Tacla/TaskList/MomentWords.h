#pragma once

#include "DravelKit/Foundation/FoldedText.h"
#include "Tacla/TaskList/Clock.h"
#include "Tacla/TaskList/Day.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Dates in words: « Appeler Paul demain 14h ! » is « Appeler Paul », tomorrow at 14:30, and urgent. It is only ever
// offered; where the words may as well belong to the title ("la réunion de mardi"), nothing is.
namespace tacla {

using dravel::TextRange;

struct MomentWords {
    std::vector<TextRange> ranges; // the words, in the title: at its beginning, at its end, or both
    std::optional<Day> day;        // none where only the priority is told
    std::optional<Clock> clock;    // only together with a day
    bool strong = false;

    bool operator==(const MomentWords&) const = default;
};

std::optional<MomentWords> momentWords(std::string_view title, Day today, Clock now);

std::string withoutWords(std::string_view title, const MomentWords&); // never empty
std::string label(const MomentWords&, Day today);                     // "demain 14:30 · prioritaire"

}
