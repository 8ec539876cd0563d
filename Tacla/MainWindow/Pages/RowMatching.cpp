#include "Tacla/MainWindow/Pages/RowMatching.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tacla {

namespace {

using Rows = std::vector<std::size_t>;
using Keys = std::unordered_set<std::string_view>;
using RowsOfKey = std::unordered_map<std::string_view, Rows>;

template <class Visit>
void eachRow(const TaskGroups& groups, Visit visit) {
    std::size_t row = 0;
    for (const auto& group : groups)
        for (const auto& task : group.tasks) visit(row++, task);
}

Keys keysOf(const TaskGroups& groups, const Rows& rows) {
    Keys keys;
    eachRow(groups, [&](std::size_t row, const TaskItem& task) {
        if (std::ranges::binary_search(rows, row)) keys.insert(task.key);
    });
    return keys;
}

// One key may belong to several tasks: they are told apart by their order.
RowsOfKey rowsOfKeys(const TaskGroups& groups, const Keys* wanted = nullptr) {
    RowsOfKey found;
    eachRow(groups, [&](std::size_t row, const TaskItem& task) {
        if (!wanted || wanted->contains(task.key)) found[task.key].push_back(row);
    });
    return found;
}

std::optional<std::size_t> sameTask(std::size_t row, const Rows& before, const RowsOfKey& after, std::string_view key) {
    const auto found = after.find(key);
    const auto nth = static_cast<std::size_t>(std::ranges::find(before, row) - before.begin());
    if (found == after.end() || nth >= found->second.size()) return std::nullopt;
    return found->second[nth];
}

// On the line of a missing task, and of a name that was not there before.
std::map<std::size_t, MatchedRow> renamedRows(const TaskGroups& before, const TaskGroups& after,
                                              const std::unordered_map<std::int64_t, std::size_t>& missing) {
    std::unordered_map<std::string_view, std::pair<std::size_t, MatchedRow>> candidates;
    eachRow(after, [&](std::size_t row, const TaskItem& task) {
        if (const auto found = missing.find(task.line); found != missing.end())
            candidates[task.key] = {found->second, {.row = row, .renamed = true}};
    });
    eachRow(before, [&](std::size_t, const TaskItem& task) { candidates.erase(task.key); });
    std::map<std::size_t, MatchedRow> renamed;
    for (const auto& [key, match] : candidates) renamed.insert(match);
    return renamed;
}

}

std::map<std::size_t, MatchedRow> matchedRows(const TaskGroups& before, const TaskGroups& after, const Rows& rows) {
    std::map<std::size_t, MatchedRow> matched;
    if (rows.empty()) return matched;
    const auto wanted = keysOf(before, rows);
    const auto old = rowsOfKeys(before, &wanted), now = rowsOfKeys(after, &wanted);
    std::unordered_map<std::int64_t, std::size_t> missing; // line to row
    eachRow(before, [&](std::size_t row, const TaskItem& task) {
        if (!std::ranges::binary_search(rows, row)) return;
        if (const auto place = sameTask(row, old.at(task.key), now, task.key))
            matched[row] = {.row = *place};
        else
            missing[task.line] = row;
    });
    if (!missing.empty()) matched.merge(renamedRows(before, after, missing));
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
