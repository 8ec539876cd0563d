#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/TaskList/TaskLines.h"
#include "Tacla/main/Commands.h"

namespace tacla {

namespace {

void show(const TaskLine& task, bool late, std::string& shown) {
    shown.append(late ? "🔴 " : "🟡 ").append(task.title).append(separator).append(whenText(*task.day, task.time));
    if (task.due) shown.append(" (due le ").append(task.due->description()).append(")");
    shown += '\n';
}

}

int listTasks(Arguments, Terminal& terminal, const Environment& environment) {
    const TaskDocument document(environment.taskFile(), environment.folders);
    const auto today = Day::of(environment.now);
    const auto clock = Clock::of(environment.now);
    std::string shown;
    const auto showTask = [&](const TaskLine& task) {
        if (task.done || !task.day || *task.day > today) return;
        show(task, *task.day < today || (task.time && *task.time < clock), shown);
    };
    try {
        document.readByLines([&](std::string_view lines) { forEachTask(lines, showTask); });
    } catch (const dravel::FileError&) {
        return terminal.fail(unreadable(document.file()));
    }
    terminal.output += shown;
    return EXIT_SUCCESS;
}

}
