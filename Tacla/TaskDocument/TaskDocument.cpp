#include "Tacla/TaskDocument/TaskDocument.h"

#include "DravelKit/Foundation/FileCopies.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace tacla {

namespace SafeFile = dravel::SafeFile;
using std::filesystem::path;
using Text = std::optional<std::string>;

namespace {

std::string naming(const std::string& what, const std::string& title) {
    const auto plain = TaskFile::dropStrongMark(title);
    return plain.empty() ? what : what + " : " + plain;
}

std::string keyAfter(const RenamedKeys::Map& renamed, const std::string& key) {
    const auto found = renamed.find(key);
    return found == renamed.end() ? key : found->second;
}

// None when neither the title nor the moment changes anything.
Text changed(std::string_view text, std::string key, const Text& title, std::optional<Day> day,
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

RenamedKeys::Map keysGivenBack(const SafeFile::Change& change) {
    // A task that was added or deleted shifts the lines below it, and renames none.
    if (std::ranges::count(change.before, '\n') != std::ranges::count(change.after, '\n')) return {};
    return TaskFile::renamedKeys(change.after, change.before);
}

}

path documentsTaskFile(const dravel::UserFolders& folders) { return folders.documents / "Tacla" / "taches.md"; }

path resolvedFile(const std::string& taclaFile, const Preferences& preferences, const dravel::UserFolders& folders) {
    if (!taclaFile.empty()) return std::filesystem::absolute(taclaFile);
    if (const auto chosen = preferences.taskFilePath(); chosen && !chosen->empty())
        return std::filesystem::absolute(*chosen);
    const auto earlier = folders.home / "quillo" / "taches.md";
    std::error_code unreachable;
    return std::filesystem::exists(earlier, unreachable) ? earlier : documentsTaskFile(folders);
}

path copiesFolder(const dravel::UserFolders& folders) { return folders.state / "Tacla" / "copies"; }

std::string impossible(std::string_view deed, const path& file) {
    return "impossible " + std::string(deed) + " " + file.string();
}

std::string impossible(std::string_view deed, const path& file, const dravel::FileError& error) {
    return impossible(deed, file) + " : " + error.description();
}

std::string impossibleToWrite(const dravel::FileError& error) { return impossible("d'écrire", error.path, error); }

std::string unreadable(const path& file) { return file.string() + " illisible"; }

std::string sentence(std::string words) {
    if (!words.empty() && words[0] >= 'a' && words[0] <= 'z') words[0] = static_cast<char>(words[0] - 'a' + 'A');
    return words;
}

// Whether a task that was seen is still that one.
bool isStill(const TaskItem& seen, const TaskItem& now) {
    return seen.key == now.key && seen.day == now.day && seen.time == now.time && seen.done == now.done;
}

UserEdit UserEdit::setDone(const std::string& key, const std::string& title, bool done, Day today) {
    return {naming(done ? "Tâche cochée" : "Tâche décochée", title),
            [=](std::string_view text) { return TaskFile::setDone(text, key, done, today); }};
}

UserEdit UserEdit::reschedule(const TaskItem& task, Day to, std::optional<Clock> time, Day today) {
    return {naming("Tâche reportée", task.title),
            [=, key = task.key](std::string_view text) { return TaskFile::reschedule(text, key, to, time, today); }};
}

UserEdit UserEdit::change(const TaskItem& task, const std::string& title, std::optional<Day> day,
                          std::optional<Clock> time, Day today) {
    const auto newTitle = writableTitle(title);
    TaskItem retitled = task;
    if (day) {
        retitled.day = day;
        retitled.time = time;
    }
    return {naming("Tâche modifiée", newTitle.value_or(task.title)),
            [=, key = task.key](std::string_view text) { return changed(text, key, newTitle, day, time, today); },
            std::move(retitled)};
}

UserEdit UserEdit::remove(const TaskItem& task) {
    return {naming("Tâche supprimée", task.title),
            [key = task.key](std::string_view text) { return TaskFile::remove(text, key); }};
}

std::optional<UserEdit> UserEdit::add(const std::string& title, Day day, std::optional<Clock> time, bool strong) {
    const auto newTitle = writableTitle(title);
    if (!newTitle) return {};
    return UserEdit{{}, [=](std::string_view text) { return Text(TaskFile::add(text, *newTitle, day, time, strong)); }};
}

UserEdit UserEdit::postpone(const Tasks& seen, Day to, Day today) {
    const auto count = std::to_string(seen.size());
    return {seen.size() == 1 ? naming("Tâche reportée", seen.front().title) : count + " tâches reportées",
            [=](std::string_view text) {
                std::map<std::string_view, const TaskItem*> wanted;
                for (const auto& task : seen) wanted[task.key] = &task;
                std::set<std::string> keys;
                for (const auto& task : TaskFile::parse(text)) {
                    const auto found = wanted.find(task.key);
                    if (found != wanted.end() && isStill(*found->second, task)) keys.insert(task.key);
                }
                return TaskFile::rescheduleAll(text, keys, to, today);
            }};
}

std::optional<UserEdit> UserEdit::addAll(std::vector<NewTask> tasks) {
    std::vector<NewTask> writable;
    for (auto& task : tasks)
        if (const auto title = writableTitle(task.title))
            writable.push_back({*title, task.day, task.time, task.strong});
    if (writable.empty()) return {};
    const auto count = std::to_string(writable.size());
    return UserEdit{writable.size() == 1 ? naming("Tâche ajoutée", writable.front().title) : count + " tâches ajoutées",
                    [writable = std::move(writable)](std::string_view text) {
                        std::string all(text);
                        for (const auto& task : writable)
                            all = TaskFile::add(all, task.title, task.day, task.time, task.strong);
                        return Text(std::move(all));
                    }};
}

TaskDocument::TaskDocument(path file, dravel::UserFolders folders)
    : file_(std::move(file)), folders_(std::move(folders)) {}

void TaskDocument::open(path file) {
    file_ = std::move(file);
    last_.reset();
}

void TaskDocument::createIfMissing(const path& file) { SafeFile::create(file, TaskFile::newFileText); }

Tasks TaskDocument::read() {
    // The time is taken before the text: a save between the two is then read twice rather than never.
    const auto stamp = onDisk();
    unreadable_ = true;
    const auto text = SafeFile::readText(file_);
    unreadable_ = false;
    lastRead_ = stamp;
    return TaskFile::parse(text);
}

std::optional<Tasks> TaskDocument::readIfPossible() {
    try {
        return read();
    } catch (const dravel::FileError&) {
        return std::nullopt;
    }
}

void TaskDocument::readByLines(const std::function<void(std::string_view)>& take) const {
    SafeFile::readByLines(file_, take);
}

std::optional<TaskDocument::Change> TaskDocument::save(const SafeFile::Edit& edit, Instant now) const {
    std::optional<path> copy;
    const auto dropCopy = [&copy] {
        std::error_code ignored;
        if (copy) std::filesystem::remove(*std::exchange(copy, {}), ignored);
    };
    const SafeFile::Edit keeping = [&](std::string_view text) {
        auto after = edit(text);
        dropCopy(); // of a text that an editor replaced meanwhile
        if (after && *after != text) copy = dravel::FileCopies::keep(copiesFolder(folders_), file_, text, now);
        return after;
    };
    try {
        return SafeFile::edit(file_, keeping, folders_.locks);
    } catch (const dravel::FileError&) {
        if (!copy) throw;
        dropCopy(); // it may have taken the room that the new text needs
        return SafeFile::edit(file_, edit, folders_.locks);
    }
}

const TaskDocument::Change* TaskDocument::edit(const SafeFile::Edit& edit, Instant now) {
    auto change = save(edit, now);
    if (!change) return nullptr;
    last_ = std::move(change);
    return &*last_;
}

std::optional<std::string> TaskDocument::failureOfEdit(const SafeFile::Edit& change, Instant now, std::string refused) {
    try {
        if (edit(change, now) != nullptr) return {};
        return refused;
    } catch (const dravel::FileError&) {
        return readIfPossible() ? refused : unreadable(file_);
    }
}

TaskDocument::Undone TaskDocument::undo(Instant now) {
    const auto restore = [this](std::string_view text) { return text == last_->after ? Text(last_->before) : Text(); };
    const bool restored = save(restore, now).has_value();
    Undone result{.changedSince = !restored, .change = std::move(*std::exchange(last_, {})), .keys = {}};
    if (!restored) return result;
    result.keys = keysGivenBack(result.change);
    renamed_.remember(result.keys);
    return result;
}

TaskDocument::Keys TaskDocument::follow(const Change& change) {
    auto keys = TaskFile::renamedKeys(change.before, change.after);
    renamed_.remember(keys);
    return keys;
}

void TaskDocument::pruneCopies(Instant now) const { dravel::FileCopies::prune(copiesFolder(folders_), now); }

}
