#pragma once

#include "Tacla/Reminders/NotificationServer.h"
#include "Tacla/TaskList/Clock.h"
#include "tests/support/VirtualLoop.h"

#include <stdexcept>

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

    // As another server, without the bubbles of the old one.
    void startAnew() {
        bubbles.clear();
        capabilities.server += "'";
        changed();
    }

    void show(const NotificationRequest& request,
              std::function<void(const Error&, const BubbleHandle&)> done) override {
        const auto error = capabilities.reachable ? refusal : "no server";
        BubbleHandle handle{capabilities.server, std::to_string(++last_)};
        if (request.replaced && bubbles.contains(*request.replaced)) handle = *request.replaced;
        if (!error) {
            shown.push_back({loop_.now(), request, handle});
            bubbles[handle] = request.content;
            if (whenShown) whenShown(shown.back());
        }
        loop_.post([done = std::move(done), error, handle] { done(error, handle); });
    }
    void close(const BubbleHandle& bubble) override {
        if (bubbles.erase(bubble) > 0) loop_.post([this, bubble] { closed(bubble); });
    }
    void ask(std::function<void(Capabilities)> answered) override {
        loop_.post([this, answered = std::move(answered)] { answered(capabilities); });
    }

    // The user presses a button: the bubble stays up, as with some servers.
    void press(const BubbleHandle& bubble, Action action) { responded({action, bubble, {}}); }
    void press(const std::string& title, Action action) {
        for (const auto& [handle, content] : bubbles)
            if (content.title == title) return press(BubbleHandle(handle), action);
        throw std::runtime_error("no bubble " + title);
    }

    // "08:00 Titre | corps", one a line, and forgets them.
    std::string transcript() {
        std::string text;
        for (const auto& [at, request, handle] : std::exchange(shown, {}))
            text += Clock::of(at).description() + " " + request.content.title + " | " + request.content.body + "\n";
        return text;
    }

  private:
    VirtualLoop& loop_;
    int last_ = 0;
};

}
