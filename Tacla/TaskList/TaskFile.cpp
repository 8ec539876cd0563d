#include "Tacla/TaskList/TaskFile.h"

#include "Tacla/TaskList/TaskKeys.h"
#include "Tacla/TaskList/TaskLines.h"

namespace tacla::TaskFile {

std::vector<TaskItem> parse(std::string_view text) {
    // Half of the lines being tasks of some 40 bytes is a usual file; both containers grow when it is not.
    const auto expected = text.size() / 48;
    std::vector<TaskItem> tasks;
    tasks.reserve(expected);
    TaskCounter counter(expected);
    forEachTask(text, [&](const TaskLine& task) {
        const auto key = counter.next(titleDigest(task.title));
        tasks.push_back({task.line, task.done, std::string(task.title), task.day, task.time, task.due, task.doneOn,
                         written(key, task.title)});
    });
    return tasks;
}

std::string dropStrongMark(std::string_view title) { return std::string(withoutStrongMark(title)); }

std::map<std::string, std::string> renamedKeys(std::string_view from, std::string_view to) {
    return changedKeys(keyedTitles(from), keyedTitles(to));
}

}
