#pragma once

#include <optional>
#include <string>

namespace tacla {

// A typed title as it may be written: without its "❗" marks, trimmed, and with " - " for each " · ", which would cut
// it into parts. None when nothing is left, or for what cannot stand in a line: a line break, bytes that are no UTF-8.
std::optional<std::string> writableTitle(std::string typed);

}
