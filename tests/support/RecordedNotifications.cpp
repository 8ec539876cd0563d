#include "tests/support/RecordedNotifications.h"

#include "Tacla/TaskList/Clock.h"

#include <stdexcept>
#include <utility>

namespace tacla::testing {

void RecordedNotifications::startAnew() {
    bubbles.clear();
    capabilities.server += "'";
    changed();
}

void RecordedNotifications::show(const NotificationRequest& request,
                                 std::function<void(const Error&, const BubbleHandle&)> done) {
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

void RecordedNotifications::close(const BubbleHandle& bubble) {
    if (bubbles.erase(bubble) > 0) loop_.post([this, bubble] { closed(bubble); });
}

void RecordedNotifications::press(const std::string& title, Action action) {
    for (const auto& [handle, content] : bubbles)
        if (content.title == title) return press(BubbleHandle(handle), action);
    throw std::runtime_error("no bubble " + title);
}

std::string RecordedNotifications::transcript() {
    std::string text;
    for (const auto& [at, request, handle] : std::exchange(shown, {})) {
        text += Clock::of(at).description() + " " + request.content.title + " | " + request.content.body + "\n";
    }
    return text;
}

}
