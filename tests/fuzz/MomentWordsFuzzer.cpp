#include "Tacla/TaskList/MomentWords.h"
#include "Tacla/TaskList/TaskFinder.h"
#include "tests/fuzz/Fuzzer.h"

using namespace tacla;

namespace {

constexpr Day today{2026, 11, 18};

// Inside the title, one behind the other, and no character cut in two.
void requireWhole(std::string_view title, const std::vector<TextRange>& ranges) {
    std::size_t last = 0;
    for (const auto& range : ranges) {
        require(last <= range.begin && range.begin < range.end && range.end <= title.size());
        require(dravel::isValidUtf8(title.substr(0, range.begin)) && dravel::isValidUtf8(title.substr(0, range.end)));
        last = range.end;
    }
}

void readMoment(std::string_view title) {
    const auto told = momentWords(title, today, {10, 0});
    if (!told) return;
    requireWhole(title, told->ranges);
    const auto rest = withoutWords(title, *told);
    require(!rest.empty() && rest.size() < title.size() && dravel::isValidUtf8(rest));
    require(!told->clock || told->day);
    require(!told->day || (*told->day >= today && told->day->plusDays(0) == *told->day));
    require(!label(*told, today).empty());
}

}

// What is typed may be anything, and the words to look for as well: they end at the first line break.
void fuzz(std::string_view text) {
    if (!dravel::isValidUtf8(text)) return;
    readMoment(text);
    const auto title = text.substr(std::min(text.find('\n'), text.size()));
    requireWhole(title, SoughtWords(text.substr(0, text.size() - title.size())).rangesIn(title));
}
