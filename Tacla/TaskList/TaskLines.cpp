#include "Tacla/TaskList/TaskLines.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <array>

namespace tacla {

namespace {

// As find(separator), by its rarest byte: blanks are everywhere, U+00B7's first byte hardly occurs.
std::size_t findSeparator(std::string_view text) {
    for (auto at = text.find(separator[1], 1); at != text.npos; at = text.find(separator[1], at + 1))
        if (text.substr(at - 1, separator.size()) == separator) return at - 1;
    return text.npos;
}

// Sets what a part in the usual notation says; false when it must be read the patient way.
bool readUsualWhen(TaskLine& task, std::string_view part) {
    constexpr std::size_t dayLength = 10, length = 16;
    if (part.size() != dayLength && (part.size() != length || part[dayLength] != ' ')) return false;
    const auto day = usualDay(part.substr(0, dayLength));
    if (day == 0) return false;
    if (part.size() == dayLength) {
        task.time.reset();
    } else {
        const auto time = usualClock(part.substr(dayLength + 1));
        if (time == 0) return false;
        task.time.emplace(unpackedClock(time));
    }
    task.day.emplace(unpackedDay(day));
    return true;
}

void readAttribute(TaskLine& task, std::string_view part) {
    if (readUsualWhen(task, part)) return;
    part = dravel::trimmedOfWhiteSpace(part);
    if (part.starts_with(doneMark)) {
        part = dravel::trimmedOfWhiteSpace(part.substr(doneMark.size()));
        if (const auto usual = usualDay(part))
            task.doneOn.emplace(unpackedDay(usual));
        else
            task.doneOn = Day::parse(part);
    } else if (part.starts_with(duePrefix)) {
        if (const auto due = Day::parse(part.substr(duePrefix.size()))) task.due = due;
    } else if (const auto when = parsedWhen(part)) {
        task.day = when->day;
        task.time = when->time;
    }
}

}

std::string whenText(Day day, std::optional<Clock> time) {
    auto text = day.description();
    if (time) text.append(" ").append(time->description());
    return text;
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
    std::size_t begin = 0;
    while (begin < line.size() && (line[begin] == ' ' || line[begin] == '\t')) ++begin;
    const auto box = line.substr(begin, checkboxLength);
    if (!box.starts_with("- [") || !box.ends_with("] ") || box.size() < checkboxLength) return std::nullopt;
    const char mark = box[3];
    if (mark != ' ' && mark != 'x' && mark != 'X') return std::nullopt;
    return Checkbox{begin, mark != ' '};
}

TaskLine readTaskLine(std::string_view line, std::int64_t number) {
    TaskLine task(number);
    const auto box = checkbox(line);
    if (!box) return task;
    auto rest = line.substr(box->begin + checkboxLength);
    const auto end = findSeparator(rest);
    task.done = box->done;
    task.title = dravel::trimmedOfWhiteSpaceAndLineBreaks(rest.substr(0, end));
    if (end != rest.npos) readAttributes(task, rest.substr(end));
    return task;
}

void readAttributes(TaskLine& task, std::string_view rest) {
    for (auto end = findSeparator(rest); end != rest.npos;) {
        rest.remove_prefix(end + separator.size());
        end = findSeparator(rest);
        readAttribute(task, rest.substr(0, end));
    }
}

TaskItem itemOf(const TaskLine& task) {
    return {task.line, task.done, std::string(task.title), task.day, task.time, task.due, task.doneOn, {}};
}

}
