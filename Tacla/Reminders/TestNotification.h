#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "Tacla/Reminders/NotificationServer.h"

#include <functional>
#include <string>

namespace tacla {

// Sends the test notification; `done` gets the line that says what became of it. No server: no desktop session.
void sendTestNotification(NotificationServer*, const dravel::Now&, std::function<void(std::string)> done);

}
