#pragma once

#include "Tacla/AppModel/ModelState.h"

#include <functional>
#include <string>

namespace dravel {
enum class Symbol;
}

namespace tacla {

// A time of day in the user's notation: "10:40".
using TimeText = std::function<std::string(Instant)>;

// The block at the foot of the sidebar.
struct SyncBadgeContent {
    dravel::Symbol symbol{};
    std::string title, subtitle;
    bool syncing = false, trouble = false;

    bool operator==(const SyncBadgeContent&) const = default;
};

SyncBadgeContent syncBadge(const ModelState&, const TimeText&);

}
