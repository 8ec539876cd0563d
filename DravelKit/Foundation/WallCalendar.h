#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <cstdint>

// The Gregorian wall calendar in the user's current time zone.
namespace dravel::wall {

struct Reading {
    std::int64_t year, month, day, hour, minute; // month and day count from 1
};

Reading read(Instant);

// The absolute time of a wall-clock reading. A day beyond its month rolls over (30 February is 1 or 2 March). A time
// that a daylight-saving change skips becomes the next existing one; of a repeated time the first is meant.
Instant instant(const Reading&);

// 0 is Sunday, 6 is Saturday.
int weekday(std::int64_t year, std::int64_t month, std::int64_t day);

// Reads the system's zone again when TZ or /etc/localtime changed since the last call; true when the zone may be new,
// as at the first call.
bool refreshZone();

}
