#include "Tacla/AppModel/AppModel.h"
#include "Tacla/AppModel/AppModelInside.h"
#include "Tacla/AppModel/Undo.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>

namespace tacla {

namespace {

using namespace std::chrono_literals;
using Text = std::optional<std::string>;

namespace SafeFile = dravel::SafeFile;

constexpr auto syncDelayAfterEdit = 500ms;
constexpr auto undoBarTime = 10s;

std::string said(const std::string& what, const std::string& title) {
    const auto plain = TaskFile::dropStrongMark(title);
    return plain.empty() ? what : what + " : " + plain;
}

std::string keyAfter(const std::map<std::string, std::string>& renamed, const std::string& key) {
    const auto found = renamed.find(key);
    return found == renamed.end() ? key : found->second;
}

// The new title, then the new moment. None when neither changes anything.
Text edited(std::string_view text, std::string key, const std::optional<std::string>& title, std::optional<Day> day,
            std::optional<Clock> time, Day today) {
    Text result;
    if (title) {
        if (auto renamed = TaskFile::rename(text, key, *title)) {
            key = keyAfter(renamed->keys, key);
            result = std::move(renamed->text);
        }
    }
    if (!day) return result;
    auto rescheduled = TaskFile::reschedule(result ? *result : text, key, *day, time, today);
    return rescheduled ? rescheduled : result;
}

}

std::optional<TaskItem> AppModel::Inside::find(const std::string& key) const {
    const auto found = std::ranges::find(state.tasks, key, &TaskItem::key);
    return found == state.tasks.end() ? std::nullopt : std::optional(*found);
}

std::optional<SafeFile::Change> AppModel::Inside::write(const SafeFile::Edit& change) {
    try {
        return file.edit(change, now());
    } catch (const dravel::FileError& error) {
        state.fileError = writeFailure(file.path(), error);
        model.changed();
        return {};
    }
}

void AppModel::Inside::written() {
    model.reload();
    scheduleSync(syncDelayAfterEdit);
}

void AppModel::Inside::mutate(std::optional<std::string> what, const SafeFile::Edit& change,
                              const std::function<void(const SafeFile::Change&)>& then) {
    auto done = write(change);
    if (!done) return;
    if (then) then(*done);
    lastChange = std::move(done);
    show(what ? std::optional(UndoBar{std::move(*what), true}) : std::nullopt);
    written();
}

void AppModel::Inside::follow(const std::map<std::string, std::string>& keys) {
    if (keys.empty()) return;
    renamed.remember(keys);
    if (reminders) reminders->rekey(keys);
}

void AppModel::Inside::show(std::optional<UndoBar> bar) {
    state.undoBar = std::move(bar);
    undoBarEnd = {};
    if (!state.undoBar) return;
    undoBarEnd = world.loop.after(undoBarTime, [this] {
        state.undoBar.reset();
        model.changed();
    });
}

void AppModel::Inside::forgetLastChange() {
    lastChange.reset();
    show({});
}

void AppModel::undo() {
    auto& in = *inside_;
    if (!in.lastChange) return;
    bool changedSince = false;
    const auto restored = in.write([&](std::string_view text) {
        auto before = undone(*in.lastChange, text);
        changedSince = !before;
        return before;
    });
    if (!restored && !changedSince) return; // could not be written: may be tried again
    const auto change = std::move(*in.lastChange);
    in.forgetLastChange();
    if (changedSince) {
        in.show(UndoBar{"Le fichier a changé depuis : rien n'a été annulé.", false});
        return changed();
    }
    in.follow(keysGivenBack(change));
    if (in.reminders)
        for (const auto& task : remindersGivenBack(change)) in.reminders->skipIfPast(task, in.now());
    in.written();
}

bool AppModel::canUndo() const { return inside_->lastChange.has_value(); }

void AppModel::toggle(const TaskItem& task) {
    inside_->mutate(said(task.done ? "Tâche décochée" : "Tâche cochée", task.title), [&](std::string_view text) {
        return TaskFile::setDone(text, task.key, !task.done, inside_->today());
    });
}

void AppModel::setDone(const std::string& key) {
    auto& in = *inside_;
    const auto latest = in.renamed.latest(key);
    const auto task = in.find(latest);
    in.mutate(said("Tâche cochée", task ? task->title : std::string()),
              [&](std::string_view text) { return TaskFile::setDone(text, latest, true, in.today()); });
}

void AppModel::reschedule(const TaskItem& task, Day to, std::optional<Clock> time) {
    inside_->mutate(said("Tâche reportée", task.title), [&](std::string_view text) {
        return TaskFile::reschedule(text, task.key, to, time, inside_->today());
    });
}

void AppModel::reschedule(const std::string& key, Day to) {
    if (const auto task = inside_->find(inside_->renamed.latest(key))) reschedule(*task, to, task->time);
}

void AppModel::edit(const TaskItem& task, const std::string& title, std::optional<Day> day, std::optional<Clock> time) {
    auto& in = *inside_;
    const TaskItem before = task;
    const auto newTitle = writableTitle(title);
    in.mutate(
        said("Tâche modifiée", newTitle.value_or(before.title)),
        [&](std::string_view text) { return edited(text, before.key, newTitle, day, time, in.today()); },
        [&](const SafeFile::Change& change) {
            const auto keys = TaskFile::renamedKeys(change.before, change.after);
            in.follow(keys);
            if (!in.reminders) return;
            TaskItem after = before;
            after.key = keyAfter(keys, before.key);
            if (day) {
                after.day = day;
                after.time = time;
            }
            in.reminders->skipIfPast(after, in.now());
        });
}

void AppModel::remove(const TaskItem& task) {
    inside_->mutate(said("Tâche supprimée", task.title),
                    [&](std::string_view text) { return TaskFile::remove(text, task.key); });
}

void AppModel::add(const std::string& title, std::optional<Day> day, std::optional<Clock> time, bool strong) {
    const auto written = writableTitle(title);
    if (!written) return;
    inside_->mutate({}, [&](std::string_view text) -> Text {
        return TaskFile::add(text, *written, day.value_or(inside_->today()), time, strong);
    });
}

}
