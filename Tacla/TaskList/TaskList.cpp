#include "Tacla/TaskList/TaskList.h"

#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <ranges>
#include <stdexcept>

namespace tacla {

namespace {

PackedDay packed(const std::optional<Day>& day) { return day ? packedDay(*day) : 0; }

std::uint16_t minutesOf(const std::optional<Clock>& time) {
    return time ? static_cast<std::uint16_t>(time->hour * 60 + time->minute + 1) : std::uint16_t(0);
}

TaskList::Brief briefOf(const TaskLine& task, std::size_t titleLength) {
    return {
        .day = packed(task.day),
        .completed = task.done ? packed(task.doneOn ? task.doneOn : task.day) : 0,
        .titleLength =
            static_cast<std::uint32_t>(std::min<std::size_t>(titleLength, std::numeric_limits<std::uint32_t>::max())),
        .minutes = minutesOf(task.time),
        .done = task.done,
        .alone = true,
        .strong = task.title.starts_with(strongMark),
        .marked = task.done ? task.doneOn && task.day != task.doneOn : task.due || task.title.starts_with(strongMark)};
}

// A day and its minutes as one number, in the order of the calendar's names.
using Named = std::uint64_t;
Named named(const TaskList::Brief& task) { return Named(task.day) << 16 | task.minutes; }

Instant momentOf(Named name) {
    TaskItem task{};
    task.day = unpackedDay(static_cast<PackedDay>(name >> 16));
    if (const auto minutes = static_cast<std::int64_t>(name & 0xFFFF); minutes > 0)
        task.time = Clock{(minutes - 1) / 60, (minutes - 1) % 60};
    return *task.at();
}

// Of names in order, the places of their moments in the order of time: the calendar is asked once for each.
std::vector<std::uint32_t> ranksOf(const std::vector<Named>& names) {
    std::vector<std::pair<Instant, std::uint32_t>> moments;
    moments.reserve(names.size());
    for (const auto name : names) moments.emplace_back(momentOf(name), static_cast<std::uint32_t>(moments.size()));
    std::ranges::sort(moments);
    std::vector<std::uint32_t> ranks(names.size());
    std::uint32_t rank = 0;
    for (std::size_t i = 0; i < moments.size(); ++i) {
        if (i > 0 && moments[i].first != moments[i - 1].first) ++rank;
        ranks[moments[i].second] = rank;
    }
    return ranks;
}

std::vector<TaskList::Dated> byMoment(const std::vector<TaskList::Brief>& briefs) {
    std::vector<Named> names;
    for (const auto& task : briefs)
        if (task.day != 0) names.push_back(named(task));
    const auto count = names.size();
    std::ranges::sort(names);
    names.erase(std::unique(names.begin(), names.end()), names.end()); // not of ranges: clang 14 cannot read that one
    names.shrink_to_fit();
    const auto ranks = ranksOf(names);
    const auto rankOf = [&](const TaskList::Brief& task) {
        return ranks[static_cast<std::size_t>(std::ranges::lower_bound(names, named(task)) - names.begin())];
    };
    std::vector<std::uint32_t> next(names.size() + 1); // where the next task of a rank goes
    for (const auto& task : briefs)
        if (task.day != 0) ++next[rankOf(task) + 1];
    for (std::size_t i = 1; i < next.size(); ++i) next[i] += next[i - 1];
    std::vector<TaskList::Dated> ordered(count);
    for (Place place = 0; place < briefs.size(); ++place)
        if (const auto& task = briefs[place]; task.day != 0)
            ordered[next[rankOf(task)]++] = {place, task.day & 0x7FFFFFFF, task.done};
    return ordered;
}

}

TaskList::TaskList() {
    static const auto none = std::make_shared<const Data>();
    data_ = none;
}

TaskList::TaskList(std::string text) {
    const auto data = std::make_shared<Data>();
    data->text = std::move(text);
    readTasks(*data);
    data->orders.byMoment = byMoment(data->briefs);
    std::map<PackedDay, Places, std::greater<>> byCompletion;
    for (Place place = 0; place < data->briefs.size(); ++place)
        if (const auto& task = data->briefs[place]; task.done) byCompletion[task.completed].push_back(place);
    for (auto& [day, places] : byCompletion) {
        if (day == 0)
            data->orders.doneAnyTime = std::move(places);
        else
            data->orders.byCompletion.push_back({day, std::move(places)});
    }
    data_ = data;
}

void TaskList::readTasks(Data& data) {
    const auto lines = static_cast<std::size_t>(std::ranges::count(data.text, '\n')) + 1;
    std::vector<KeyNumber> digests;
    digests.reserve(lines);
    data.briefs.reserve(lines);
    data.wheres.reserve(lines);
    forEachTask(data.text, [&](const TaskLine& task) {
        data.briefs.push_back(briefOf(task, task.title.size()));
        data.wheres.push_back({static_cast<std::size_t>(task.title.data() - data.text.data()), task.line});
        digests.push_back(titleDigest(task.title));
    });
    const KeyNumbers numbers(std::move(digests));
    data.keys.reserve(data.briefs.size());
    for (std::size_t i = 0; i < data.briefs.size(); ++i) {
        const auto title = std::string_view(data.text).substr(data.wheres[i].title, data.briefs[i].titleLength);
        data.keys.push_back(numbers.key(i, title));
        data.briefs[i].alone = numbers.isAlone(i);
    }
}

std::string_view TaskList::title(std::size_t task) const {
    return std::string_view(data_->text).substr(data_->wheres[task].title, data_->briefs[task].titleLength);
}

std::string_view TaskList::behindTheTitle(std::size_t task) const {
    const auto begin = data_->wheres[task].title + data_->briefs[task].titleLength;
    const auto end = std::min(data_->text.find('\n', begin), data_->text.size());
    return std::string_view(data_->text).substr(begin, end - begin);
}

TaskItem TaskList::item(std::size_t task, std::string_view title) const {
    TaskLine read(line(task));
    read.done = brief(task).done;
    read.title = title;
    readAttributes(read, behindTheTitle(task));
    auto item = itemOf(read);
    item.key = keyText(key(task));
    item.alone = brief(task).alone;
    return item;
}

TaskItem TaskList::operator[](std::size_t task) const { return item(task, title(task)); }

TaskItem TaskList::at(std::size_t task) const {
    if (task >= size()) throw std::out_of_range("no such task");
    return (*this)[task];
}

TaskItem TaskList::drawn(std::size_t task) const {
    auto shown = title(task);
    if (shown.size() > longestDrawn + 4) {
        auto end = longestDrawn + 4; // more than is drawn: it is seen that there is more
        while ((shown[end] & 0xC0) == 0x80) --end;
        shown = shown.substr(0, end);
    }
    return item(task, shown);
}

TaskItem TaskList::whole(const TaskItem& drawn) const {
    const auto place = drawn.title.size() > longestDrawn ? find(drawn.key) : std::nullopt;
    return place ? (*this)[*place] : drawn;
}

std::optional<Place> TaskList::find(std::string_view key) const {
    const auto number = keyNumber(key);
    const auto found = number ? std::ranges::find(keys(), *number) : keys().end();
    return found == keys().end() ? std::nullopt : std::optional(static_cast<Place>(found - keys().begin()));
}

std::optional<Place> TaskList::atLine(std::int64_t line) const {
    const auto& wheres = data_->wheres;
    const auto found = std::ranges::lower_bound(wheres, line, {}, &Where::line);
    if (found == wheres.end() || found->line != line) return {};
    return static_cast<Place>(found - wheres.begin());
}

bool TaskList::readsAs(std::size_t task, const TaskList& other, std::size_t otherTask) const {
    const auto &a = brief(task), &b = other.brief(otherTask);
    if (a.done != b.done || a.day != b.day || a.minutes != b.minutes || title(task) != other.title(otherTask))
        return false;
    const auto parts = behindTheTitle(task), otherParts = other.behindTheTitle(otherTask);
    if (parts == otherParts) return true;
    TaskLine read(0), otherRead(0);
    readAttributes(read, parts);
    readAttributes(otherRead, otherParts);
    return read.due == otherRead.due && read.doneOn == otherRead.doneOn;
}

bool TaskList::operator==(const TaskList& other) const {
    if (sharesAllWith(other)) return true;
    if (size() != other.size() || keys() != other.keys()) return false;
    for (std::size_t i = 0; i < size(); ++i)
        if (line(i) != other.line(i) || !readsAs(i, other, i)) return false;
    return true;
}

bool TaskList::operator==(const std::vector<TaskItem>& tasks) const {
    if (size() != tasks.size()) return false;
    for (std::size_t i = 0; i < size(); ++i)
        if ((*this)[i] != tasks[i]) return false;
    return true;
}

const TaskItem* TaskSelection::other(std::size_t task) const {
    const auto fromTheEnd = static_cast<std::size_t>(std::numeric_limits<Place>::max() - places_[task]);
    return fromTheEnd < others_.size() ? &others_[fromTheEnd] : nullptr;
}

TaskItem TaskSelection::operator[](std::size_t task) const {
    const auto* alien = other(task);
    return alien != nullptr ? *alien : list_.drawn(places_[task]);
}

std::string_view TaskSelection::title(std::size_t task) const {
    const auto* alien = other(task);
    return alien != nullptr ? std::string_view(alien->title) : list_.title(places_[task]);
}

KeyNumber TaskSelection::key(std::size_t task) const {
    const auto* alien = other(task);
    return alien != nullptr ? keyNumber(alien->key).value_or(0) : list_.key(places_[task]);
}

std::int64_t TaskSelection::line(std::size_t task) const {
    const auto* alien = other(task);
    return alien != nullptr ? alien->line : list_.line(places_[task]);
}

TaskList::Brief TaskSelection::brief(std::size_t task) const {
    const auto* alien = other(task);
    if (alien == nullptr) return list_.brief(places_[task]);
    TaskLine read(alien->line);
    read.done = alien->done;
    read.title = alien->title;
    read.day = alien->day;
    read.time = alien->time;
    read.due = alien->due;
    read.doneOn = alien->doneOn;
    return briefOf(read, alien->title.size());
}

void TaskSelection::insert(std::size_t at, TaskItem task) {
    const auto place = static_cast<Place>(std::numeric_limits<Place>::max() - others_.size());
    others_.push_back(std::move(task));
    places_.insert(places_.begin() + static_cast<std::ptrdiff_t>(at), place);
}

}
