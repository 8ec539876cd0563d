#include "Tacla/MainWindow/Pages/RowMatching.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace tacla {

namespace {

using Rows = std::vector<std::size_t>;
using RowsOfKey = std::unordered_map<std::string_view, Rows>;

template <class Visit>
void eachRow(const TaskGroups& groups, Visit visit) {
    std::size_t row = 0;
    for (const auto& group : groups)
        for (const auto& task : group.tasks) visit(row++, task);
}

// One key may belong to several tasks: they are told apart by their order.
RowsOfKey rowsOfKeys(const TaskGroups& groups) {
    RowsOfKey found;
    eachRow(groups, [&](std::size_t row, const TaskItem& task) { found[task.key].push_back(row); });
    return found;
}

std::optional<std::size_t> sameTask(std::size_t row, const Rows& before, const RowsOfKey& after, std::string_view key) {
    const auto found = after.find(key);
    const auto nth = static_cast<std::size_t>(std::ranges::find(before, row) - before.begin());
    if (found == after.end() || nth >= found->second.size()) return std::nullopt;
    return found->second[nth];
}

}

std::map<std::size_t, MatchedRow> matchedRows(const TaskGroups& before, const TaskGroups& after, const Rows& rows) {
    std::map<std::size_t, MatchedRow> matched;
    const auto old = rowsOfKeys(before), now = rowsOfKeys(after);
    std::unordered_map<std::int64_t, std::size_t> missing; // line to row
    eachRow(before, [&](std::size_t row, const TaskItem& task) {
        if (!std::ranges::binary_search(rows, row)) return;
        if (const auto place = sameTask(row, old.at(task.key), now, task.key))
            matched[row] = {.row = *place};
        else
            missing[task.line] = row;
    });
    if (missing.empty()) return matched;
    eachRow(after, [&](std::size_t row, const TaskItem& task) {
        const auto found = missing.find(task.line);
        if (found != missing.end() && !old.contains(task.key)) matched[found->second] = {.row = row, .renamed = true};
    });
    return matched;
}

std::optional<std::size_t> successor(const TaskGroups& before, const TaskGroups& after, std::size_t left) {
    const auto old = rowsOfKeys(before), now = rowsOfKeys(after);
    std::optional<std::size_t> above, below;
    eachRow(before, [&](std::size_t row, const TaskItem& task) {
        if (row == left || (row > left && below)) return;
        const auto place = sameTask(row, old.at(task.key), now, task.key);
        if (place) (row < left ? above : below) = place;
    });
    return below ? below : above;
}

}
