#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace dravel {
enum class Symbol;
}

namespace tacla {

// The pages of the main window, in the sidebar's order.
enum class Section { today, late, upcoming, done, settings };

inline constexpr std::array sections{Section::today, Section::late, Section::upcoming, Section::done,
                                     Section::settings};

std::string_view rawValue(Section); // "today"
std::string_view title(Section);    // "Aujourd'hui"
dravel::Symbol symbol(Section);
std::optional<Section> sectionNamed(std::string_view rawValue);

}
