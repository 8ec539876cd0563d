#include "Tacla/TaskList/TaskKeys.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskLines.h"

#include <bit>
#include <utility>

namespace tacla {

namespace {

std::uint64_t shortDigest(std::string_view text) {
    const auto digest = dravel::sha256(text);
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < 8; ++i) value = value << 8 | digest[i];
    return value;
}

std::string hexadecimal(std::uint64_t value) {
    std::string text(16, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4)
        *digit = "0123456789abcdef"[value & 15];
    return text;
}

}

std::string_view withoutStrongMark(std::string_view title) {
    while (title.starts_with(strongMark)) title.remove_prefix(strongMark.size());
    return dravel::trimmedOfWhiteSpaceAndLineBreaks(title);
}

std::uint64_t titleDigest(std::string_view title) { return shortDigest(dravel::lowerCased(withoutStrongMark(title))); }

std::string written(TaskKey key, std::string_view title) {
    if (key.nth == 1) return hexadecimal(key.digest);
    return TaskFile::hash(dravel::lowerCased(withoutStrongMark(title)) + "#" + std::to_string(key.nth));
}

std::vector<KeyedTitle> keyedTitles(std::string_view text) {
    std::vector<KeyedTitle> titles;
    TaskCounter counter(text.size() / usualTaskLength);
    std::size_t counted = 0;
    const auto countUpTo = [&](std::size_t end) {
        for (; counted < end; ++counted) titles[counted].key = counter.next(titles[counted].key.digest);
    };
    forEachTask(text, [&](const TaskLine& task) {
        titles.push_back({task.line, task.title, {titleDigest(task.title), 0}});
        counter.expect(titles.back().key.digest);
        if (titles.size() > TaskCounter::lead) countUpTo(titles.size() - TaskCounter::lead);
    });
    countUpTo(titles.size());
    return titles;
}

std::map<std::string, std::string> changedKeys(const std::vector<KeyedTitle>& before,
                                               const std::vector<KeyedTitle>& after) {
    std::map<std::string, std::string> changed;
    auto old = before.begin();
    for (const auto& task : after) {
        while (old != before.end() && old->line < task.line) ++old;
        if (old == before.end() || old->line != task.line || old->key == task.key) continue;
        auto oldKey = written(old->key, old->title), newKey = written(task.key, task.title);
        if (oldKey != newKey) changed[std::move(oldKey)] = std::move(newKey);
    }
    return changed;
}

TaskCounter::TaskCounter(std::size_t expectedTasks) : slots_(std::bit_ceil(expectedTasks + expectedTasks / 2 + 16)) {}

TaskKey TaskCounter::next(std::uint64_t digest) {
    if (digest != 0 && insert(digest)) return {digest, 1};
    const auto known = repeated_.try_emplace(digest, digest == 0 ? 0 : 1).first;
    return {digest, ++known->second};
}

bool TaskCounter::insert(std::uint64_t digest) {
    if (used_ + used_ / 3 >= slots_.size()) grow();
    const auto mask = slots_.size() - 1;
    auto at = digest & mask;
    while (slots_[at] != 0 && slots_[at] != digest) at = (at + 1) & mask;
    if (slots_[at] == digest) return false;
    slots_[at] = digest;
    ++used_;
    return true;
}

void TaskCounter::grow() {
    const auto old = std::exchange(slots_, std::vector<std::uint64_t>(slots_.size() * 2));
    used_ = 0;
    for (const auto digest : old)
        if (digest != 0) insert(digest);
}

std::string TaskFile::hash(std::string_view text) { return hexadecimal(shortDigest(text)); }

}
