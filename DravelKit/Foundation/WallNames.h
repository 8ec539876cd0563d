#pragma once

#include <cstdint>
#include <string>

// What ICU knows about the wall calendar. Apart from the rest: loading it takes longer than a whole `tacla list`.
namespace dravel::wall {

// "mardi 4 mars"
std::string frenchLongDay(std::int64_t year, std::int64_t month, std::int64_t day);

// The IANA identifier of the zone in use, such as "Europe/Paris", or of one with the same rules. "UTC" when there is
// none: its wall clock may then be another than ours.
std::string zoneIdentifier();

}
