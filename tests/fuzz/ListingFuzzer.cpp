#include "Tacla/CalendarSync/CalendarEvent.h"
#include "tests/fuzz/Fuzzer.h"

// What the calendar service answers may be anything; an event that we take as ours must have an identifier to act on.
void fuzz(std::string_view answer) {
    const auto page = tacla::readListingPage(answer);
    require(!page || page->managed.empty() || answer.find("private") != answer.npos ||
            answer.find('\\') != answer.npos);
    tacla::readCalendarID(answer);
    tacla::namesRateLimit(answer);
}
