#include "Tacla/TaskList/TaskFile.h"

#include "Tacla/TaskList/TaskKeys.h"
#include "Tacla/TaskList/TaskLines.h"

namespace tacla::TaskFile {

std::vector<TaskItem> parse(std::string_view text) {
    const auto expected = text.size() / usualTaskLength;
    std::vector<TaskItem> tasks;
    std::vector<std::uint64_t> digests;
    tasks.reserve(expected);
    digests.reserve(expected);
    TaskCounter counter(expected);
    std::size_t keyed = 0;
    const auto keyUpTo = [&](std::size_t end) {
        for (; keyed < end; ++keyed) tasks[keyed].key = written(counter.next(digests[keyed]), tasks[keyed].title);
    };
    forEachTask(text, [&](const TaskLine& task) {
        tasks.push_back(
            {task.line, task.done, std::string(task.title), task.day, task.time, task.due, task.doneOn, {}});
        counter.expect(digests.emplace_back(titleDigest(task.title)));
        if (tasks.size() > TaskCounter::lead) keyUpTo(tasks.size() - TaskCounter::lead);
    });
    keyUpTo(tasks.size());
    return tasks;
}

std::string dropStrongMark(std::string_view title) { return std::string(withoutStrongMark(title)); }

std::map<std::string, std::string> renamedKeys(std::string_view from, std::string_view to) {
    return changedKeys(keyedTitles(from), keyedTitles(to));
}

}
