#pragma once

#include "Tacla/MainWindow/PageContents.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

// Rows are counted through all groups, from 0.
namespace tacla {

struct MatchedRow {
    std::size_t row;
    bool renamed = false; // another key, on the same line of the file
    bool operator==(const MatchedRow&) const = default;
};

// Where the tasks of these rows stand after a reload. A task that left is missing.
std::map<std::size_t, MatchedRow> matchedRows(const TaskGroups& before, const TaskGroups& after,
                                              const std::vector<std::size_t>& rows);

// The row that takes over when the task of `row` left: the next one that stayed, else the one above.
std::optional<std::size_t> successor(const TaskGroups& before, const TaskGroups& after, std::size_t row);

}
