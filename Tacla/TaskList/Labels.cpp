#include "Tacla/TaskList/Labels.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace tacla {

std::string dayAndMonth(Day day) {
    std::string text;
    dravel::appendPadded(text, day.day, 2);
    dravel::appendPadded(text += '/', day.month, 2);
    return text;
}

std::string counted(std::size_t n, std::string_view singular) {
    return std::to_string(n) + " " + std::string(singular) + (n >= 2 ? "s" : "");
}

std::string capitalised(std::string_view text) {
    const auto first = dravel::firstCharacters(text, 1);
    std::string result;
    icu::UnicodeString::fromUTF8({first.data(), static_cast<std::int32_t>(first.size())})
        .toUpper(icu::Locale::getRoot())
        .toUTF8String(result);
    return result.append(text.substr(first.size()));
}

std::string menuLabel(std::string_view label) {
    if (label.size() < 65 || dravel::firstCharacters(label, 64).size() == label.size()) return std::string(label);
    return std::string(dravel::firstCharacters(label, 63)) + "…";
}

std::string drawnTitle(std::string_view title) {
    constexpr std::size_t most = 10'000; // bytes
    const auto isInside = [title](std::size_t at) { return at < title.size() && (title[at] & 0xC0) == 0x80; };
    auto end = std::min(title.size(), most);
    while (isInside(end)) --end; // of a character
    return TaskFile::dropStrongMark(title.substr(0, end)) + (end < title.size() ? "…" : "");
}

}
