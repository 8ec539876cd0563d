#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/Signal.h"
#include "DravelKit/Run/MainLoop.h"

#include <functional>
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

// Whether the desktop lets notifications through, and what became of the last test. Without a server there is no
// desktop session.
class NotificationPermission {
  public:
    NotificationPermission(const dravel::MainLoop&, NotificationServer*, std::function<void()> changed);

    bool allowed = false;
    std::optional<std::string> testResult;

    void refresh();
    void refreshWhenServersComeAndGo();
    void request(std::function<void()> openSettings); // opens them when notifications are still not allowed
    void test();

  private:
    void tested(std::string result);

    const dravel::MainLoop& loop_;
    NotificationServer* server_;
    std::function<void()> changed_;
    dravel::Connection serverChanged_;
    dravel::Lifetime life_;
};

}
