#include "Tacla/TaskList/Successors.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tacla {

namespace {

using Found = std::vector<Place>;
constexpr auto none = Successors::none;

// What tasks are paired by, as digests: a list of any length has room for these.
KeyNumber line(const TaskList& tasks, Place place) {
    const auto task = tasks[place];
    const auto day = [](const std::optional<Day>& value) { return value ? value->description() : std::string(); };
    return shortDigest(task.title + '\n' + task.when() + '\n' + (task.done ? 'x' : ' ') + day(task.due) + '\n' +
                       day(task.doneOn));
}

KeyNumber titleOf(const TaskList& tasks, Place place) { return titleDigest(tasks.title(place)); }

KeyNumber titleAndMoment(const TaskList& tasks, Place place) {
    return shortDigest(foldedTitle(tasks.title(place)) + '\n' + tasks[place].when());
}

bool areOfOneMoment(const TaskList::Brief& a, const TaskList::Brief& b) {
    return a.day == b.day && a.minutes == b.minutes;
}

// The tasks between what both readings begin with and what both end with.
class Middle {
  public:
    Middle(const TaskList& before, const TaskList& after)
        : before_(before), after_(after), found_(before.size(), none), taken_(after.size()) {
        const auto sizeBefore = static_cast<Place>(before.size()), sizeAfter = static_cast<Place>(after.size());
        const auto shorter = std::min(sizeBefore, sizeAfter);
        while (begin_ < shorter && before.readsAs(begin_, after, begin_)) pair(begin_, begin_), ++begin_;
        Place common = 0;
        while (common < shorter - begin_ && before.readsAs(sizeBefore - 1 - common, after, sizeAfter - 1 - common)) {
            ++common;
            pair(sizeBefore - common, sizeAfter - common);
        }
        endBefore_ = sizeBefore - common;
        endAfter_ = sizeAfter - common;
    }

    Found find() {
        if (begin_ == endBefore_ || begin_ == endAfter_) return std::move(found_);
        pairEqual(line, false);           // moved
        pairEqual(titleAndMoment, false); // checked or unchecked
        pairRenamed();
        pairEqual(titleOf, true); // of another day
        return std::move(found_);
    }

  private:
    void pair(Place before, Place after) {
        found_[before] = after;
        taken_[after] = true;
    }

    // Tasks that are not paired yet by one of their digests; those of one digest in their order.
    using Named = std::vector<std::pair<KeyNumber, Place>>;

    template <class Name>
    Named unpairedAfter(Name name) const {
        Named named;
        for (auto i = begin_; i < endAfter_; ++i)
            if (!taken_[i]) named.emplace_back(name(after_, i), i);
        std::ranges::sort(named);
        return named;
    }
    template <class Name>
    Named unpairedBefore(Name name) const {
        Named named;
        for (auto i = begin_; i < endBefore_; ++i)
            if (found_[i] == none) named.emplace_back(name(before_, i), i);
        std::ranges::sort(named);
        return named;
    }
    static auto endOfName(Named::const_iterator begin, const Named& named) {
        return std::find_if(begin, named.end(), [&](const auto& one) { return one.first != begin->first; });
    }
    static bool contains(const Named& named, KeyNumber name) {
        return std::ranges::binary_search(named, name, {}, &Named::value_type::first);
    }

    // Those of one name, in their order.
    template <class Name>
    void pairEqual(Name name, bool onlyWhenAlone) {
        const auto before = unpairedBefore(name), after = unpairedAfter(name);
        auto there = after.begin();
        for (auto here = before.begin(); here != before.end();) {
            const auto hereEnd = endOfName(here, before);
            while (there != after.end() && there->first < here->first) ++there;
            if (there == after.end()) return;
            const auto thereEnd = there->first == here->first ? endOfName(there, after) : there;
            const auto count = std::min(hereEnd - here, thereEnd - there);
            if (!onlyWhenAlone || (hereEnd - here == 1 && thereEnd - there == 1))
                for (std::ptrdiff_t i = 0; i < count; ++i) pair((here + i)->second, (there + i)->second);
            here = hereEnd;
            there = thereEnd;
        }
    }

    // A line that stands where it stood, of the same moment, with a title that nothing else there explains.
    void pairRenamed() {
        const auto titlesBefore = unpairedBefore(titleOf), titlesAfter = unpairedAfter(titleOf);
        for (auto i = begin_; i < endBefore_;) {
            if (found_[i] != none) {
                ++i;
                continue;
            }
            auto end = i;
            while (end < endBefore_ && found_[end] == none) ++end;
            const auto there = i == begin_ ? begin_ : found_[i - 1] + 1;
            const auto thereEnd = end == endBefore_ ? endAfter_ : found_[end];
            if (thereEnd >= there && thereEnd - there == end - i && isFree(there, thereEnd)) {
                for (Place k = 0; k < end - i; ++k) pairIfRenamed(i + k, there + k, titlesBefore, titlesAfter);
            }
            i = end;
        }
    }

    bool isFree(Place begin, Place end) const {
        for (auto i = begin; i < end; ++i)
            if (taken_[i]) return false;
        return true;
    }

    void pairIfRenamed(Place before, Place after, const Named& titlesBefore, const Named& titlesAfter) {
        if (!areOfOneMoment(before_.brief(before), after_.brief(after)) ||
            contains(titlesAfter, titleOf(before_, before)) || contains(titlesBefore, titleOf(after_, after)))
            return;
        pair(before, after);
    }

    const TaskList &before_, &after_;
    Found found_;
    std::vector<bool> taken_; // of the later reading
    Place begin_ = 0, endBefore_ = 0, endAfter_ = 0;
};

}

Successors::Successors(TaskList before, TaskList after)
    : before_(std::move(before)), after_(std::move(after)), found_(Middle(before_, after_).find()) {
    for (Place i = 0; i < found_.size(); ++i)
        if (found_[i] != none && before_.key(i) != after_.key(found_[i]))
            newKeys_[keyText(before_.key(i))] = keyText(after_.key(found_[i]));
}

std::optional<TaskItem> Successors::of(const TaskItem& earlier) const {
    const auto place = before_.atLine(earlier.line);
    if (!place || found_[*place] == none) return {};
    return after_.drawn(found_[*place]);
}

}
