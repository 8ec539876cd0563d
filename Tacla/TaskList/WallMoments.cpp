#include "DravelKit/Foundation/WallCalendar.h"
#include "DravelKit/Foundation/WallNames.h"
#include "Tacla/TaskList/Day.h"
#include "Tacla/TaskList/TaskItem.h"

// What needs the calendar of the time zone, apart from days and tasks as such: the terminal does without, and starts in
// half the time.
namespace tacla {

namespace wall = dravel::wall;

Instant Day::date() const { return wall::instant({year, month, day, 0, 0}); }

std::string Day::longLabel() const { return wall::frenchLongDay(year, month, day); }

Day Day::nextMonday() const {
    const int step = (8 - wall::weekday(year, month, day)) % 7;
    return plusDays(step == 0 ? 7 : step);
}

std::optional<Instant> TaskItem::at() const {
    if (!day) return std::nullopt;
    const auto clock = time.value_or(Clock{9, 0});
    return wall::instant({day->year, day->month, day->day, clock.hour, clock.minute});
}

}
