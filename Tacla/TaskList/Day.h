#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/WallNames.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tacla {

using dravel::Instant;

// A date of the wall calendar, as written in the task file. The day is not checked against its month's length.
struct Day {
    std::int64_t year, month, day;

    static std::optional<Day> parse(std::string_view text); // "AAAA-MM-JJ", month and day of any length
    static Day of(Instant);                                 // in the current time zone

    Instant date() const;            // the first moment of the day
    std::string description() const; // "2025-03-04"
    std::string longLabel() const;   // "mardi 4 mars"
    Day nextMonday() const;          // strictly after this day
    Day plusDays(std::int64_t) const;

    auto operator<=>(const Day&) const = default;
};

// Here, so that a program that asks for no label does not load what ICU knows of the calendar.
inline std::string Day::longLabel() const { return dravel::wall::frenchLongDay(year, month, day); }

}
