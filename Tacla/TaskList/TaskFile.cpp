#include "Tacla/TaskList/TaskFile.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <unordered_map>

namespace tacla::TaskFile {

namespace {

std::string_view withoutStrongMark(std::string_view title) {
    while (title.starts_with(strongMark)) title.remove_prefix(strongMark.size());
    return dravel::trimmedOfWhiteSpaceAndLineBreaks(title);
}

// The first 8 bytes of the digest.
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

// Gives each task its key, in line order: the n-th task of one title gets "#n" behind it. Titles are counted by the key
// that they would have alone.
class Keys {
  public:
    explicit Keys(std::size_t expected) { counts_.reserve(expected); }

    std::string of(std::string_view title) {
        const auto base = dravel::lowerCased(withoutStrongMark(title));
        const auto digest = shortDigest(base);
        const auto n = ++counts_[digest];
        return n == 1 ? hexadecimal(digest) : hash(base + "#" + std::to_string(n));
    }

  private:
    std::unordered_map<std::uint64_t, int> counts_;
};

}

std::vector<TaskItem> parse(std::string_view text) {
    std::vector<TaskItem> tasks;
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    tasks.reserve(lines);
    Keys keys(lines);
    forEachTask(text, [&](const TaskLine& task) {
        tasks.push_back({task.line, task.done, std::string(task.title), task.day, task.time, task.due, task.doneOn,
                         keys.of(task.title)});
    });
    return tasks;
}

std::string hash(std::string_view text) { return hexadecimal(shortDigest(text)); }

std::string dropStrongMark(std::string_view title) { return std::string(withoutStrongMark(title)); }

std::map<std::string, std::string> renamedKeys(std::string_view from, std::string_view to) {
    std::unordered_map<std::int64_t, std::string> before;
    for (auto& task : parse(from)) before.emplace(task.line, std::move(task.key));
    std::map<std::string, std::string> renamed;
    for (auto& task : parse(to)) {
        const auto old = before.find(task.line);
        if (old != before.end() && old->second != task.key) renamed[old->second] = std::move(task.key);
    }
    return renamed;
}

}
