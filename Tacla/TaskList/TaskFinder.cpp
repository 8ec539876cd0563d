#include "Tacla/TaskList/TaskFinder.h"

#include "DravelKit/Foundation/Text.h"

#include <algorithm>

namespace tacla {

namespace {

// Ranges that overlap or touch become one.
void join(std::vector<TextRange>& ranges) {
    std::ranges::sort(ranges, {}, &TextRange::begin);
    std::size_t kept = 0;
    for (const auto& range : ranges) {
        if (kept > 0 && range.begin <= ranges[kept - 1].end)
            ranges[kept - 1].end = std::max(ranges[kept - 1].end, range.end);
        else
            ranges[kept++] = range;
    }
    ranges.resize(kept);
}

}

SoughtWords::SoughtWords(std::string_view typed) {
    if (!dravel::isValidUtf8(typed)) return;
    const auto text = dravel::folded(typed);
    for (const auto word : dravel::split(text, " ", false)) words_.emplace_back(word);
}

bool SoughtWords::standIn(std::string_view foldedTitle) const {
    const auto stands = [&](const std::string& word) { return foldedTitle.find(word) != foldedTitle.npos; };
    return !words_.empty() && std::ranges::all_of(words_, stands);
}

std::vector<TextRange> SoughtWords::rangesIn(std::string_view title) const {
    const auto text = dravel::foldedWithSources(title);
    std::vector<TextRange> ranges;
    for (const auto& word : words_)
        for (auto at = text.text.find(word); at != text.text.npos; at = text.text.find(word, at + 1))
            ranges.push_back(text.source({at, at + word.size()}));
    join(ranges);
    return ranges;
}

TaskFinder::TaskFinder(const TaskList& tasks) {
    ends_.reserve(tasks.size());
    done_.reserve(tasks.size());
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        folded_ += dravel::folded(tasks.title(i));
        ends_.push_back(folded_.size());
        done_.push_back(tasks.brief(i).done);
    }
}

Places TaskFinder::find(std::string_view typed) const {
    const SoughtWords words(typed);
    Places open, done;
    std::size_t begin = 0;
    for (Place place = 0; const auto end : ends_) {
        if (words.standIn(std::string_view(folded_).substr(begin, end - begin)))
            (done_[place] ? done : open).push_back(place);
        begin = end;
        ++place;
    }
    open.insert(open.end(), done.begin(), done.end());
    return open;
}

Places firstFound(const TaskList& tasks, std::string_view typed, std::size_t most) {
    const SoughtWords words(typed);
    Places found;
    for (Place place = 0; place < tasks.size() && found.size() < most; ++place)
        if (!tasks.brief(place).done && words.standIn(dravel::folded(tasks.title(place)))) found.push_back(place);
    return found;
}

}
