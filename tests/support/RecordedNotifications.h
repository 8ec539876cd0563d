#pragma once

#include "Tacla/Reminders/NotificationServer.h"
#include "tests/support/VirtualLoop.h"

#include <map>
#include <string>
#include <vector>

namespace tacla::testing {

// A notification server that writes down what it shows, keeps its bubbles until they are closed, and comes and goes as
// the test says.
class RecordedNotifications final : public NotificationServer {
  public:
    explicit RecordedNotifications(VirtualLoop& loop) : loop_(loop) {}

    struct Shown {
        Instant at;
        NotificationRequest request;
        BubbleHandle handle;
    };
    std::vector<Shown> shown;
    std::map<BubbleHandle, NotificationContent> bubbles; // on the screen
    Capabilities capabilities{.reachable = true, .actions = true, .body = true, .server = ":1.1"};
    Error refusal; // of every request
    std::function<void(const Shown&)> whenShown;

    void setReachable(bool reachable) {
        capabilities.reachable = reachable;
        changed();
    }
    void startAnew(); // as another server, without the bubbles of the old one

    void show(const NotificationRequest&, std::function<void(const Error&, const BubbleHandle&)> done) override;
    void close(const BubbleHandle&) override;
    void ask(std::function<void(Capabilities)> answered) override {
        loop_.post([this, answered = std::move(answered)] { answered(capabilities); });
    }

    // The user presses a button: the bubble stays up, as with some servers.
    void press(const BubbleHandle& bubble, Action action) { responded({action, bubble, {}}); }
    void press(const std::string& title, Action);

    // "08:00 Titre | corps", one a line, and forgets them.
    std::string transcript();

  private:
    VirtualLoop& loop_;
    int last_ = 0;
};

}
