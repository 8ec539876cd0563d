#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskDocument/RenamedKeys.h"
#include "Tacla/TaskList/TaskViews.h"

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
// exists, else documentsTaskFile. Absolute.
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
    std::optional<Clock> time;
    bool strong = false;

    bool operator==(const NewTask&) const = default;
};

// One edit as a user asks for it.
struct UserEdit {
    std::optional<std::string> said;       // in the bar that offers to undo it; what is plain to see is not said
    dravel::SafeFile::Edit apply;          // copies all it needs
    std::optional<TaskItem> retitled = {}; // the task as the edit leaves it, but for its new key

    static UserEdit setDone(const std::string& key, const std::string& title, bool done, Day today);
    static UserEdit reschedule(const TaskItem&, Day to, std::optional<Clock>, Day today);
    // The new title, unless it cannot be written, then the new moment.
    static UserEdit change(const TaskItem&, const std::string& title, std::optional<Day>, std::optional<Clock>,
                           Day today);
    static UserEdit remove(const TaskItem&);
    // None when the title cannot be written.
    static std::optional<UserEdit> add(const std::string& title, Day, std::optional<Clock>, bool strong);
    // Several at once. Of those that were seen, the ones that are still there as they were; each keeps its time.
    static UserEdit postpone(const Tasks& seen, Day to, Day today);
    static std::optional<UserEdit> addAll(std::vector<NewTask>);
};

// The list as the user has it: one text file, which editors and other processes change as well. All but the questions
// throw dravel::FileError, and leave the file as it was then.
class TaskDocument {
  public:
    using Change = dravel::SafeFile::Change;
    using Keys = RenamedKeys::Map;

    TaskDocument(std::filesystem::path file, dravel::UserFolders);

    const std::filesystem::path& file() const { return file_; }
    void open(std::filesystem::path); // another list: there is nothing to undo in it yet

    static void createIfMissing(const std::filesystem::path&); // with the new-file text

    Tasks read();
    std::optional<Tasks> readIfPossible();
    // The text in pieces of whole lines, so that it never stands in memory; they count once the last one came.
    void readByLines(const std::function<void(std::string_view lines)>&) const;

    // When the file was modified. Good enough to notice a change, never to prove that there was none.
    using Stamp = std::optional<dravel::SafeFile::Modified>;           // none: no such file
    Stamp onDisk() const { return dravel::SafeFile::modified(file_); } // one stat
    const Stamp& lastRead() const { return lastRead_; }                // of the last successful read
    bool isStale(const Stamp& stamp) const { return unreadable_ || stamp != lastRead_; }

    // What the edit changed, none when nothing; it can be undone, and stands here until the next one. The text that it
    // replaces is kept as a copy, unless that would stand in the way.
    const Change* edit(const dravel::SafeFile::Edit&, Instant now);

    // The same for a command of the terminal: none when it was saved, else what to say, which is `refused` as long as
    // the file can be read at all.
    std::optional<std::string> failureOfEdit(const dravel::SafeFile::Edit&, Instant now, std::string refused);

    // Takes the last edit back, where the file still holds what it wrote: another edit may have come in between.
    struct Undone {
        bool changedSince = false; // nothing was written
        Change change;
        Keys keys; // from those that the edit gave to those that its tasks get back
    };
    bool canUndo() const { return last_.has_value(); }
    Undone undo(Instant now);

    // The keys that an edit of a title changed; they are followed from here on.
    Keys follow(const Change&);
    RenamedKeys& renamed() { return renamed_; }

    void pruneCopies(Instant now) const; // those that have become too old

  private:
    std::optional<Change> save(const dravel::SafeFile::Edit&, Instant now) const;

    std::filesystem::path file_;
    dravel::UserFolders folders_;
    Stamp lastRead_;
    bool unreadable_ = false; // the last read failed: the file may come back just as it was
    std::optional<Change> last_;
    RenamedKeys renamed_;
};

}
