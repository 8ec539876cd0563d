#include "Tacla/TaskList/TaskKeys.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskLines.h"

#include <bit>

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
    TaskCounter counter(text.size() / 48);
    forEachTask(text, [&](const TaskLine& task) {
        titles.push_back({task.line, task.title, counter.next(titleDigest(task.title))});
    });
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

TaskCounter::TaskCounter(std::size_t expectedTasks) : slots_(std::bit_ceil(expectedTasks * 2 + 16)) {}

TaskKey TaskCounter::next(std::uint64_t digest) {
    if (used_ * 2 >= slots_.size()) grow();
    auto& entry = slot(digest);
    if (entry.count == 0) {
        entry.digest = digest;
        ++used_;
    }
    return {digest, ++entry.count};
}

TaskCounter::Slot& TaskCounter::slot(std::uint64_t digest) {
    auto at = digest & (slots_.size() - 1);
    while (slots_[at].count != 0 && slots_[at].digest != digest) at = (at + 1) & (slots_.size() - 1);
    return slots_[at];
}

void TaskCounter::grow() {
    auto old = std::move(slots_);
    slots_ = std::vector<Slot>(old.size() * 2);
    for (const auto& entry : old)
        if (entry.count != 0) slot(entry.digest) = entry;
}

std::string TaskFile::hash(std::string_view text) { return hexadecimal(shortDigest(text)); }

}
