#pragma once

#include "Tacla/CalendarSync/CalendarEvent.h"
#include "Tacla/TaskList/TaskViews.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace tacla {

// What must change so that the calendar shows the tasks.
struct SyncPlan {
    struct Patch {
        std::string id;
        CalendarEvent event;
        bool operator==(const Patch&) const = default;
    };
    std::vector<Patch> patch;
    std::vector<CalendarEvent> post;
    std::vector<std::string> remove;  // identifiers of events
    std::vector<std::string> leftOut; // titles of dated tasks that no event can show

    std::size_t size() const { return patch.size() + post.size() + remove.size(); }
    bool operator==(const SyncPlan&) const = default;
};

// `managed` in the order of the listing: of several events with one key the last one stays. `renamed` maps keys as the
// calendar knows them to keys as the tasks have them.
SyncPlan planSync(const std::vector<Managed>& managed, const Tasks& tasks,
                  const std::map<std::string, std::string>& renamed, const std::string& timeZone);

}
