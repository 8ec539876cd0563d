#include "Tacla/AppModel/TitleRule.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <array>

namespace tacla {

namespace {

constexpr std::array<std::string_view, 7> lineBreaks{"\n", "\v", "\f", "\r", "\u0085", "\u2028", "\u2029"};

bool holdsLineBreak(std::string_view text) {
    return std::ranges::any_of(lineBreaks, [text](auto mark) { return text.find(mark) != std::string_view::npos; });
}

}

std::optional<std::string> writableTitle(std::string_view typed) {
    auto title = TaskFile::dropStrongMark(dravel::trimmedOfWhiteSpaceAndLineBreaks(typed));
    // One pass leaves a separator behind in " · · ".
    while (title.find(" · ") != std::string::npos) title = dravel::replacedAll(title, " · ", " - ");
    if (title.empty() || holdsLineBreak(title)) return {};
    return title;
}

}
