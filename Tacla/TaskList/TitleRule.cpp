#include "Tacla/TaskList/TitleRule.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskKeys.h"
#include "Tacla/TaskList/TaskLines.h"

namespace tacla {

std::optional<std::string> writableTitle(std::string typed) {
    if (!dravel::isValidUtf8(typed)) return {};
    // Replacing one can bring two others together.
    while (typed.find(separator) != typed.npos) typed = dravel::replacedAll(typed, separator, " - ");
    const auto title = withoutStrongMark(dravel::trimmedOfWhiteSpaceAndLineBreaks(typed));
    if (title.empty() || dravel::holdsLineBreak(title)) return {};
    return std::string(title);
}

}
