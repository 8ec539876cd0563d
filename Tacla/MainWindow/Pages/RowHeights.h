#pragma once

#include "Tacla/MainWindow/PageContents.h"

#include <vector>

namespace tacla {

// Estimated heights of all rows of the groups, in order, for rows of that width. Exact for a title of plain letters
// that fits into one line; measuring every title of a long list would take seconds.
std::vector<int> estimatedRowHeights(const TaskGroups&, int rowWidth);

}
