#pragma once

#include "Tacla/TaskList/Clock.h"
#include "Tacla/TaskList/Day.h"

#include <optional>
#include <span>
#include <string>

// The French phrases for a day, a time or a priority. Words are in lower case, without accents and apostrophes.
namespace tacla {

// A part of the day: the time that it means by itself, and the hours that may be said with it.
struct DayPart {
    std::string_view name;
    Clock usual;
    std::int64_t firstHour, lastHour;
};

struct MomentPhrase {
    std::size_t length = 0; // in words
    std::optional<Day> day;
    std::optional<Clock> clock;
    const DayPart* part = nullptr;
    bool strong = false;

    // Both said together; false where they contradict each other, as two days do.
    bool join(const MomentPhrase&);
};

// The longest phrase at the beginning of the words, "pour" before a moment included.
std::optional<MomentPhrase> phraseAt(std::span<const std::string> words, Day today);

bool isWeekday(std::string_view word);

}
