#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <cstdlib>

using namespace tacla;

namespace {

constexpr Day today{2025, 3, 5};

void require(bool holds) {
    if (!holds) std::abort();
}

std::size_t lineCount(std::string_view text) { return static_cast<std::size_t>(std::ranges::count(text, '\n')); }

// Everything before and after that line is the same in both texts.
void requireSameAround(std::string_view before, std::string_view after, std::int64_t line) {
    auto old = dravel::split(before, "\n"), now = dravel::split(after, "\n");
    require(old.size() == now.size());
    old.erase(old.begin() + line);
    now.erase(now.begin() + line);
    require(old == now);
}

// Unchecking takes every "✅" part and opens a second box in the title, and what is appended to " ·" is no part of its
// own: elsewhere it restores the text.
bool uncheckingRestores(std::string_view text) {
    return text.find("✅") == text.npos && text.find("- [X]") == text.npos && text.find(" ·\n") == text.npos &&
           !text.ends_with(" ·");
}

void editEverything(const std::string& text) {
    require(lineCount(TaskFile::add(text, "Pain", today, Clock{9, 5}, true)) == lineCount(text) + 1);
    const auto tasks = TaskFile::parse(text);
    for (const auto& task : tasks) {
        // Of two tasks with one key the first is meant.
        if (std::ranges::find(tasks, task.key, &TaskItem::key)->line != task.line) continue;
        if (const auto edited = TaskFile::setDone(text, task.key, !task.done, today))
            requireSameAround(text, *edited, task.line);
        if (const auto edited = TaskFile::reschedule(text, task.key, today, {}, today))
            requireSameAround(text, *edited, task.line);
        if (const auto edited = TaskFile::rename(text, task.key, "Pain")) {
            requireSameAround(text, edited->text, task.line);
            require(edited->keys == TaskFile::renamedKeys(text, edited->text));
        }
        if (!task.done && uncheckingRestores(text))
            if (const auto edited = TaskFile::setDone(text, task.key, true, today))
                require(dravel::isValidUtf8(*edited) && TaskFile::setDone(*edited, task.key, false, today) == text);
        require(TaskFile::remove(text, task.key).has_value());
    }
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (dravel::isValidUtf8(text)) editEverything(text);
    return 0;
}
