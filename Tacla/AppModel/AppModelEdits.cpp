#include "Tacla/AppModel/AppModel.h"
#include "Tacla/AppModel/AppModelInside.h"
#include "Tacla/AppModel/TitleRule.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>

namespace tacla {

namespace {

using namespace std::chrono_literals;
using Text = std::optional<std::string>;

constexpr auto syncDelayAfterEdit = 500ms;

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

void AppModel::Inside::mutate(const dravel::SafeFile::Edit& change,
                              const std::function<void(const dravel::SafeFile::Change&)>& then) {
    try {
        const auto written = file.edit(change);
        if (!written) return;
        if (then) then(*written);
    } catch (const dravel::FileError& error) {
        state.fileError = writeFailure(file.path(), error);
        model.changed();
        return;
    }
    model.reload();
    scheduleSync(syncDelayAfterEdit);
}

void AppModel::toggle(const TaskItem& task) {
    inside_->mutate(
        [&](std::string_view text) { return TaskFile::setDone(text, task.key, !task.done, inside_->today()); });
}

void AppModel::setDone(const std::string& key) {
    const auto latest = inside_->renamed.latest(key);
    inside_->mutate([&](std::string_view text) { return TaskFile::setDone(text, latest, true, inside_->today()); });
}

void AppModel::reschedule(const TaskItem& task, Day to, std::optional<Clock> time) {
    inside_->mutate(
        [&](std::string_view text) { return TaskFile::reschedule(text, task.key, to, time, inside_->today()); });
}

void AppModel::reschedule(const std::string& key, Day to) {
    const auto latest = inside_->renamed.latest(key);
    const auto& tasks = inside_->state.tasks;
    const auto found = std::ranges::find(tasks, latest, &TaskItem::key);
    if (found != tasks.end()) reschedule(*found, to, found->time);
}

void AppModel::edit(const TaskItem& task, const std::string& title, std::optional<Day> day, std::optional<Clock> time) {
    auto& in = *inside_;
    const TaskItem before = task;
    const auto newTitle = writableTitle(title);
    in.mutate([&](std::string_view text) { return edited(text, before.key, newTitle, day, time, in.today()); },
              [&](const dravel::SafeFile::Change& change) {
                  const auto keys = TaskFile::renamedKeys(change.before, change.after);
                  if (!keys.empty()) in.renamed.remember(keys);
                  if (!in.reminders) return;
                  if (!keys.empty()) in.reminders->rekey(keys);
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
    inside_->mutate([&](std::string_view text) { return TaskFile::remove(text, task.key); });
}

void AppModel::add(const std::string& title, std::optional<Day> day, std::optional<Clock> time, bool strong) {
    const auto written = writableTitle(title);
    if (!written) return;
    inside_->mutate([&](std::string_view text) -> Text {
        return TaskFile::add(text, *written, day.value_or(inside_->today()), time, strong);
    });
}

}
