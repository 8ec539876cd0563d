#include "Tacla/TaskDocument/TaskDocument.h"

#include "DravelKit/Foundation/FileCopies.h"
#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/Labels.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace tacla {

namespace SafeFile = dravel::SafeFile;
using std::filesystem::path;
using Text = std::optional<std::string>;

namespace {

std::string naming(const std::string& what, const std::string& title) {
    const auto plain = menuLabel(drawnTitle(title));
    return plain.empty() ? what : what + " : " + plain;
}

std::string keyAfter(const RenamedKeys::Map& renamed, const std::string& key) {
    const auto found = renamed.find(key);
    return found == renamed.end() ? key : found->second;
}

// As it is in a folder that somebody has deleted: no file is found there.
path fromHere(const path& file) {
    std::error_code gone;
    const auto absolute = std::filesystem::absolute(file, gone);
    return gone ? file : absolute;
}

// The carriage return is a part of the line's last part, which then says nothing.
std::size_t countUnreadDates(std::string_view text) {
    if (text.find('\r') == text.npos) return 0;
    return static_cast<std::size_t>(std::ranges::count_if(dravel::split(text, "\n"), [](std::string_view line) {
        if (!line.ends_with('\r')) return false;
        const auto read = readTaskLine(line, 0), meant = readTaskLine(line.substr(0, line.size() - 1), 0);
        return read.isTask() && (read.day != meant.day || read.time != meant.time || read.due != meant.due ||
                                 read.doneOn != meant.doneOn);
    }));
}

// None when neither the title nor the moment changes anything.
Text changed(std::string_view text, std::string key, const TaskChange& change, Day today) {
    Text result;
    if (change.title) {
        if (auto renamed = TaskFile::rename(text, key, *change.title)) {
            key = keyAfter(renamed->keys, key);
            result = std::move(renamed->text);
        }
    }
    if (!change.day && !change.time) return result;
    const std::string_view retitled = result ? *result : text;
    const auto task = TaskFile::find(retitled, key);
    if (!task) return {};
    auto rescheduled = TaskFile::reschedule(retitled, key, change.day.value_or(task->day.value_or(today)),
                                            change.time.value_or(task->time), today);
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
    if (!taclaFile.empty()) return fromHere(taclaFile);
    if (const auto chosen = preferences.taskFilePath(); chosen && !chosen->empty()) return fromHere(*chosen);
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

bool isStill(const TaskItem& seen, const TaskItem& now) {
    if (seen.key != now.key) return false;
    const auto marks = [](const TaskItem& task) { return std::tie(task.day, task.time, task.done); };
    return marks(seen) == marks(now) || (seen.alone && now.alone);
}

bool isIn(const TaskList& tasks, const TaskItem& seen) {
    const auto place = tasks.find(seen.key);
    return place && isStill(seen, tasks.drawn(*place));
}

SafeFile::Edit whereStill(const TaskItem& seen, SafeFile::Edit edit) {
    return [=, edit = std::move(edit)](std::string_view text) {
        const auto now = TaskFile::find(text, seen.key);
        return now && isStill(seen, *now) ? edit(text) : Text();
    };
}

UserEdit UserEdit::setDone(const TaskItem& task, bool done, Day today) {
    return {naming(done ? "Tâche cochée" : "Tâche décochée", task.title),
            whereStill(task, [=, key = task.key](std::string_view text) {
                return TaskFile::setDone(text, key, done, today);
            })};
}

UserEdit UserEdit::reschedule(const TaskItem& task, Day to, std::optional<Clock> time, Day today) {
    return {naming("Tâche reportée", task.title), whereStill(task, [=, key = task.key](std::string_view text) {
                return TaskFile::reschedule(text, key, to, time, today);
            })};
}

UserEdit UserEdit::change(const TaskItem& task, const TaskChange& asked, Day today) {
    auto change = asked;
    if (change.title) change.title = writableTitle(*change.title);
    return {naming("Tâche modifiée", change.title.value_or(task.title)),
            whereStill(task, [=, key = task.key](std::string_view text) { return changed(text, key, change, today); }),
            task.key};
}

UserEdit UserEdit::remove(const TaskItem& task) {
    return {naming("Tâche supprimée", task.title),
            whereStill(task, [key = task.key](std::string_view text) { return TaskFile::remove(text, key); })};
}

UndoStep::UndoStep(const SafeFile::Change& change) : left_(dravel::sha256(change.after)) {
    const auto &before = change.before, &after = change.after;
    const auto shorter = std::min(before.size(), after.size());
    at_ = static_cast<std::size_t>(
        std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shorter), after.begin()).first -
        before.begin());
    std::size_t same = 0; // at the end
    while (same < shorter - at_ && before[before.size() - 1 - same] == after[after.size() - 1 - same]) ++same;
    before_ = before.substr(at_, before.size() - at_ - same);
    after_ = after.substr(at_, after.size() - at_ - same);
}

Text UndoStep::takenBackFrom(std::string_view text) const {
    if (dravel::sha256(text) != left_) return {};
    return std::string(text.substr(0, at_)) + before_ + std::string(text.substr(at_ + after_.size()));
}

UserEdit UserEdit::plainLineEnds() {
    return {"Fins de ligne converties", [](std::string_view text) {
                auto plain = dravel::replacedAll(text, "\r\n", "\n");
                if (plain.ends_with('\r')) plain.pop_back();
                return Text(std::move(plain));
            }};
}

// An editor's save in between is not what the user wants to give up.
UserEdit UserEdit::bringBack(std::string copy) {
    return {"Copie de la liste rétablie", [copy = std::move(copy), seen = Text()](std::string_view text) mutable {
                if (!seen) seen = text;
                return *seen == text ? Text(copy) : Text();
            }};
}

UserEdit UserEdit::postpone(const TaskSelection& seen, Day to, Day today) {
    const auto count = std::to_string(seen.size());
    return {seen.size() == 1 ? naming("Tâche reportée", seen[0].title) : count + " tâches reportées",
            [=](std::string_view text) {
                std::map<KeyNumber, std::size_t> wanted;
                for (std::size_t i = 0; i < seen.size(); ++i) wanted[seen.key(i)] = i;
                std::set<KeyNumber> keys;
                const TaskList now{std::string(text)};
                for (std::size_t i = 0; i < now.size(); ++i) {
                    const auto found = wanted.find(now.key(i));
                    if (found != wanted.end() && isStill(seen[found->second], now.drawn(i))) keys.insert(now.key(i));
                }
                return TaskFile::rescheduleAll(text, keys, to, today);
            }};
}

std::optional<UserEdit> UserEdit::add(const std::vector<NewTask>& tasks, std::string saidOfOne) {
    std::vector<NewTask> writable;
    for (const auto& task : tasks)
        if (const auto title = writableTitle(task.title))
            writable.push_back({*title, task.day, task.time, task.strong});
    if (writable.empty()) return {};
    const auto count = std::to_string(writable.size());
    return UserEdit{writable.size() == 1 ? std::move(saidOfOne) : count + " tâches ajoutées",
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
    tasks_ = {};
    steps_.clear();
}

void TaskDocument::createIfMissing(const path& file) { SafeFile::create(file, TaskFile::newFileText); }

std::string TaskDocument::readText() {
    // The time is taken before the text: a save between the two is then read twice rather than never.
    const auto stamp = onDisk();
    unreadable_ = true;
    auto text = SafeFile::readText(file_);
    unreadable_ = false;
    lastRead_ = stamp;
    unreadDates_ = countUnreadDates(text);
    return text;
}

TaskList TaskDocument::read() {
    TaskList tasks(readText());
    if (!(tasks == tasks_)) tasks_ = std::move(tasks); // else what is shown stays, and is there once
    return tasks_;
}

std::optional<Tasks> TaskDocument::readIfPossible() {
    try {
        return TaskFile::parse(readText());
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

std::optional<TaskDocument::Change> TaskDocument::edit(const SafeFile::Edit& edit, Instant now) {
    auto change = save(edit, now);
    if (!change) return {};
    steps_.emplace_back(*change);
    if (steps_.size() > undoLevels) steps_.pop_front();
    return change;
}

std::optional<std::string> TaskDocument::failureOfEdit(const SafeFile::Edit& change, Instant now, std::string refused) {
    try {
        if (edit(change, now)) return {};
        return refused;
    } catch (const dravel::FileError&) {
        return readIfPossible() ? refused : unreadable(file_);
    }
}

TaskDocument::Undone TaskDocument::undo(Instant now) {
    const auto& step = steps_.back();
    auto change = save([&](std::string_view text) { return step.takenBackFrom(text); }, now);
    steps_.pop_back();
    if (!change) return {.changedSince = true, .change = {}, .keys = {}};
    std::swap(change->before, change->after);
    Undone result{.change = std::move(*change), .keys = {}};
    result.keys = keysGivenBack(result.change);
    return result;
}

std::vector<dravel::FileCopies::Copy> TaskDocument::copies() const {
    return dravel::FileCopies::of(copiesFolder(folders_), file_);
}

void TaskDocument::pruneCopies(Instant now) const { dravel::FileCopies::prune(copiesFolder(folders_), now); }

}
