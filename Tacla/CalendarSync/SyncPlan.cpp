#include "Tacla/CalendarSync/SyncPlan.h"

#include <string_view>
#include <unordered_map>
#include <utility>

namespace tacla {

namespace {

struct Kept {
    const Managed* event;
    std::string_view key;
    bool renamed;
    bool matched = false;
};

}

SyncPlan planSync(const std::vector<Managed>& managed, const Tasks& tasks,
                  const std::map<std::string, std::string>& renamed, const std::string& timeZone) {
    SyncPlan plan;
    std::vector<Kept> kept;
    std::unordered_map<std::string_view, std::size_t> byKey;
    kept.reserve(managed.size());
    byKey.reserve(managed.size());
    for (const auto& event : managed) {
        const auto renaming = renamed.find(event.key);
        const std::string_view key = renaming == renamed.end() ? event.key : renaming->second;
        const Kept entry{&event, key, key != event.key};
        const auto [place, isNew] = byKey.try_emplace(key, kept.size());
        if (isNew) {
            kept.push_back(entry);
            continue;
        }
        const Kept earlier = std::exchange(kept[place->second], entry);
        // An event that moves between two pages of the listing is listed twice.
        if (earlier.event->id != event.id) plan.remove.push_back(earlier.event->id);
    }
    for (const auto& task : tasks) {
        auto event = calendarEvent(task, timeZone);
        if (!event && task.day) plan.leftOut.push_back(task.title);
        if (!event) continue;
        const auto place = byKey.find(event->key);
        if (place == byKey.end()) {
            plan.post.push_back(std::move(*event));
            continue;
        }
        Kept& entry = kept[place->second];
        entry.matched = true;
        byKey.erase(place);
        // The event of a renamed task still carries the old key, whatever its signature says.
        if (entry.renamed || entry.event->sig != event->signature()) {
            plan.patch.push_back({entry.event->id, std::move(*event)});
        }
    }
    for (const auto& entry : kept) {
        if (!entry.matched) plan.remove.push_back(entry.event->id);
    }
    return plan;
}

}
