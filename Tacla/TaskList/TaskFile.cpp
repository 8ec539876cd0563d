#include "Tacla/TaskList/TaskFile.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskLines.h"

#include <unordered_map>

namespace tacla::TaskFile {

namespace {

// Gives each task its key, in line order: the n-th task of one title gets "#n" behind it.
class Keys {
  public:
    std::string of(std::string_view title) {
        auto base = dravel::lowerCased(dropStrongMark(title));
        const auto [entry, isNew] = counts_.try_emplace(base, 0);
        if (const auto n = ++entry->second; n > 1) base += "#" + std::to_string(n);
        return hash(base);
    }

  private:
    std::unordered_map<std::string, int> counts_;
};

}

std::vector<TaskItem> parse(std::string_view text) {
    std::vector<TaskItem> tasks;
    Keys keys;
    forEachTask(text, [&](const TaskLine& task) {
        tasks.push_back({task.line, task.done, std::string(task.title), task.day, task.time, task.due, task.doneOn,
                         keys.of(task.title)});
    });
    return tasks;
}

std::string hash(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto digest = dravel::sha256(text);
    std::string key(16, '0');
    for (std::size_t i = 0; i < 8; ++i) {
        key[2 * i] = digits[digest[i] >> 4];
        key[2 * i + 1] = digits[digest[i] & 15];
    }
    return key;
}

std::string dropStrongMark(std::string_view title) {
    while (title.starts_with(strongMark)) title.remove_prefix(strongMark.size());
    return std::string(dravel::trimmedOfWhiteSpaceAndLineBreaks(title));
}

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
