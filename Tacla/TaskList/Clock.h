#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tacla {

using dravel::Instant;

// A reading of the wall clock.
struct Clock {
    std::int64_t hour, minute;

    static std::optional<Clock> parse(std::string_view text); // "HH:MM" or "H:MM"
    static Clock of(Instant);                                 // in the current time zone

    std::string description() const; // "09:05"

    auto operator<=>(const Clock&) const = default;
};

}
