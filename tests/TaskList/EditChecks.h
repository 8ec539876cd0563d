#pragma once

#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>

// What all edits hold to, whatever the text: checked by a fuzzer, and by the unit tests on random texts.
namespace tacla::testing {

// The texts agree but for some lines that went and came at one place: that line, or the first that differs.
inline bool agreeBut(std::string_view before, std::string_view after, std::ptrdiff_t gone, std::ptrdiff_t come,
                     std::optional<std::ptrdiff_t> line = {}) {
    auto old = dravel::split(before, "\n"), now = dravel::split(after, "\n");
    const auto place = line.value_or(std::ranges::mismatch(old, now).in1 - old.begin());
    if (std::ssize(old) < place + gone || std::ssize(now) < place + come) return false;
    old.erase(old.begin() + place, old.begin() + place + gone);
    now.erase(now.begin() + place, now.begin() + place + come);
    return old == now;
}

// Unchecking takes every "✅" part and opens a second box in the title, and what is appended to " ·" is no part of its
// own: elsewhere it restores the text.
inline bool uncheckingRestores(std::string_view text) {
    return text.find("✅") == text.npos && text.find("- [X]") == text.npos && text.find(" ·\n") == text.npos &&
           !text.ends_with(" ·");
}

// The edit that went wrong; "" when none did.
inline std::string wrongEdit(const std::string& text, std::string_view title, const TaskItem& task, Day today) {
    const auto same = [&](const auto& edited, std::ptrdiff_t left = 1) {
        return !edited || agreeBut(text, *edited, 1, left, task.line);
    };
    if (!same(TaskFile::reschedule(text, task.key, today, Clock{14, 30}, today))) return "reschedule";
    const auto renamed = TaskFile::rename(text, task.key, title);
    if (renamed && !agreeBut(text, renamed->text, 1, 1, task.line)) return "rename";
    if (renamed && renamed->keys != TaskFile::renamedKeys(text, renamed->text)) return "renamed keys";
    const auto done = TaskFile::setDone(text, task.key, !task.done, today);
    if (!same(done)) return "setDone";
    if (done && !task.done && uncheckingRestores(text) &&
        TaskFile::setDone(*done, task.key, false, today).value_or("") != text)
        return "setDone, and back";
    const auto removed = TaskFile::remove(text, task.key);
    return removed && (text.find('\n') == text.npos || same(removed, 0)) ? "" : "remove";
}

inline std::string wrongEdit(const std::string& text, std::string_view title, Day today) {
    const auto added = TaskFile::add(text, title, today, {}, false);
    const auto tasks = TaskFile::parse(text);
    if (!agreeBut(text, added, 0, 1) || TaskFile::parse(added).size() != tasks.size() + 1) return "add";
    for (const auto& task : tasks) {
        // Of two tasks with one key ("pain#2" may be written by hand) the first is meant.
        if (std::ranges::find(tasks, task.key, &TaskItem::key)->line != task.line) continue;
        if (auto wrong = wrongEdit(text, title, task, today); !wrong.empty()) return wrong + " " + task.title;
    }
    return "";
}

}
