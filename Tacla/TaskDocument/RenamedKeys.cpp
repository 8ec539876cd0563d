#include "Tacla/TaskDocument/RenamedKeys.h"

#include <set>

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

void RenamedKeys::synced(const Map& given) {
    for (const auto& [first, then] : given) {
        const auto entry = sinceSync_.find(first);
        if (entry == sinceSync_.end()) continue;
        const auto current = entry->second;
        sinceSync_.erase(entry);
        if (current != then) sinceSync_.emplace(then, current);
    }
}

}
