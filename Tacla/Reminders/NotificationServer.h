#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/Signal.h"
#include "DravelKit/Run/MainLoop.h"

#include <compare>
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

// A notification on the screen: which server shows it, and as what. Good for as long as that server runs, in another
// process of ours too.
struct BubbleHandle {
    std::string server, id;

    auto operator<=>(const BubbleHandle&) const = default;
};

struct NotificationRequest {
    NotificationContent content;
    std::optional<BubbleHandle> replaced = {}; // whose place it takes, if that is still there
};

// The desktop's notification server. A port: over D-Bus in the product (Tacla/Linux), a recorder in tests.
// Nothing here blocks; callbacks run on the main thread, later.
class NotificationServer {
  public:
    virtual ~NotificationServer() = default;

    using Error = std::optional<std::string>; // the system's words
    // A reminder, which has a key, stays until it is answered or closed, as far as the server lets it.
    virtual void show(const NotificationRequest&, std::function<void(const Error&, const BubbleHandle&)> shown) = 0;
    virtual void close(const BubbleHandle&) = 0; // one that is gone already does no harm

    // Whether a server answers (it may be started by the question), at most 5 s later.
    struct Capabilities {
        bool reachable = false, actions = false, body = false;
        bool session = true;     // false: there is no desktop session that could have a server
        std::string server = {}; // as in the handles of what it shows
        // It tells of a bubble's buttons only who has shown it last: an earlier process's is shown anew in its place.
        bool tellsOnlyOwner = false;
    };
    virtual void ask(std::function<void(Capabilities)>) = 0;

    enum class Action { done, tomorrow, opened };
    struct Response {
        Action action;
        BubbleHandle bubble;         // may be another program's
        std::string activationToken; // lets the window come to the front; may be empty
    };
    dravel::Signal<const Response&> responded;
    dravel::Signal<const BubbleHandle&> closed; // may be another program's
    dravel::Signal<> changed;                   // a server came or went
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
