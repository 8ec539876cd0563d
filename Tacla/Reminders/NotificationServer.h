#pragma once

#include "DravelKit/Foundation/Signal.h"
#include "Tacla/Reminders/NotificationContent.h"

#include <functional>
#include <optional>
#include <string>

namespace tacla {

// The desktop's notification server. A port: over D-Bus in the product (Tacla/Linux), a recorder in tests.
// Nothing here blocks; callbacks run on the main thread, later.
class NotificationServer {
  public:
    virtual ~NotificationServer() = default;

    using Error = std::optional<std::string>; // the system's words
    virtual void show(const NotificationRequest&, std::function<void(Error)> shown) = 0;

    // Whether a server answers (it may be started by the question), at most 5 s later.
    struct Capabilities {
        bool reachable = false, actions = false, body = false;
        bool session = true; // false: there is no desktop session that could have a server
    };
    virtual void ask(std::function<void(Capabilities)>) = 0;

    enum class Action { done, tomorrow, opened };
    struct Response {
        Action action;
        std::string key;
        std::string activationToken; // lets the window come to the front; may be empty
    };
    dravel::Signal<const Response&> responded;
    dravel::Signal<> changed; // a server came or went
};

}
