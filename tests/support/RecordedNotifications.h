#pragma once

#include "Tacla/Reminders/NotificationServer.h"
#include "tests/support/VirtualLoop.h"

#include <string>
#include <vector>

namespace tacla::testing {

// A notification server that writes down what it shows, and comes and goes as the test says.
class RecordedNotifications final : public NotificationServer {
  public:
    explicit RecordedNotifications(VirtualLoop& loop) : loop_(loop) {}

    struct Shown {
        Instant at;
        NotificationRequest request;
    };
    std::vector<Shown> shown;
    Capabilities capabilities{.reachable = true, .actions = true, .body = true};
    Error refusal; // of every request

    void setReachable(bool reachable) {
        capabilities.reachable = reachable;
        changed();
    }

    void show(const NotificationRequest& request, std::function<void(Error)> done) override {
        const auto error = capabilities.reachable ? refusal : "no server";
        if (!error) shown.push_back({loop_.now(), request});
        loop_.post([done = std::move(done), error] { done(error); });
    }

    void ask(std::function<void(Capabilities)> answered) override {
        loop_.post([this, answered = std::move(answered)] { answered(capabilities); });
    }

    // "08:00 Titre | corps", one a line, and forgets them.
    std::string transcript();

  private:
    VirtualLoop& loop_;
};

}
