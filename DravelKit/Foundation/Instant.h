#pragma once

#include <chrono>
#include <functional>

namespace dravel {

// An absolute time, in milliseconds since 1970-01-01 00:00 UTC.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

// Where a program takes "now" from: the system clock in the product, a clock that the test moves in a test.
using Now = std::function<Instant()>;

inline Instant systemNow() { return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()); }

}
