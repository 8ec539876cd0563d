#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/main/Commands.h"
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
    TaskDocument document(environment.taskFile(), environment.folders);
    const auto tasks = document.readIfPossible();
    if (!tasks) return terminal.fail(unreadable(document.file()));
    const auto task =
        std::ranges::find_if(*tasks, [&](const TaskItem& one) { return !one.done && search.matches(one); });
    if (task == tasks->end()) return terminal.fail("aucune tâche ouverte ne contient « " + search.text() + " »");

    const auto edit = UserEdit::setDone(*task, true, Day::of(environment.now));
    const auto refused = impossible("d'écrire", document.file());
    if (const auto failure = document.failureOfEdit(edit.apply, environment.now, refused))
        return terminal.fail(*failure);
    terminal.print("✅ " + task->title);
    return EXIT_SUCCESS;
}

}
