#include "Tacla/CalendarSync/CalendarEvent.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// What the calendar service answers may be anything; an event that we take as ours must have an identifier to act on.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view answer(reinterpret_cast<const char*>(data), size);
    if (const auto page = tacla::readListingPage(answer); page && !page->managed.empty()) {
        if (answer.find("private") == answer.npos && answer.find('\\') == answer.npos) std::abort();
    }
    tacla::readCalendarID(answer);
    tacla::namesRateLimit(answer);
    return 0;
}
