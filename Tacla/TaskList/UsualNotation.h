#pragma once

#include "Tacla/TaskList/Clock.h"
#include "Tacla/TaskList/Day.h"

#include <cstdint>
#include <string_view>

// The notation in which the edits write, and nearly everybody: "2025-03-04" and "14:30", with all their zeros. Read
// inline and into registers, which makes listing 100,000 tasks about three times faster. None says only that the text
// must be read the patient way.
namespace tacla {

// Two digits; 100 or more when they are none.
constexpr unsigned twoDigits(const char* at) {
    const auto tens = static_cast<unsigned char>(at[0] - '0'), ones = static_cast<unsigned char>(at[1] - '0');
    return tens > 9 || ones > 9 ? 100U : tens * 10U + ones;
}

// A day and a time as one number each, 0 for none: they stay in a register, where an optional goes through memory.
using PackedDay = std::uint32_t;
using PackedClock = std::uint32_t;

constexpr PackedDay usualDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return 0;
    const unsigned century = twoDigits(&text[0]), year = twoDigits(&text[2]);
    const unsigned month = twoDigits(&text[5]), day = twoDigits(&text[8]);
    if (century > 99 || year > 99 || month < 1 || month > 12 || day < 1 || day > 31) return 0;
    return (century * 100 + year) << 9 | month << 5 | day;
}
constexpr PackedDay packedDay(Day day) { return static_cast<PackedDay>(day.year << 9 | day.month << 5 | day.day); }
constexpr Day unpackedDay(PackedDay day) { return {day >> 9, day >> 5 & 15, day & 31}; }

constexpr PackedClock usualClock(std::string_view text) {
    if (text.size() != 5 || text[2] != ':') return 0;
    const unsigned hour = twoDigits(&text[0]), minute = twoDigits(&text[3]);
    return hour > 23 || minute > 59 ? 0 : 1U << 16 | hour << 8 | minute;
}
constexpr Clock unpackedClock(PackedClock clock) { return {clock >> 8 & 255, clock & 255}; }

}
