#include "tests/support/RecordedNotifications.h"

#include "Tacla/TaskList/Clock.h"

#include <utility>

namespace tacla::testing {

std::string RecordedNotifications::transcript() {
    std::string text;
    for (const auto& [at, request] : std::exchange(shown, {})) {
        text += Clock::of(at).description() + " " + request.content.title + " | " + request.content.body + "\n";
    }
    return text;
}

}
