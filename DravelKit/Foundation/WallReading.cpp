#include "DravelKit/Foundation/WallCalendar.h"

#include <ctime>

// Apart from the calendar: a program that only reads the clock must not pay for loading ICU's time zones.
namespace dravel::wall {

Reading read(Instant at) {
    const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(at).time_since_epoch().count();
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return {local.tm_year + 1900LL, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min};
}

}
