#include "Tacla/TaskList/Clock.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <algorithm>

namespace tacla {

std::optional<Clock> Clock::parse(std::string_view text) {
    if (const auto usual = usualClock(text)) return unpackedClock(usual);
    // Empty pieces do not count: ":9::05:" has two.
    const auto hourBegin = std::min(text.find_first_not_of(':'), text.size());
    const auto hourEnd = std::min(text.find(':', hourBegin), text.size());
    const auto minuteBegin = std::min(text.find_first_not_of(':', hourEnd), text.size());
    const auto minuteEnd = std::min(text.find(':', minuteBegin), text.size());
    const bool twoPieces = text.find_first_not_of(':', minuteEnd) == text.npos;
    if (!twoPieces || hourEnd - hourBegin > 2 || minuteEnd - minuteBegin != 2) return std::nullopt;
    const auto hour = dravel::parsedDigits(text.substr(hourBegin, hourEnd - hourBegin));
    const auto minute = dravel::parsedDigits(text.substr(minuteBegin, 2));
    if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
    return Clock{*hour, *minute};
}

Clock Clock::of(Instant at) {
    const auto reading = dravel::wall::read(at);
    return {reading.hour, reading.minute};
}

std::string Clock::description() const {
    std::string text;
    dravel::appendPadded(text, hour, 2);
    dravel::appendPadded(text += ':', minute, 2);
    return text;
}

}
