#include "DravelKit/Foundation/WallCalendar.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>

// The C library's zones, not those built into ICU: the system's own data follow each change of a country's rules, and
// every other clock on the screen goes by them. Nor has a program that reads the time to load ICU's.
namespace dravel::wall {

namespace {

using std::chrono::seconds;

std::tm localTime(seconds sinceEpoch) {
    const std::time_t time = sinceEpoch.count();
    std::tm local{};
    ::localtime_r(&time, &local);
    return local;
}

seconds offsetAt(seconds sinceEpoch) { return seconds(localTime(sinceEpoch).tm_gmtoff); }

std::chrono::sys_days dayOf(std::int64_t year, std::int64_t month, std::int64_t day) {
    const auto first = std::chrono::year(static_cast<int>(year)) / static_cast<int>(month) / 1;
    return std::chrono::sys_days(first) + std::chrono::days(day - 1);
}

// The first second from `low` (before the change) to `high` (after it) at which the offset is another.
seconds changeOfOffset(seconds low, seconds high) {
    const auto before = offsetAt(low);
    while (high - low > seconds(1)) {
        const auto middle = low + (high - low) / 2;
        (offsetAt(middle) == before ? low : high) = middle;
    }
    return high;
}

// What the system's zone depends on: the variable, and the identity of the file behind the default.
auto zoneSource() {
    const char* variable = std::getenv("TZ");
    struct stat file = {};
    ::stat("/etc/localtime", &file);
    return std::tuple(std::string(variable ? variable : ""), variable != nullptr, file.st_ino, file.st_mtim.tv_sec);
}

}

Reading read(Instant at) {
    const auto local = localTime(std::chrono::floor<seconds>(at).time_since_epoch());
    return {local.tm_year + 1900LL, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min};
}

Instant instant(const Reading& reading) {
    const seconds wall = dayOf(reading.year, reading.month, reading.day).time_since_epoch() +
                         std::chrono::hours(reading.hour) + std::chrono::minutes(reading.minute);
    // No offset is greater, not even where a zone jumped over the date line: these two embrace the change, if any.
    constexpr std::chrono::hours farther(26);
    const auto before = offsetAt(wall - farther), after = offsetAt(wall + farther);
    const auto earlier = wall - std::max(before, after), later = wall - std::min(before, after);
    if (before == after || offsetAt(earlier) == std::max(before, after)) return Instant(earlier);
    if (offsetAt(later) == std::min(before, after)) return Instant(later);
    return Instant(changeOfOffset(earlier, later)); // a time that the change skips
}

int weekday(std::int64_t year, std::int64_t month, std::int64_t day) {
    return static_cast<int>(std::chrono::weekday(dayOf(year, month, day)).c_encoding());
}

bool refreshZone() {
    static std::mutex mutex;
    static std::optional<decltype(zoneSource())> known;
    const std::lock_guard guard(mutex);
    auto current = zoneSource();
    if (current == known) return false;
    known = std::move(current);
    ::tzset();
    return true;
}

}
