#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tacla {

// A typed title as it may be written: without its "❗" marks, trimmed, and with " - " for each " · ", which would cut
// it into parts. None when nothing is left, or when it holds a line break.
std::optional<std::string> writableTitle(std::string_view typed);

}
