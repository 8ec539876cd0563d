#include "Tacla/TaskList/Day.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <algorithm>
#include <array>

namespace tacla {

namespace wall = dravel::wall;

std::optional<Day> Day::parse(std::string_view text) {
    if (const auto usual = usualDay(text)) return unpackedDay(usual);
    std::array<std::string_view, 3> pieces;
    std::size_t count = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const auto end = std::min(text.find('-', begin), text.size());
        if (end > begin) {
            if (count == pieces.size()) return std::nullopt;
            pieces[count++] = text.substr(begin, end - begin);
        }
        begin = end + 1;
    }
    if (count != pieces.size() || pieces[0].size() != 4) return std::nullopt;
    const auto year = dravel::parsedDigits(pieces[0]);
    const auto month = dravel::parsedDigits(pieces[1]);
    const auto day = dravel::parsedDigits(pieces[2]);
    if (!year || !month || !day || *month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;
    return Day{*year, *month, *day};
}

Day Day::of(Instant at) {
    const auto reading = wall::read(at);
    return {reading.year, reading.month, reading.day};
}

Instant Day::date() const { return wall::instant({year, month, day, 0, 0}); }

std::string Day::description() const {
    std::string text;
    dravel::appendPadded(text, year, 4);
    dravel::appendPadded(text += '-', month, 2);
    dravel::appendPadded(text += '-', day, 2);
    return text;
}

Day Day::nextMonday() const {
    const int step = (8 - wall::weekday(year, month, day)) % 7;
    return plusDays(step == 0 ? 7 : step);
}

Day Day::plusDays(std::int64_t days) const {
    using namespace std::chrono;
    // A day beyond its month rolls over, as it does in the wall calendar.
    const sys_days first =
        std::chrono::year(static_cast<int>(year)) / std::chrono::month(static_cast<unsigned>(month)) / 1;
    const year_month_day moved = first + std::chrono::days(day - 1 + days);
    return {static_cast<int>(moved.year()), static_cast<unsigned>(moved.month()), static_cast<unsigned>(moved.day())};
}

}
