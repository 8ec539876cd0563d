#pragma once

#include "DravelKit/Foundation/FileCopies.h"
#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskDocument/RenamedKeys.h"
#include "Tacla/TaskList/TaskViews.h"

#include <array>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tacla {

// <documents>/Tacla/taches.md: made on demand by the application.
std::filesystem::path documentsTaskFile(const dravel::UserFolders&);

// The task file in use: TACLA_FILE (empty counts as unset), else the chosen path, else ~/quillo/taches.md where that
// exists, else documentsTaskFile. Absolute, but for a relative one in a deleted folder.
std::filesystem::path resolvedFile(const std::string& taclaFile, const Preferences&, const dravel::UserFolders&);

// Where the list is kept as it was before each change: <state>/Tacla/copies.
std::filesystem::path copiesFolder(const dravel::UserFolders&);

// What could not be done, in the terminal's words: "impossible d'écrire /home/moi/taches.md : Permission non accordée".
// The path is the one that was meant, for the error may be of a temporary beside it.
std::string impossible(std::string_view deed, const std::filesystem::path&);
std::string impossible(std::string_view deed, const std::filesystem::path&, const dravel::FileError&);
std::string impossibleToWrite(const dravel::FileError&); // the file of the error itself
std::string unreadable(const std::filesystem::path&);    // "/home/moi/taches.md illisible"
std::string sentence(std::string words);                 // the window's: with a capital letter

// A task that is to be written.
struct NewTask {
    std::string title;
    Day day;
    std::optional<Clock> time{};
    bool strong = false;

    bool operator==(const NewTask&) const = default;
};

// Whether a task that was seen is still that one. With other marks it may be a namesake that took over its key: then
// only a title that stood once and stands once is unmistakable.
bool isStill(const TaskItem& seen, const TaskItem& now);
bool isIn(const TaskList&, const TaskItem& seen); // whether one of them is

// Applies an edit of the task to a text that still holds it; none for any other text.
dravel::SafeFile::Edit whereStill(const TaskItem& seen, dravel::SafeFile::Edit);

// What a user changed about a task. The rest stays as the file has it by then.
struct TaskChange {
    std::optional<std::string> title{};
    std::optional<Day> day{};
    std::optional<std::optional<Clock>> time{}; // none within: no time any more

    bool operator==(const TaskChange&) const = default;
};

// One edit as a user asks for it. It names the task as the user saw it, and changes no other.
struct UserEdit {
    std::string said;                         // in the bar that offers to undo it
    dravel::SafeFile::Edit apply;             // copies all it needs
    std::optional<std::string> retitled = {}; // the key of a task that may have another one afterwards

    static UserEdit setDone(const TaskItem&, bool done, Day today);
    static UserEdit reschedule(const TaskItem&, Day to, std::optional<Clock>, Day today);
    // The new title, unless it cannot be written, then the new moment.
    static UserEdit change(const TaskItem&, const TaskChange&, Day today);
    static UserEdit remove(const TaskItem&);
    // Those whose title can be written; none when there is no such task.
    static std::optional<UserEdit> add(const std::vector<NewTask>&, std::string saidOfOne);
    // Of those that were seen, the ones that are still there; each keeps its time.
    static UserEdit postpone(const TaskSelection& seen, Day to, Day today);
    static UserEdit plainLineEnds(); // without the carriage returns at the ends of lines
    static UserEdit bringBack(std::string copy);
};

// A change of the text, as small as it is: enough to take it back from the text that it left, and from no other.
class UndoStep {
  public:
    explicit UndoStep(const dravel::SafeFile::Change&);
    std::optional<std::string> takenBackFrom(std::string_view text) const;

  private:
    std::size_t at_;
    std::string before_, after_;        // what stood there, and what stands there now
    std::array<std::uint8_t, 32> left_; // the digest of the whole text
};

// The list as the user has it: one text file, which editors and other processes change as well. All but the questions
// wait for the disk and throw dravel::FileError, and leave the file as it was then. One thread at a time.
class TaskDocument {
  public:
    using Change = dravel::SafeFile::Change;
    using Keys = RenamedKeys::Map;

    TaskDocument(std::filesystem::path file, dravel::UserFolders);

    const std::filesystem::path& file() const { return file_; }
    void open(std::filesystem::path); // another list: there is nothing to undo in it yet

    static void createIfMissing(const std::filesystem::path&); // with the new-file text

    TaskList read();
    const TaskList& tasks() const { return tasks_; }         // of the last successful read
    std::size_t unreadDates() const { return unreadDates_; } // lines whose date a carriage return hides, at that time
    std::optional<Tasks> readIfPossible();
    // The text in pieces of whole lines, so that it never stands in memory; they count once the last one came.
    void readByLines(const std::function<void(std::string_view lines)>&) const;

    // What one stat tells of the file. Good enough to notice a change, never to prove that there was none.
    using Stamp = std::optional<dravel::SafeFile::Modified>;           // none: no such file
    Stamp onDisk() const { return dravel::SafeFile::modified(file_); } // one stat
    const Stamp& lastRead() const { return lastRead_; }                // of the last successful read
    bool isStale(const Stamp& stamp) const { return unreadable_ || stamp != lastRead_; }

    // What the edit changed, none when nothing; the last ten can be undone. The text that it replaces is kept as a
    // copy, unless that would stand in the way.
    static constexpr std::size_t undoLevels = 10;
    std::optional<Change> edit(const dravel::SafeFile::Edit&, Instant now);

    // The same for a command of the terminal: none when it was saved, else what to say, which is `refused` as long as
    // the file can be read at all.
    std::optional<std::string> failureOfEdit(const dravel::SafeFile::Edit&, Instant now, std::string refused);

    // Takes the last edit back, where the file still holds what it wrote: another edit may have come in between.
    struct Undone {
        bool changedSince = false; // nothing was written
        Change change;
        Keys keys; // from those that the edit gave to those that its tasks get back
    };
    bool canUndo() const { return !steps_.empty(); }
    Undone undo(Instant now);

    std::vector<dravel::FileCopies::Copy> copies() const; // of this list, the latest first
    void pruneCopies(Instant now) const;                  // those that have become too old

  private:
    std::string readText();
    std::optional<Change> save(const dravel::SafeFile::Edit&, Instant now) const;

    std::filesystem::path file_;
    dravel::UserFolders folders_;
    Stamp lastRead_;
    TaskList tasks_;
    std::size_t unreadDates_ = 0;
    bool unreadable_ = false;    // the last read failed: the file may come back just as it was
    std::deque<UndoStep> steps_; // the last one at the end
};

}
