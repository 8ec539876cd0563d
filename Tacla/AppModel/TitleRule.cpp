#include "Tacla/AppModel/TitleRule.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"

namespace tacla {

std::optional<std::string> writableTitle(std::string_view typed) {
    auto title = TaskFile::dropStrongMark(dravel::trimmedOfWhiteSpaceAndLineBreaks(typed));
    // One pass leaves a separator behind in " · · ".
    while (title.find(" · ") != std::string::npos) title = dravel::replacedAll(title, " · ", " - ");
    if (title.empty() || dravel::holdsLineBreak(title)) return {};
    return title;
}

}
