#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskKeys.h"
#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <span>
#include <utility>

// The five edits. Each changes, inserts or removes exactly one line; the text around it is copied as it stands.
namespace tacla::TaskFile {

namespace {

struct Span {
    std::size_t begin, end; // without the line feed
};

std::string spliced(std::string_view text, Span span, std::string_view replacement) {
    std::string result;
    result.reserve(text.size() + replacement.size());
    result.append(text, 0, span.begin).append(replacement).append(text.substr(span.end));
    return result;
}

std::string_view lineOf(std::string_view text, Span span) { return text.substr(span.begin, span.end - span.begin); }

// The whole line of a piece of the text.
Span lineAround(std::string_view text, std::string_view piece) {
    const auto at = static_cast<std::size_t>(piece.data() - text.data());
    return {text.rfind('\n', at) + 1, std::min(text.find('\n', at), text.size())}; // npos + 1 is 0
}

// The first task with that key; the end when there is none.
auto find(const std::vector<KeyedTitle>& titles, std::string_view key) {
    return std::ranges::find_if(titles,
                                [&](const KeyedTitle& title) { return written(title.key, title.title) == key; });
}

std::optional<Span> findLine(std::string_view text, std::string_view key) {
    const auto titles = keyedTitles(text);
    const auto found = find(titles, key);
    if (found == titles.end()) return std::nullopt;
    return lineAround(text, found->title);
}

// Replaces the line of the task with that key by what `change` makes of it, unless it makes none.
template <class Change>
std::optional<std::string> edit(std::string_view text, std::string_view key, Change change) {
    const auto span = findLine(text, key);
    if (!span) return std::nullopt;
    const auto line = lineOf(text, *span);
    const std::optional<std::string> changed = change(readTaskLine(line, 0), line);
    if (!changed) return std::nullopt;
    return spliced(text, *span, *changed);
}

std::string joined(const std::vector<std::string>& parts) {
    std::string line;
    for (const auto& part : parts) {
        if (&part != &parts.front()) line += separator;
        line += part;
    }
    return line;
}

void replaceFirst(std::string& line, std::string_view from, std::string_view to) {
    if (const auto at = line.find(from); at != line.npos) line.replace(at, from.size(), to);
}

std::string checked(std::string_view line, Day today) {
    std::string result(line);
    replaceFirst(result, "- [ ] ", "- [x] ");
    return result.append(separator).append(doneMark).append(" ").append(today.description());
}

std::string unchecked(std::string_view line) {
    std::string open(line);
    replaceFirst(open, "- [x] ", "- [ ] ");
    replaceFirst(open, "- [X] ", "- [ ] ");
    std::vector<std::string> kept;
    for (const auto part : dravel::split(open, separator))
        if (!dravel::trimmedOfWhiteSpace(part).starts_with(doneMark)) kept.emplace_back(part);
    return joined(kept);
}

std::string rescheduled(const TaskLine& task, std::string_view line, Day to, std::optional<Clock> time, Day today) {
    const auto parts = dravel::split(line, separator);
    std::vector<std::string> kept{std::string(parts.front())};
    bool placed = false;
    for (const auto part : std::span(parts).subspan(1)) {
        if (!parsedWhen(dravel::trimmedOfWhiteSpace(part)))
            kept.emplace_back(part);
        else if (!std::exchange(placed, true))
            kept.push_back(written(to, time));
    }
    if (!placed) kept.push_back(written(to, time));
    const bool wasLate = task.day && *task.day < today && *task.day != to;
    if (!task.due && wasLate) kept.push_back(std::string(duePrefix) + task.day->description());
    return joined(kept);
}

// The line with another title.
std::string retitled(std::string_view line, bool strong, std::string_view title) {
    const auto begin = checkbox(line)->begin + checkboxLength;
    const auto end = std::min(line.find(separator, begin), line.size());
    const auto mark = strong ? std::string(strongMark) + " " : std::string();
    return spliced(line, {begin, end}, mark + std::string(title));
}

// The same titles with the one of that line read anew, and all of them numbered again.
std::vector<KeyedTitle> withLine(const std::vector<KeyedTitle>& titles, std::int64_t number, std::string_view line) {
    TaskCounter counter(titles.size());
    std::vector<KeyedTitle> result;
    result.reserve(titles.size());
    for (auto title : titles) {
        if (title.line == number) {
            const auto task = readTaskLine(line, number);
            if (!task.isTask()) continue;
            title = {number, task.title, {titleDigest(task.title), 0}};
        }
        title.key = counter.next(title.key.digest);
        result.push_back(title);
    }
    return result;
}

// Where a new task goes: the index of the line before which it is inserted.
std::size_t placeOfNewTask(const std::vector<std::string_view>& lines) {
    const auto isBlank = [](std::string_view line) { return dravel::trimmedOfWhiteSpace(line).empty(); };
    const auto heading = std::ranges::find_if(
        lines, [](std::string_view line) { return dravel::trimmedOfWhiteSpace(line) == "## À faire"; });
    if (heading != lines.end()) {
        auto end = std::find_if(heading + 1, lines.end(), [](std::string_view line) { return line.starts_with('#'); });
        while (isBlank(*(end - 1))) --end; // the heading itself is not
        return static_cast<std::size_t>(end - lines.begin());
    }
    auto end = lines.size();
    while (end > 0 && lines[end - 1].empty()) --end;
    return end;
}

}

std::string add(std::string_view text, std::string_view title, Day day, std::optional<Clock> time, bool strong) {
    std::string line = "- [ ] ";
    if (strong) line.append(strongMark).append(" ");
    line += dropStrongMark(dravel::replacedAll(title, separator, " - "));
    line.append(separator).append(written(day, time));

    const auto lines = dravel::split(text, "\n");
    const auto place = placeOfNewTask(lines);
    if (place == lines.size()) return std::string(text) + "\n" + line;
    const auto at = static_cast<std::size_t>(lines[place].data() - text.data());
    return spliced(text, {at, at}, line + "\n");
}

std::optional<std::string> setDone(std::string_view text, std::string_view key, bool done, Day today) {
    return edit(text, key, [&](const TaskLine& task, std::string_view line) -> std::optional<std::string> {
        if (task.done == done) return std::nullopt;
        return done ? checked(line, today) : unchecked(line);
    });
}

std::optional<Renamed> rename(std::string_view text, std::string_view key, std::string_view to) {
    if (to.find('\n') != to.npos) return std::nullopt; // a title is one line
    const auto before = keyedTitles(text);
    const auto task = find(before, key);
    if (task == before.end() || withoutStrongMark(task->title) == to) return std::nullopt;
    const auto span = lineAround(text, task->title);
    const auto line = retitled(lineOf(text, span), task->title.starts_with(strongMark), to);
    return Renamed{spliced(text, span, line), changedKeys(before, withLine(before, task->line, line))};
}

std::optional<std::string> reschedule(std::string_view text, std::string_view key, Day to, std::optional<Clock> time,
                                      Day today) {
    return edit(text, key, [&](const TaskLine& task, std::string_view line) -> std::optional<std::string> {
        return rescheduled(task, line, to, time, today);
    });
}

std::optional<std::string> remove(std::string_view text, std::string_view key) {
    const auto line = findLine(text, key);
    if (!line) return std::nullopt;
    auto span = *line;
    if (span.end < text.size())
        ++span.end; // with its line feed
    else if (span.begin > 0)
        --span.begin; // the last line goes with the line feed before it
    return spliced(text, span, "");
}

}
