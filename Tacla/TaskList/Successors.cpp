#include "Tacla/TaskList/Successors.h"

#include "DravelKit/Foundation/Text.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tacla {

namespace {

using Index = std::size_t;
using Found = std::vector<std::optional<Index>>;

bool looksTheSame(const TaskItem& a, const TaskItem& b) {
    return a.done == b.done && a.day == b.day && a.time == b.time && a.due == b.due && a.doneOn == b.doneOn &&
           a.title == b.title;
}

std::string foldedTitle(const TaskItem& task) { return dravel::lowerCased(TaskFile::dropStrongMark(task.title)); }

std::string line(const TaskItem& task) {
    const auto day = [](const std::optional<Day>& value) { return value ? value->description() : std::string(); };
    return task.title + '\n' + task.when() + '\n' + (task.done ? 'x' : ' ') + day(task.due) + '\n' + day(task.doneOn);
}

std::string titleAndMoment(const TaskItem& task) { return foldedTitle(task) + '\n' + task.when(); }

// The tasks between what both readings begin with and what both end with.
class Middle {
  public:
    Middle(const Tasks& before, const Tasks& after) : before_(before), after_(after), found_(before.size()) {
        const auto shorter = std::min(before.size(), after.size());
        while (begin_ < shorter && looksTheSame(before[begin_], after[begin_])) pair(begin_, begin_), ++begin_;
        Index common = 0;
        while (common < shorter - begin_ &&
               looksTheSame(before[before.size() - 1 - common], after[after.size() - 1 - common])) {
            ++common;
            pair(before.size() - common, after.size() - common);
        }
        taken_.assign(after.size(), false);
        std::fill_n(taken_.begin(), begin_, true);
        std::fill_n(taken_.rbegin(), common, true);
        endBefore_ = before.size() - common;
        endAfter_ = after.size() - common;
    }

    Found find() {
        if (begin_ == endBefore_ || begin_ == endAfter_) return std::move(found_);
        pairEqual(line, false);           // moved
        pairEqual(titleAndMoment, false); // checked or unchecked
        pairRenamed();
        pairEqual(foldedTitle, true); // of another day
        return std::move(found_);
    }

  private:
    void pair(Index before, Index after) {
        found_[before] = after;
        if (after < taken_.size()) taken_[after] = true;
    }

    using Places = std::unordered_map<std::string, std::vector<Index>>;

    template <class Name>
    Places unpairedAfter(Name name) const {
        Places places;
        for (auto i = begin_; i < endAfter_; ++i)
            if (!taken_[i]) places[name(after_[i])].push_back(i);
        return places;
    }
    template <class Name>
    Places unpairedBefore(Name name) const {
        Places places;
        for (auto i = begin_; i < endBefore_; ++i)
            if (!found_[i]) places[name(before_[i])].push_back(i);
        return places;
    }

    // Those of one name, in their order.
    template <class Name>
    void pairEqual(Name name, bool onlyWhenAlone) {
        const auto after = unpairedAfter(name);
        for (const auto& [of, places] : unpairedBefore(name)) {
            const auto there = after.find(of);
            if (there == after.end()) continue;
            const auto& others = there->second;
            if (onlyWhenAlone && (places.size() > 1 || others.size() > 1)) continue;
            for (Index i = 0; i < std::min(places.size(), others.size()); ++i) pair(places[i], others[i]);
        }
    }

    // A line that stands where it stood, of the same moment, with a title that nothing else there explains.
    void pairRenamed() {
        const auto titlesBefore = unpairedBefore(foldedTitle), titlesAfter = unpairedAfter(foldedTitle);
        for (auto i = begin_; i < endBefore_;) {
            if (found_[i]) {
                ++i;
                continue;
            }
            auto end = i;
            while (end < endBefore_ && !found_[end]) ++end;
            const auto there = i == begin_ ? begin_ : *found_[i - 1] + 1;
            const auto thereEnd = end == endBefore_ ? endAfter_ : *found_[end];
            if (thereEnd >= there && thereEnd - there == end - i && isFree(there, thereEnd)) {
                for (Index k = 0; k < end - i; ++k) pairIfRenamed(i + k, there + k, titlesBefore, titlesAfter);
            }
            i = end;
        }
    }

    bool isFree(Index begin, Index end) const {
        for (auto i = begin; i < end; ++i)
            if (taken_[i]) return false;
        return true;
    }

    void pairIfRenamed(Index before, Index after, const Places& titlesBefore, const Places& titlesAfter) {
        const auto &was = before_[before], &is = after_[after];
        if (was.when() != is.when() || titlesAfter.contains(foldedTitle(was)) || titlesBefore.contains(foldedTitle(is)))
            return;
        pair(before, after);
    }

    const Tasks &before_, &after_;
    Found found_;
    std::vector<bool> taken_; // of the later reading
    Index begin_ = 0, endBefore_ = 0, endAfter_ = 0;
};

}

Successors::Successors(const Tasks& before, const Tasks& after)
    : before_(before), after_(after), found_(Middle(before, after).find()) {}

const TaskItem* Successors::of(const TaskItem& earlier) const {
    const auto place = std::ranges::lower_bound(before_, earlier.line, {}, &TaskItem::line);
    if (place == before_.end() || place->line != earlier.line) return nullptr;
    const auto& found = found_[static_cast<Index>(place - before_.begin())];
    return found ? &after_[*found] : nullptr;
}

NewKeys Successors::newKeys() const {
    NewKeys keys;
    for (Index i = 0; i < before_.size(); ++i)
        if (found_[i] && before_[i].key != after_[*found_[i]].key) keys[before_[i].key] = after_[*found_[i]].key;
    return keys;
}

}
