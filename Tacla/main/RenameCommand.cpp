#include "Tacla/Preferences/NotifiedTasks.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/main/Commands.h"
#include "Tacla/main/TaskSearch.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tacla {

namespace {

using Keys = std::map<std::string, std::string>;

// Reminders already shown stay silent under the new keys.
void rekeyReminders(decltype(NotifiedTasks::rekeyed) rekeyed, const Keys& keys, const Environment& environment) {
    if (environment.preferences.notifiedTasks().empty()) return;
    environment.preferences.updateNotifiedTasks([&](const auto& notified) { return rekeyed(notified, keys); });
}

// The application may read the renamed file before this process comes to its next line.
void prepareReminders(const Keys& keys, const Environment& environment) {
    try {
        rekeyReminders(NotifiedTasks::underBothKeys, keys, environment);
    } catch (const dravel::FileError&) { // said once the file is renamed
    }
}

int syncRenamed(const Keys& keys, const Environment& environment) {
    const std::string option = renamedKeysOption;
    return environment.run(syncProgram, {&option, 1}, nlohmann::json(keys).dump());
}

// The file is renamed by now: what fails here is said, and does not keep the rest from being done.
int follow(const Keys& keys, Terminal& terminal, const Environment& environment) {
    int status = EXIT_SUCCESS;
    try {
        rekeyReminders(NotifiedTasks::rekeyed, keys, environment);
    } catch (const dravel::FileError& error) {
        status = terminal.fail(impossibleToWrite(error));
    }
    if (!environment.preferences.calendarSync()) return status;
    return std::max(status, syncRenamed(keys, environment));
}

}

int renameTask(Arguments textAndTitle, Terminal& terminal, const Environment& environment) {
    const TaskSearch search(textAndTitle[0]);
    TaskDocument document(environment.taskFile(), environment.folders);
    const auto tasks = document.readIfPossible();
    if (!tasks) return terminal.fail(unreadable(document.file()));
    const auto matches = [&](const TaskItem& one) { return search.matches(one); };
    const auto task = std::ranges::find_if(*tasks, matches);
    if (task == tasks->end()) return terminal.fail("aucune tâche ne contient « " + search.text() + " »");
    if (std::any_of(task + 1, tasks->end(), matches))
        return terminal.fail("plusieurs tâches contiennent « " + search.text() + " »");

    const auto refused = impossible("de renommer dans", document.file());
    const auto title = writableTitle(textAndTitle[1]);
    if (!title) return terminal.fail(refused);
    Keys keys;
    const auto edit = [&](std::string_view text) -> std::optional<std::string> {
        auto renamed = TaskFile::rename(text, task->key, *title);
        if (!renamed) return {};
        keys = std::move(renamed->keys);
        prepareReminders(keys, environment);
        return std::move(renamed->text);
    };
    if (const auto failure = document.failureOfEdit(whereStill(*task, edit), environment.now, refused))
        return terminal.fail(*failure);
    terminal.print("✏️ " + task->title + " → " + *title);
    return follow(keys, terminal, environment);
}

}
