#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <optional>
#include <string>

namespace tacla {

using dravel::Instant;

// What a notification says. Plain text: escaping for a server that reads markup belongs to the server's port.
struct NotificationContent {
    std::string title, body;
    std::string key; // the task's key; empty for the test notification, which has no actions

    bool operator==(const NotificationContent&) const = default;
};

struct NotificationRequest {
    std::string identifier;
    NotificationContent content;
    std::optional<Instant> moment; // none: at once

    bool operator==(const NotificationRequest&) const = default;
};

}
