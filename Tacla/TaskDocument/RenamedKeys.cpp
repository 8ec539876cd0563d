#include "Tacla/TaskDocument/RenamedKeys.h"

#include <set>
#include <utility>

namespace tacla {

namespace {

void pointAtNewKeys(RenamedKeys::Map& map, const RenamedKeys::Map& renamed) {
    for (auto& [first, current] : map) {
        const auto found = renamed.find(current);
        if (found != renamed.end()) current = found->second;
    }
}

}

void RenamedKeys::remember(const Map& renamed) {
    std::set<std::string> currentBefore;
    for (const auto& [first, current] : sinceSync_) currentBefore.insert(current);
    pointAtNewKeys(sinceSync_, renamed);
    for (const auto& [from, to] : renamed) {
        if (!currentBefore.contains(from)) sinceSync_[from] = to;
    }
}

// Into a map of its own: a key that the calendar knows now may be one that it knew another task by before.
void RenamedKeys::synced(const Map& given) {
    Map rest;
    for (const auto& [first, current] : sinceSync_) {
        const auto sent = given.find(first);
        const auto& known = sent == given.end() ? first : sent->second;
        if (known != current) rest.emplace(known, current);
    }
    sinceSync_ = std::move(rest);
}

}
