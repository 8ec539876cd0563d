#include "Tacla/TaskList/Clock.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"

#include <array>
#include <cstdio>

namespace tacla {

std::optional<Clock> Clock::parse(std::string_view text) {
    const auto pieces = dravel::split(text, ":", false);
    if (pieces.size() != 2 || pieces[0].size() > 2 || pieces[1].size() != 2) return std::nullopt;
    const auto hour = dravel::parsedDigits(pieces[0]);
    const auto minute = dravel::parsedDigits(pieces[1]);
    if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
    return Clock{*hour, *minute};
}

Clock Clock::of(Instant at) {
    const auto reading = dravel::wall::read(at);
    return {reading.hour, reading.minute};
}

std::string Clock::description() const {
    std::array<char, 48> text;
    std::snprintf(text.data(), text.size(), "%02lld:%02lld", static_cast<long long>(hour),
                  static_cast<long long>(minute));
    return text.data();
}

}
