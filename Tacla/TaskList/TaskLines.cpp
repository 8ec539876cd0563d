#include "Tacla/TaskList/TaskLines.h"

#include "DravelKit/Foundation/Text.h"

#include <array>

namespace tacla {

namespace {

// As find(separator), by its rarest byte: blanks are everywhere, U+00B7's first byte hardly occurs.
std::size_t findSeparator(std::string_view text) {
    for (auto at = text.find(separator[1], 1); at != text.npos; at = text.find(separator[1], at + 1))
        if (text.substr(at - 1, separator.size()) == separator) return at - 1;
    return text.npos;
}

// Takes the next part off the front of the rest; none when there is no rest.
std::optional<std::string_view> nextPart(std::optional<std::string_view>& rest) {
    if (!rest) return std::nullopt;
    const auto end = findSeparator(*rest);
    const auto part = rest->substr(0, end);
    if (end == rest->npos)
        rest.reset();
    else
        rest->remove_prefix(end + separator.size());
    return part;
}

void readAttribute(TaskLine& task, std::string_view part) {
    part = dravel::trimmedOfWhiteSpace(part);
    if (part.starts_with(doneMark)) {
        task.doneOn = Day::parse(dravel::trimmedOfWhiteSpace(part.substr(doneMark.size())));
    } else if (part.starts_with(duePrefix)) {
        if (const auto due = Day::parse(part.substr(duePrefix.size()))) task.due = due;
    } else if (const auto when = parsedWhen(part)) {
        task.day = when->day;
        task.time = when->time;
    }
}

}

std::string written(Day day, std::optional<Clock> time) {
    return time ? day.description() + " " + time->description() : day.description();
}

std::optional<When> parsedWhen(std::string_view part) {
    std::array<std::string_view, 2> pieces;
    std::size_t count = 0;
    for (std::size_t begin = 0; begin < part.size();) {
        const auto end = std::min(part.find(' ', begin), part.size());
        if (end > begin) {
            if (count == pieces.size()) return std::nullopt;
            pieces[count++] = part.substr(begin, end - begin);
        }
        begin = end + 1;
    }
    if (count == 0) return std::nullopt;
    const auto day = Day::parse(pieces[0]);
    if (!day) return std::nullopt;
    if (count == 1) return When{*day, std::nullopt};
    const auto time = Clock::parse(pieces[1]);
    if (!time) return std::nullopt;
    return When{*day, time};
}

std::optional<Checkbox> checkbox(std::string_view line) {
    const auto begin = line.find_first_not_of(" \t");
    if (begin == line.npos) return std::nullopt;
    const auto box = line.substr(begin, checkboxLength);
    if (box == "- [ ] ") return Checkbox{begin, false};
    if (box == "- [x] " || box == "- [X] ") return Checkbox{begin, true};
    return std::nullopt;
}

std::optional<TaskLine> readTaskLine(std::string_view line, std::int64_t number) {
    const auto box = checkbox(line);
    if (!box) return std::nullopt;
    std::optional rest = line.substr(box->begin + checkboxLength);
    const auto title = dravel::trimmedOfWhiteSpaceAndLineBreaks(*nextPart(rest));
    if (title.empty()) return std::nullopt;
    TaskLine task{number, box->done, title, {}, {}, {}, {}};
    while (const auto part = nextPart(rest)) readAttribute(task, *part);
    return task;
}

}
