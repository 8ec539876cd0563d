#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/main/Commands.h"
#include "Tacla/main/TaskFileAccess.h"
#include "Tacla/main/TaskSearch.h"

#include <algorithm>

namespace tacla {

namespace {

std::string joined(Arguments words) {
    std::string text;
    for (const auto& word : words) {
        if (&word != words.data()) text += ' ';
        text += word;
    }
    return text;
}

}

int checkTask(Arguments words, Terminal& terminal, const Environment& environment) {
    const TaskSearch search(joined(words));
    const auto file = environment.taskFile();
    const auto tasks = readTasks(file);
    if (!tasks) return terminal.fail(unreadable(file));
    const auto task =
        std::ranges::find_if(*tasks, [&](const TaskItem& one) { return !one.done && search.matches(one); });
    if (task == tasks->end()) return terminal.fail("aucune tâche ouverte ne contient « " + search.text() + " »");

    const auto edit = [&, today = Day::of(environment.now)](std::string_view text) {
        return TaskFile::setDone(text, task->key, true, today);
    };
    const auto refused = "impossible d'écrire " + file.string();
    if (const auto failure = failureOfEdit(file, edit, environment, refused)) return terminal.fail(*failure);
    terminal.print("✅ " + task->title);
    return EXIT_SUCCESS;
}

}
