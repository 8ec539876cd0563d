#include "Tacla/TaskList/TaskFile.h"

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/Numbering.h"
#include "Tacla/TaskList/TaskKeys.h"
#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <span>
#include <utility>

namespace tacla {

namespace {

// A task of a text by its line, and its key.
struct KeyedTitle {
    std::int64_t line;
    std::string_view title;
    TaskKey key;

    KeyNumber number() const { return key.of(title); }
};

constexpr std::size_t usualTaskLength = 48; // bytes of the text for each task

void numberKeys(std::vector<KeyedTitle>& titles) {
    std::vector<std::uint64_t> digests;
    digests.reserve(titles.size());
    for (const auto& title : titles) digests.push_back(title.key.digest);
    const auto numbers = numbered(digests);
    for (std::size_t i = 0; i < titles.size(); ++i) titles[i].key.number = numbers[i];
}

std::vector<KeyedTitle> keyedTitles(std::string_view text) {
    std::vector<KeyedTitle> titles;
    titles.reserve(text.size() / usualTaskLength);
    const auto take = [&](const TaskLine& task) {
        titles.push_back({task.line, task.title, {titleDigest(task.title), 1}});
    };
    forEachTask(text, take);
    numberKeys(titles);
    return titles;
}

// The keys of the lines whose task has another key afterwards. Both in line order.
NewKeys changedKeys(const std::vector<KeyedTitle>& before, const std::vector<KeyedTitle>& after) {
    NewKeys changed;
    auto old = before.begin();
    for (const auto& task : after) {
        while (old != before.end() && old->line < task.line) ++old;
        if (old == before.end() || old->line != task.line || old->key == task.key) continue;
        if (old->number() != task.number()) changed[keyText(old->number())] = keyText(task.number());
    }
    return changed;
}

}

std::optional<std::string> writableTitle(std::string typed) {
    if (!dravel::isValidUtf8(typed)) return {};
    typed = dravel::withoutLineBreaks(typed);
    // Replacing one can bring two others together.
    while (typed.find(separator) != typed.npos) typed = dravel::replacedAll(typed, separator, " - ");
    const auto title = withoutStrongMark(dravel::trimmedOfWhiteSpaceAndLineBreaks(typed));
    if (title.empty()) return {};
    return std::string(title);
}

namespace TaskFile {

std::vector<TaskItem> parse(std::string_view text) {
    std::vector<TaskItem> tasks;
    std::vector<std::uint64_t> digests;
    tasks.reserve(text.size() / usualTaskLength);
    digests.reserve(text.size() / usualTaskLength);
    forEachTask(text, [&](const TaskLine& task) {
        tasks.push_back(itemOf(task));
        digests.push_back(titleDigest(task.title));
    });
    const KeyNumbers numbers(std::move(digests));
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        tasks[i].key = keyText(numbers.key(i, tasks[i].title));
        tasks[i].alone = numbers.isAlone(i);
    }
    return tasks;
}

std::string hash(std::string_view text) { return keyText(shortDigest(text)); }

std::string dropStrongMark(std::string_view title) { return std::string(withoutStrongMark(title)); }

NewKeys renamedKeys(std::string_view from, std::string_view to) {
    return changedKeys(keyedTitles(from), keyedTitles(to));
}

// The five edits. Each changes, inserts or removes exactly one line; the text around it is copied as it stands.

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
auto findTitle(const std::vector<KeyedTitle>& titles, std::string_view key) {
    const auto wanted = keyNumber(key);
    return wanted ? std::ranges::find(titles, *wanted, &KeyedTitle::number) : titles.end();
}

std::optional<Span> findLine(std::string_view text, std::string_view key) {
    const auto titles = keyedTitles(text);
    const auto found = findTitle(titles, key);
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
            kept.push_back(whenText(to, time));
    }
    if (!placed) kept.push_back(whenText(to, time));
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
std::vector<KeyedTitle> withLine(std::vector<KeyedTitle> titles, std::int64_t number, std::string_view line) {
    const auto changed = std::ranges::find(titles, number, &KeyedTitle::line);
    const auto task = readTaskLine(line, number);
    if (task.isTask())
        *changed = {number, task.title, {titleDigest(task.title), 1}};
    else
        titles.erase(changed);
    numberKeys(titles);
    return titles;
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

std::optional<TaskItem> find(std::string_view text, std::string_view key) {
    const auto titles = keyedTitles(text);
    const auto found = findTitle(titles, key);
    if (found == titles.end()) return std::nullopt;
    auto task = itemOf(readTaskLine(lineOf(text, lineAround(text, found->title)), found->line));
    task.key = key;
    task.alone = std::ranges::count(titles, found->key.digest, [](const auto& one) { return one.key.digest; }) == 1;
    return task;
}

std::string add(std::string_view text, std::string_view title, Day day, std::optional<Clock> time, bool strong) {
    std::string line = "- [ ] ";
    if (strong) line.append(strongMark).append(" ");
    line += dropStrongMark(dravel::replacedAll(title, separator, " - "));
    line.append(separator).append(whenText(day, time));

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
    const auto task = findTitle(before, key);
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

std::optional<std::string> rescheduleAll(std::string_view text, const std::set<KeyNumber>& keys, Day to, Day today) {
    std::string result;
    std::size_t copied = 0;
    for (const auto& title : keyedTitles(text)) {
        if (!keys.contains(title.number())) continue;
        const auto span = lineAround(text, title.title);
        const auto line = lineOf(text, span);
        const auto task = readTaskLine(line, 0);
        result.append(text.substr(copied, span.begin - copied)).append(rescheduled(task, line, to, task.time, today));
        copied = span.end;
    }
    if (copied == 0) return std::nullopt;
    return result.append(text.substr(copied));
}

std::string line(const TaskItem& task) {
    std::vector<std::string> parts{(task.done ? "- [x] " : "- [ ] ") + task.title};
    if (task.day) parts.push_back(task.when());
    if (task.due) parts.push_back(std::string(duePrefix) + task.due->description());
    if (task.doneOn) parts.push_back(std::string(doneMark) + " " + task.doneOn->description());
    return joined(parts);
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

}
