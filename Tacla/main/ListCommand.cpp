#include "DravelKit/Foundation/SafeFile.h"
#include "Tacla/TaskList/TaskLines.h"
#include "Tacla/main/Commands.h"

namespace tacla {

namespace {

void printTask(const TaskLine& task, bool late, Terminal& terminal) {
    terminal.output.append(late ? "🔴 " : "🟡 ").append(task.title).append(separator);
    terminal.output.append(written(*task.day, task.time));
    if (task.due) terminal.output.append(" (due le ").append(task.due->description()).append(")");
    terminal.output += '\n';
}

}

int listTasks(Arguments, Terminal& terminal, const Environment& environment) {
    const auto file = environment.taskFile();
    std::string text;
    try {
        text = dravel::SafeFile::readText(file);
    } catch (const dravel::FileError&) {
        return terminal.fail(file.string() + " illisible");
    }
    const auto today = Day::of(environment.now);
    const auto clock = Clock::of(environment.now);
    forEachTask(text, [&](const TaskLine& task) {
        if (task.done || !task.day || *task.day > today) return;
        printTask(task, *task.day < today || (task.time && *task.time < clock), terminal);
    });
    return EXIT_SUCCESS;
}

}
