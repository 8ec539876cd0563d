#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <string>

namespace tacla {

// The time of day in the short notation of the user's locale; "10:40" where none is set.
std::string shortTime(dravel::Instant);

}
